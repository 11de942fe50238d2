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
 * With -j N the root's subfolders are walked by N threads, each taking the
 * next unwalked subfolder in listing order, like the scanner's first-level
 * fan-out.
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

/* First-level fan-out: the root's subfolders, handed out in listing order. */
struct fanout {
    int rootfd;
    char **names;
    size_t count;
    size_t next;
    pthread_mutex_t lock;
};

struct worker {
    pthread_t thread;
    struct fanout *work;
    struct counts counts;
};

static void *worker_main(void *arg)
{
    struct worker *w = arg;
    struct fanout *f = w->work;
    for (;;) {
        pthread_mutex_lock(&f->lock);
        const size_t i = f->next < f->count ? f->next++ : f->count;
        pthread_mutex_unlock(&f->lock);
        if (i == f->count)
            return NULL;
        walk(f->rootfd, f->names[i], &w->counts);
    }
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
    struct fanout f = {.rootfd = -1};
    pthread_mutex_init(&f.lock, NULL);
    f.rootfd = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (f.rootfd < 0) {
        ++total->unreadable;
        return;
    }
    DIR *dir = fdopendir(dup(f.rootfd));
    if (!dir) {
        close(f.rootfd);
        ++total->unreadable;
        return;
    }
    size_t cap = 0;
    const struct dirent *e;
    while ((e = readdir(dir)) != NULL) {
        const char *n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        if (!visit(f.rootfd, n, total))
            continue;
        if (f.count == cap) {
            cap = cap ? cap * 2 : 64;
            char **names = realloc(f.names, cap * sizeof *names);
            if (!names) {
                perror("barewalk: realloc");
                exit(1);
            }
            f.names = names;
        }
        f.names[f.count] = strdup(n);
        if (!f.names[f.count]) {
            perror("barewalk: strdup");
            exit(1);
        }
        ++f.count;
    }
    closedir(dir);

    struct worker *workers = calloc((size_t)threads, sizeof *workers);
    if (!workers) {
        perror("barewalk: calloc");
        exit(1);
    }
    int started = 0;
    for (int i = 0; i < threads && (size_t)i < f.count; ++i) {
        workers[i].work = &f;
        const int err = pthread_create(&workers[i].thread, NULL, worker_main, &workers[i]);
        if (err) {
            fprintf(stderr, "barewalk: pthread_create: %s\n", strerror(err));
            exit(1);
        }
        ++started;
    }
    for (int i = 0; i < started; ++i) {
        pthread_join(workers[i].thread, NULL);
        add(total, &workers[i].counts);
    }
    free(workers);
    for (size_t i = 0; i < f.count; ++i)
        free(f.names[i]);
    free(f.names);
    close(f.rootfd);
    pthread_mutex_destroy(&f.lock);
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
