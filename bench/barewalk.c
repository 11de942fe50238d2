/*
 * barewalk: the yardstick for the scanner's speed. The least a walk of
 * allocated sizes can do on Linux: a depth-first walk with openat, fdopendir
 * and readdir, one fstatat(AT_SYMLINK_NOFOLLOW) per entry relative to the
 * folder's descriptor, st_blocks * 512 summed for regular files. It keeps no
 * tree, follows no links and stays on the root's device. A file with more
 * than one link is charged once, as du does.
 *
 *   barewalk [-j N] PATH
 *
 * With -j N, N threads share the walk at every depth, as the scanner's
 * workers do (see walk_parallel).
 */
#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

struct counts {
    uint64_t entries; /* every name seen below the root, links included */
    uint64_t files;   /* neither folder nor symbolic link */
    uint64_t dirs;
    uint64_t links;
    uint64_t unreadable;
    uint64_t bytes; /* allocated bytes of regular files */
};

static dev_t root_dev;

/* Inodes with st_nlink > 1, so a hard-linked file counts once. Open
 * addressing; only the few multiply linked files ever go in, so one lock is
 * cheap. */
static pthread_mutex_t seen_lock = PTHREAD_MUTEX_INITIALIZER;
static uint64_t *seen_slots;
static size_t seen_cap;
static size_t seen_len;

static uint64_t mix(uint64_t x)
{
    x ^= x >> 33;
    x *= 0xff51afd7ed558ccdULL;
    x ^= x >> 33;
    return x;
}

/* Returns 1 when this inode was not seen before. Keys are ino + 1 so that 0
 * marks an empty slot; all inodes are on the root's device. */
static int first_sighting(ino_t ino)
{
    const uint64_t key = (uint64_t)ino + 1;
    int fresh = 1;
    pthread_mutex_lock(&seen_lock);
    if ((seen_len + 1) * 2 > seen_cap) {
        size_t cap = seen_cap ? seen_cap * 2 : 4096;
        uint64_t *slots = calloc(cap, sizeof *slots);
        if (!slots) {
            perror("barewalk: calloc");
            exit(1);
        }
        for (size_t i = 0; i < seen_cap; ++i) {
            if (!seen_slots[i])
                continue;
            size_t j = mix(seen_slots[i]) & (cap - 1);
            while (slots[j])
                j = (j + 1) & (cap - 1);
            slots[j] = seen_slots[i];
        }
        free(seen_slots);
        seen_slots = slots;
        seen_cap = cap;
    }
    size_t j = mix(key) & (seen_cap - 1);
    while (seen_slots[j] && seen_slots[j] != key)
        j = (j + 1) & (seen_cap - 1);
    if (seen_slots[j])
        fresh = 0;
    else {
        seen_slots[j] = key;
        ++seen_len;
    }
    pthread_mutex_unlock(&seen_lock);
    return fresh;
}

/* Counts one entry of the folder `dirfd`. Returns 1 if it is a folder on the
 * root's device that should be entered. */
static int visit(int dirfd, const char *name, struct counts *c)
{
    struct stat st;
    ++c->entries;
    if (fstatat(dirfd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
        ++c->files; /* gone or unreadable: counted, charged nothing */
        return 0;
    }
    if (S_ISLNK(st.st_mode)) {
        ++c->links;
        return 0;
    }
    if (S_ISDIR(st.st_mode)) {
        ++c->dirs;
        return st.st_dev == root_dev;
    }
    ++c->files;
    if (S_ISREG(st.st_mode) && (st.st_nlink < 2 || first_sighting(st.st_ino)))
        c->bytes += (uint64_t)st.st_blocks * 512u;
    return 0;
}

static void walk(int parent, const char *name, struct counts *c)
{
    int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        ++c->unreadable;
        return;
    }
    DIR *dir = fdopendir(fd);
    if (!dir) {
        close(fd);
        ++c->unreadable;
        return;
    }
    const struct dirent *e;
    while ((e = readdir(dir)) != NULL) {
        const char *n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        if (visit(fd, n, c))
            walk(fd, n, c);
    }
    closedir(dir);
}

/* Work sharing, as the scanner does it: each thread walks depth first, a
 * folder in two passes (every entry examined, then the subfolders entered).
 * When a thread waits for work and none is queued, a busy one hands it the
 * later half of the unentered subfolders of its shallowest level that has
 * any; a handed-out folder is opened by its path. */
#define MAX_DEPTH 130

struct task {
    char *path;
    int depth;
};

struct share {
    pthread_mutex_t lock;
    pthread_cond_t wake;
    struct task *tasks;
    size_t head, len, cap;
    size_t live; /* queued or being walked */
    int hungry;  /* read without the lock as a hint */
};

struct level {
    int fd;
    size_t path_len;
    char *names; /* the subfolders' names, NUL-separated */
    size_t names_len, names_cap;
    size_t *subs; /* offsets into names */
    size_t nsubs, subs_cap;
    size_t next, end;
};

struct worker {
    pthread_t thread;
    struct share *share;
    struct counts counts;
    struct level levels[MAX_DEPTH + 1];
    int base;
    char path[1 << 16];
    size_t path_len;
};

static void *grow(void *p, size_t *cap, size_t need, size_t size)
{
    if (need <= *cap)
        return p;
    size_t cap2 = *cap ? *cap : 64;
    while (cap2 < need)
        cap2 *= 2;
    void *q = realloc(p, cap2 * size);
    if (!q) {
        perror("barewalk: realloc");
        exit(1);
    }
    *cap = cap2;
    return q;
}

static void push_tasks(struct share *s, struct task *tasks, size_t n)
{
    pthread_mutex_lock(&s->lock);
    if (s->head == s->len)
        s->head = s->len = 0;
    s->tasks = grow(s->tasks, &s->cap, s->len + n, sizeof *s->tasks);
    memcpy(s->tasks + s->len, tasks, n * sizeof *tasks);
    s->len += n;
    s->live += n;
    pthread_cond_broadcast(&s->wake);
    pthread_mutex_unlock(&s->lock);
}

static int take_task(struct share *s, struct task *out)
{
    pthread_mutex_lock(&s->lock);
    if (s->head == s->len) {
        __atomic_add_fetch(&s->hungry, 1, __ATOMIC_RELAXED);
        while (s->head == s->len && s->live > 0)
            pthread_cond_wait(&s->wake, &s->lock);
        __atomic_sub_fetch(&s->hungry, 1, __ATOMIC_RELAXED);
    }
    const int got = s->head < s->len;
    if (got)
        *out = s->tasks[s->head++];
    pthread_mutex_unlock(&s->lock);
    return got;
}

static void task_done(struct share *s)
{
    pthread_mutex_lock(&s->lock);
    if (--s->live == 0)
        pthread_cond_broadcast(&s->wake);
    pthread_mutex_unlock(&s->lock);
}

static void maybe_share(struct worker *w, int depth)
{
    struct share *s = w->share;
    pthread_mutex_lock(&s->lock);
    const int queued = s->head < s->len;
    pthread_mutex_unlock(&s->lock);
    if (queued)
        return;
    for (int at = w->base; at <= depth; ++at) {
        struct level *l = &w->levels[at];
        const size_t waiting = l->end > l->next + 1 ? l->end - l->next - 1 : 0;
        if (!waiting)
            continue;
        const size_t give = (waiting + 1) / 2;
        struct task *tasks = malloc(give * sizeof *tasks);
        if (!tasks) {
            perror("barewalk: malloc");
            exit(1);
        }
        for (size_t k = 0; k < give; ++k) {
            const char *name = l->names + l->subs[l->end - 1 - k];
            const size_t len = l->path_len + 1 + strlen(name);
            char *path = malloc(len + 1);
            if (!path) {
                perror("barewalk: malloc");
                exit(1);
            }
            memcpy(path, w->path, l->path_len);
            path[l->path_len] = '/';
            strcpy(path + l->path_len + 1, name);
            tasks[k] = (struct task){path, at + 1};
        }
        l->end -= give;
        push_tasks(s, tasks, give);
        free(tasks);
        return;
    }
}

static void walk_shared(struct worker *w, int fd, int depth)
{
    struct level *l = &w->levels[depth];
    DIR *dir = fdopendir(fd);
    if (!dir) {
        close(fd);
        ++w->counts.unreadable;
        return;
    }
    l->fd = fd;
    l->path_len = w->path_len;
    l->names_len = 0;
    l->nsubs = 0;
    const struct dirent *e;
    while ((e = readdir(dir)) != NULL) {
        const char *n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        if (!visit(fd, n, &w->counts) || depth + 1 > MAX_DEPTH)
            continue;
        const size_t len = strlen(n) + 1;
        l->names = grow(l->names, &l->names_cap, l->names_len + len, 1);
        memcpy(l->names + l->names_len, n, len);
        l->subs = grow(l->subs, &l->subs_cap, l->nsubs + 1, sizeof *l->subs);
        l->subs[l->nsubs++] = l->names_len;
        l->names_len += len;
    }
    for (l->next = 0, l->end = l->nsubs; l->next < l->end; ++l->next) {
        if (__atomic_load_n(&w->share->hungry, __ATOMIC_RELAXED) > 0)
            maybe_share(w, depth);
        const char *name = l->names + l->subs[l->next];
        const int child = openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (child < 0) {
            ++w->counts.unreadable;
            continue;
        }
        const size_t len = strlen(name);
        if (w->path_len + 1 + len >= sizeof w->path) {
            close(child);
            ++w->counts.unreadable;
            continue;
        }
        w->path[w->path_len] = '/';
        memcpy(w->path + w->path_len + 1, name, len + 1);
        w->path_len += 1 + len;
        walk_shared(w, child, depth + 1);
        w->path_len = l->path_len;
        w->path[w->path_len] = 0;
    }
    closedir(dir);
}

static void *worker_main(void *arg)
{
    struct worker *w = arg;
    struct task t;
    while (take_task(w->share, &t)) {
        const size_t len = strlen(t.path);
        const int fd = len < sizeof w->path
            ? open(t.path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC) : -1;
        if (fd < 0) {
            ++w->counts.unreadable;
        } else {
            memcpy(w->path, t.path, len + 1);
            w->path_len = len;
            w->base = t.depth;
            walk_shared(w, fd, t.depth);
        }
        free(t.path);
        task_done(w->share);
    }
    return NULL;
}

static void add(struct counts *into, const struct counts *c)
{
    into->entries += c->entries;
    into->files += c->files;
    into->dirs += c->dirs;
    into->links += c->links;
    into->unreadable += c->unreadable;
    into->bytes += c->bytes;
}

static void walk_parallel(const char *path, int threads, struct counts *total)
{
    struct share s = {.head = 0};
    pthread_mutex_init(&s.lock, NULL);
    pthread_cond_init(&s.wake, NULL);
    char *root = strdup(path);
    if (!root) {
        perror("barewalk: strdup");
        exit(1);
    }
    struct task first = {root, 0};
    push_tasks(&s, &first, 1);
    struct worker *workers = calloc((size_t)threads, sizeof *workers);
    if (!workers) {
        perror("barewalk: calloc");
        exit(1);
    }
    for (int i = 0; i < threads; ++i) {
        workers[i].share = &s;
        const int err = pthread_create(&workers[i].thread, NULL, worker_main, &workers[i]);
        if (err) {
            fprintf(stderr, "barewalk: pthread_create: %s\n", strerror(err));
            exit(1);
        }
    }
    for (int i = 0; i < threads; ++i) {
        pthread_join(workers[i].thread, NULL);
        add(total, &workers[i].counts);
        for (int d = 0; d <= MAX_DEPTH; ++d) {
            free(workers[i].levels[d].names);
            free(workers[i].levels[d].subs);
        }
    }
    free(workers);
    free(s.tasks);
    pthread_cond_destroy(&s.wake);
    pthread_mutex_destroy(&s.lock);
}

static void usage(void)
{
    fputs("usage: barewalk [-j N] PATH\n", stderr);
    exit(2);
}

int main(int argc, char **argv)
{
    int threads = 1;
    const char *path = NULL;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "-j") == 0 && i + 1 < argc) {
            char *end = NULL;
            const long n = strtol(argv[++i], &end, 10);
            if (!end || *end || n < 1 || n > 256)
                usage();
            threads = (int)n;
        } else if (argv[i][0] == '-' || path)
            usage();
        else
            path = argv[i];
    }
    if (!path)
        usage();

    struct timespec t0, t1;
    clock_gettime(CLOCK_MONOTONIC, &t0);
    struct stat st;
    struct counts total = {0};
    if (lstat(path, &st) != 0) {
        fprintf(stderr, "barewalk: %s: %s\n", path, strerror(errno));
        return 1;
    }
    root_dev = st.st_dev;
    if (S_ISDIR(st.st_mode)) {
        ++total.dirs;
        if (threads > 1)
            walk_parallel(path, threads, &total);
        else
            walk(AT_FDCWD, path, &total);
    } else if (!S_ISLNK(st.st_mode)) {
        ++total.files;
        total.bytes = (uint64_t)st.st_blocks * 512u;
    }
    ++total.entries; /* the root */
    clock_gettime(CLOCK_MONOTONIC, &t1);
    const double seconds = (double)(t1.tv_sec - t0.tv_sec) + (double)(t1.tv_nsec - t0.tv_nsec) / 1e9;

    printf("entries: %llu\n", (unsigned long long)total.entries);
    printf("files: %llu\n", (unsigned long long)total.files);
    printf("dirs: %llu\n", (unsigned long long)total.dirs);
    printf("links: %llu\n", (unsigned long long)total.links);
    printf("unreadable: %llu\n", (unsigned long long)total.unreadable);
    printf("bytes: %llu\n", (unsigned long long)total.bytes);
    printf("threads: %d\n", threads);
    printf("seconds: %.3f\n", seconds);
    return 0;
}
