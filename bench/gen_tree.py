#!/usr/bin/env python3
"""Generates a home-folder-like tree for the scan benchmark.

The tree is deterministic for a given --seed and --scale: every part of it is
built by its own random generator, seeded from the seed and the part's name,
so the parts can be built in parallel and still come out byte for byte the
same.

What it holds at the default scale of 1.0 (1.02 million entries with the
default seed; --scale 1.08 gives about 1.1 million):

- Projects/, Developer/, src/: a dozen JavaScript projects, each with a
  source tree, a .git folder with a 256-way object fan-out, and a
  node_modules folder of a thousand and more packages, some with nested
  node_modules three levels down and .bin symbolic links; a pnpm-style
  project whose files are hard links into a content store and whose packages
  are symbolic links to folders; a kernel-like source tree of about 100,000
  entries.
- Library/: a macOS-style Library (caches by bundle identifier, application
  support, sandbox containers, Xcode's derived data, preferences).
- Mail/: Maildir folders, one INBOX/cur with 5,000 messages.
- Pictures/: a camera roll with about 4,000 photos in one folder.
- .cache, .npm, .cargo, .config, .local/share: caches with hashed names, a
  browser cache folder with 20,000 entries, a crate registry.
- Documents/: nested folders with long, accented, Cyrillic, Chinese and one
  non-UTF-8 name, .DS_Store files, and a chain 100 folders deep.
- Downloads/, Music/, VirtualBox VMs/: a few large files (allocated with
  posix_fallocate, so their blocks are real without writing them) and a few
  sparse files (long lengths, little written).
- Symbolic links to files, to folders, dangling, pointing at "/" and at a
  parent: a correct walker follows none of them.

Small files get real bytes so that their allocated size is real; most are a
few hundred bytes to a few KB, and the whole tree takes about 6.5 GB of disk.

No first-level folder holds more than about a third of the entries, as in a
real home folder, where Library, projects, caches and media share the bulk.
With --skewed the projects and the kernel tree go into Library/Workspace
instead, and Library holds about 85 % of the entries, as a Library full of
developer data can: the case for sharing the walk below the first level.
"""

import argparse
import datetime
import hashlib
import multiprocessing
import os
import random
import sys
import time

O_FILE = os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC
O_DIR = os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC | os.O_NOFOLLOW

BUF_LEN = 1 << 20
WRITE_LIMIT = 256 * 1024  # larger files are allocated, not written
KB = 1024
MB = 1024 * 1024
GB = 1024 * MB

# Parts are sized so that scale 1.0 gives about a million entries.
PROJECTS = 13
PACKAGES_PER_PROJECT = 1100

WORDS = (
    "config utils helpers core api client server model view controller router store hooks "
    "components services types common shared lib internal plugins adapters parser lexer compiler "
    "runtime cache logger auth session user account profile settings theme layout header footer "
    "sidebar button modal form input table chart graph node tree list map queue stream buffer "
    "event emitter promise async sync path url http net socket crypto hash encode decode format "
    "validate schema error errors debug mock fixture util string array object number date time "
    "color image font icon style dom render diff patch merge clone deep shallow equal compare sort "
    "filter reduce index main app init setup build bundle loader transform polyfill shim compat "
    "legacy modern browser native worker thread pool retry timeout limit rate throttle debounce "
    "memo lazy proxy reflect symbol iterator generator locale intl plural glob match regex escape "
    "quote ansi prompt spinner progress args command option env mime semver version resolve "
    "module package manifest registry fetch request response cookie token oauth proto yaml toml "
    "json xml csv zip tar gzip zlib inflate deflate base64 uuid random seed math vector matrix geo "
    "point line shape svg canvas webgl audio video media"
).split()

NPM_NAMES = (
    "react react-dom lodash debug ms chalk commander semver glob minimatch rimraf mkdirp uuid "
    "express body-parser axios webpack @babel/core @babel/parser @babel/types @babel/traverse "
    "@babel/generator @babel/helper-plugin-utils @babel/runtime typescript eslint prettier jest "
    "mocha yargs inquirer ansi-styles supports-color has-flag color-convert color-name "
    "escape-string-regexp strip-ansi ansi-regex string-width wrap-ansi emoji-regex "
    "is-fullwidth-code-point source-map source-map-support tslib core-js regenerator-runtime "
    "@types/node @types/react @types/estree @types/json-schema postcss autoprefixer browserslist "
    "caniuse-lite electron-to-chromium node-releases picocolors nanoid acorn acorn-walk esbuild "
    "rollup vite terser cssnano sass less dotenv cross-spawn which isexe path-key shebang-command "
    "signal-exit graceful-fs fs-extra jsonfile universalify once wrappy inherits inflight "
    "balanced-match brace-expansion concat-map fast-glob micromatch braces fill-range "
    "to-regex-range is-number picomatch readdirp chokidar anymatch normalize-path glob-parent "
    "is-glob is-extglob binary-extensions is-binary-path safe-buffer buffer string_decoder "
    "readable-stream util-deprecate process-nextick-args isarray core-util-is events punycode qs "
    "mime-types mime-db negotiator accepts cookie etag fresh depd statuses http-errors "
    "toidentifier setprototypeof on-finished ee-first finalhandler encodeurl escape-html parseurl "
    "range-parser send serve-static vary content-type content-disposition raw-body iconv-lite "
    "safer-buffer bytes unpipe type-is media-typer merge-descriptors methods path-to-regexp "
    "proxy-addr forwarded ipaddr.js utils-merge array-flatten cookie-signature @jest/core "
    "@jest/types jest-util jest-message-util pretty-format react-is loose-envify js-tokens "
    "object-assign prop-types scheduler @eslint/js @eslint/eslintrc espree esquery esrecurse "
    "estraverse esutils eslint-scope eslint-visitor-keys ajv fast-deep-equal "
    "json-schema-traverse uri-js fast-json-stable-stringify @nodelib/fs.scandir @nodelib/fs.stat "
    "@nodelib/fs.walk run-parallel queue-microtask reusify fastq yaml js-yaml argparse minimist "
    "resolve is-core-module hasown function-bind path-parse @rollup/rollup-linux-x64-gnu "
    "@esbuild/linux-x64 @vitejs/plugin-react @testing-library/react @testing-library/dom "
    "@typescript-eslint/parser @typescript-eslint/eslint-plugin next styled-components "
    "@emotion/react zod date-fns moment dayjs rxjs immer redux @reduxjs/toolkit react-redux"
).split()

SCOPES = "@babel @types @jest @eslint @rollup @esbuild @vitejs @typescript-eslint @sentry @aws-sdk @smithy @octokit @radix-ui".split()
PKG_PREFIXES = "is has to get set array object string fast safe tiny micro p node".split()
EXT_JS = (".js", ".js", ".js", ".mjs", ".cjs", ".d.ts", ".d.ts", ".js.map", ".json", ".ts")

DOC_STEMS = (
    "Quarterly Report", "Invoice", "Scan", "Meeting notes", "Budget", "Contract", "Tax return",
    "Résumé", "Cover letter", "Presentation", "Minutes", "Offer letter", "Receipt", "Statement",
    "Отчёт за год", "Договор аренды", "年度报告", "会议记录", "Übersicht Kosten", "Lebenslauf",
    "Project plan", "Roadmap", "Untitled", "Notes", "Draft", "Photo", "Screenshot",
)
DOC_EXTS = (".pdf", ".pdf", ".docx", ".xlsx", ".pptx", ".txt", ".md", ".odt", ".pages", ".key",
            ".numbers", ".png", ".jpg", ".csv", ".zip", ".rtf")
DOC_DIRS = (
    "Taxes", "Receipts", "Clients", "Acme Corp", "Contracts", "Scans", "Old", "Archive",
    "Work", "Personal", "Finance", "Health", "Car", "House", "Kids", "Travel", "Recipes",
    "Letters", "Reports", "Invoices", "Presentations", "Résumés", "Документы", "资料",
    "Backup", "Misc", "To sort", "Projects", "Meetings", "Legal",
)
KERNEL_DIRS = (
    "arch drivers fs include kernel lib mm net sound tools scripts security crypto block "
    "firmware ipc init samples virt usr certs io_uring rust Documentation x86 arm64 riscv "
    "powerpc s390 mips gpu drm amd i915 nouveau usb pci net ethernet intel mellanox wireless "
    "scsi ata nvme md dm input hid media video iio mtd mmc spi i2c gpio pinctrl clk regulator "
    "power thermal hwmon acpi platform char tty serial ext4 btrfs xfs nfs cifs fuse proc sysfs "
    "core ipv4 ipv6 netfilter bluetooth codecs soc boot configs include uapi asm linux"
).split()
KERNEL_EXTS = (".c", ".c", ".c", ".c", ".h", ".h", ".h", ".S", ".rst", ".yaml", ".dts", ".txt")


def unit_seed(seed, name):
    digest = hashlib.sha256(f"{seed}:{name}".encode()).digest()
    return int.from_bytes(digest[:8], "little")


class Gen:
    """Builds one part of the tree and counts what it made."""

    def __init__(self, seed, scale):
        self.rng = random.Random(seed)
        self.scale = scale
        self.buf = memoryview(random.Random(seed ^ 0x5EED).randbytes(BUF_LEN))
        self.off = 0
        self.files = 0
        self.dirs = 0
        self.symlinks = 0
        self.hardlinks = 0
        self.large = 0
        self.sparse = 0
        self.written = 0  # bytes written or allocated, not counting sparse holes

    def counts(self):
        return {
            "files": self.files, "dirs": self.dirs, "symlinks": self.symlinks,
            "hardlinks": self.hardlinks, "large": self.large, "sparse": self.sparse,
            "written": self.written,
        }

    def n(self, count, minimum=1):
        return max(minimum, int(round(count * self.scale)))

    # --- primitives -------------------------------------------------------

    def mkdir(self, parent, name):
        os.mkdir(name, 0o755, dir_fd=parent)
        self.dirs += 1
        return os.open(name, O_DIR, dir_fd=parent)

    def file(self, parent, name, size):
        fd = os.open(name, O_FILE, 0o644, dir_fd=parent)
        try:
            if size > WRITE_LIMIT:
                # Real blocks without writing them: the allocated size is what a
                # scanner sees, and it costs no write bandwidth.
                os.posix_fallocate(fd, 0, size)
                os.pwrite(fd, self.buf[:4096], 0)
            elif size > 0:
                off = self.off
                if off + size > BUF_LEN:
                    off = 0
                os.write(fd, self.buf[off:off + size])
                self.off = off + 4093
        finally:
            os.close(fd)
        self.files += 1
        self.written += size

    def sparse_file(self, parent, name, length, pieces, piece_size):
        fd = os.open(name, O_FILE, 0o644, dir_fd=parent)
        try:
            os.ftruncate(fd, length)
            for i in range(pieces):
                os.pwrite(fd, self.buf[:piece_size], (length // pieces) * i)
        finally:
            os.close(fd)
        self.files += 1
        self.sparse += 1
        self.written += pieces * piece_size

    def large_file(self, parent, name, size):
        self.file(parent, name, max(size, WRITE_LIMIT + 4096))
        self.large += 1

    def symlink(self, parent, name, target):
        os.symlink(target, name, dir_fd=parent)
        self.symlinks += 1

    def hardlink(self, src_parent, src, dst_parent, dst):
        os.link(src, dst, src_dir_fd=src_parent, dst_dir_fd=dst_parent, follow_symlinks=False)
        self.hardlinks += 1

    # --- sizes --------------------------------------------------------------

    def small(self, median=900, sigma=1.1, cap=WRITE_LIMIT):
        """Most files a few hundred bytes to a few KB, a tail into tens of KB."""
        size = int(self.rng.lognormvariate(0.0, sigma) * median)
        return cap if size > cap else size

    def hexname(self, length):
        return "%0*x" % (length, self.rng.getrandbits(length * 4))

    def word(self):
        return self.rng.choice(WORDS)

    # --- generic nested tree -------------------------------------------------

    def tree(self, parent, n, depth, max_depth, file_name, dir_name, size, fanout=(2, 6),
             ds_store=0.0):
        """Creates about n entries below parent, nested up to max_depth levels."""
        rng = self.rng
        if depth >= max_depth or n <= 10:
            here = n
        else:
            here = max(1, int(n * rng.uniform(0.15, 0.4)))
        # At the top the caller may already have put files here.
        used = set(os.listdir(parent)) if depth == 0 else set()
        if ds_store and ".DS_Store" not in used and rng.random() < ds_store:
            self.file(parent, ".DS_Store", 6148)
            used.add(".DS_Store")
            here -= 1
        for _ in range(here):
            name = file_name()
            while name in used:
                name = "%s-%d%s" % (os.path.splitext(name)[0], rng.randrange(2, 99),
                                    os.path.splitext(name)[1])
            used.add(name)
            self.file(parent, name, size())
        rest = n - here
        if rest <= 0:
            return
        k = min(rest, rng.randint(*fanout))
        weights = [rng.random() + 0.2 for _ in range(k)]
        total = sum(weights)
        for w in weights:
            part = int(rest * w / total)
            name = dir_name()
            while name in used:
                name = "%s %d" % (name, rng.randrange(2, 99))
            used.add(name)
            fd = self.mkdir(parent, name)
            try:
                if part > 1:
                    self.tree(fd, part - 1, depth + 1, max_depth, file_name, dir_name, size,
                              fanout, ds_store)
            finally:
                os.close(fd)


# --- parts -----------------------------------------------------------------

def npm_name(gen):
    rng = gen.rng
    r = rng.random()
    if r < 0.45:
        return rng.choice(NPM_NAMES)
    if r < 0.65:
        return "%s/%s" % (rng.choice(SCOPES), gen.word() + ("-" + gen.word() if rng.random() < 0.5 else ""))
    if r < 0.8:
        return "%s-%s" % (rng.choice(PKG_PREFIXES), gen.word())
    return "%s-%s" % (gen.word(), gen.word())


def package(gen, nm_fd, scopes, used, depth, bins):
    """One package folder in a node_modules folder."""
    rng = gen.rng
    name = npm_name(gen)
    while name in used:
        name = npm_name(gen) + ("-" + gen.word() if rng.random() < 0.5 else "")
    used.add(name)
    if "/" in name:
        scope, leaf = name.split("/", 1)
        if scope not in scopes:
            scopes[scope] = gen.mkdir(nm_fd, scope)
        parent = scopes[scope]
    else:
        leaf = name
        parent = nm_fd
    fd = gen.mkdir(parent, leaf)
    try:
        gen.file(fd, "package.json", gen.small(1400, 0.6))
        if rng.random() < 0.85:
            gen.file(fd, "README.md", gen.small(3000, 1.0))
        if rng.random() < 0.9:
            gen.file(fd, "LICENSE", 1076 + rng.randrange(40))
        if rng.random() < 0.3:
            gen.file(fd, "CHANGELOG.md", gen.small(6000, 1.0))
        if rng.random() < 0.6:
            gen.file(fd, "index.js", gen.small(700, 1.0))
        if rng.random() < 0.4:
            gen.file(fd, "index.d.ts", gen.small(900, 1.0))
        # Most packages are a handful of files; a few are hundreds.
        extra = int(min(900, rng.paretovariate(1.15) * 5)) - 3
        if extra > 0:
            layout = rng.random()
            if layout < 0.35:
                subdirs = ("lib",)
            elif layout < 0.6:
                subdirs = ("dist", "dist/esm", "dist/cjs")
            elif layout < 0.8:
                subdirs = ("lib", "src", "types")
            else:
                subdirs = ("build", "es", "umd", "test")
            share = max(1, extra // len(subdirs))
            opened = {}
            try:
                for sub in subdirs:
                    head, _, tail = sub.rpartition("/")
                    base = opened[head] if head else fd
                    sfd = gen.mkdir(base, tail)
                    opened[sub] = sfd
                    gen.tree(sfd, share, 0, 3,
                             lambda: gen.word() + ("-" + gen.word() if rng.random() < 0.3 else "")
                             + rng.choice(EXT_JS),
                             gen.word, lambda: gen.small(650, 0.9), fanout=(1, 4))
            finally:
                for sfd in opened.values():
                    os.close(sfd)
        if rng.random() < 0.06:
            bfd = gen.mkdir(fd, "bin")
            gen.file(bfd, "cli.js", gen.small(1500, 0.8))
            os.close(bfd)
            bins.append((name, leaf))
        if depth < 3 and rng.random() < 0.12 * (0.6 ** depth):
            node_modules(gen, fd, rng.randint(1, 6), depth + 1)
    finally:
        os.close(fd)


def node_modules(gen, parent, count, depth):
    nm = gen.mkdir(parent, "node_modules")
    scopes = {}
    used = set()
    bins = []
    try:
        for _ in range(count):
            package(gen, nm, scopes, used, depth, bins)
        if depth == 0:
            gen.file(nm, ".package-lock.json", gen.small(200 * KB, 0.5))
        if bins:
            bfd = gen.mkdir(nm, ".bin")
            linked = set()
            for name, leaf in bins:
                if leaf not in linked:
                    linked.add(leaf)
                    gen.symlink(bfd, leaf, "../%s/bin/cli.js" % name)
            os.close(bfd)
    finally:
        for fd in scopes.values():
            os.close(fd)
        os.close(nm)


def git_dir(gen, parent, objects):
    rng = gen.rng
    g = gen.mkdir(parent, ".git")
    try:
        for name, size in (("HEAD", 23), ("config", 312), ("description", 73),
                           ("index", gen.small(90 * KB, 0.7)), ("packed-refs", 1800),
                           ("FETCH_HEAD", 200), ("ORIG_HEAD", 41), ("COMMIT_EDITMSG", 60)):
            gen.file(g, name, size)
        hooks = gen.mkdir(g, "hooks")
        for h in ("applypatch-msg", "commit-msg", "fsmonitor-watchman", "post-update",
                  "pre-applypatch", "pre-commit", "pre-merge-commit", "pre-push", "pre-rebase",
                  "pre-receive", "prepare-commit-msg", "push-to-checkout", "update"):
            gen.file(hooks, h + ".sample", 400 + rng.randrange(4000))
        os.close(hooks)
        info = gen.mkdir(g, "info")
        gen.file(info, "exclude", 240)
        os.close(info)
        refs = gen.mkdir(g, "refs")
        for sub, n in (("heads", 6), ("tags", 10)):
            s = gen.mkdir(refs, sub)
            for i in range(n):
                gen.file(s, "%s-%d" % (gen.word(), i) if sub == "heads" else "v1.%d.0" % i, 41)
            os.close(s)
        rem = gen.mkdir(refs, "remotes")
        origin = gen.mkdir(rem, "origin")
        gen.file(origin, "HEAD", 32)
        gen.file(origin, "main", 41)
        os.close(origin)
        os.close(rem)
        os.close(refs)
        obj = gen.mkdir(g, "objects")
        pack = gen.mkdir(obj, "pack")
        for _ in range(2):
            stem = "pack-" + gen.hexname(40)
            gen.file(pack, stem + ".pack", int(rng.uniform(0.5, 6) * MB))
            gen.file(pack, stem + ".idx", int(rng.uniform(20, 200) * KB))
        os.close(pack)
        per = max(1, objects // 256)
        for i in range(256):
            d = gen.mkdir(obj, "%02x" % i)
            for _ in range(rng.randint(max(1, per // 2), per + per // 2)):
                gen.file(d, gen.hexname(38), gen.small(400, 1.2, 64 * KB))
            os.close(d)
        os.close(obj)
    finally:
        os.close(g)


def src_names(gen):
    rng = gen.rng

    def file_name():
        r = rng.random()
        if r < 0.4:
            return "".join(w.capitalize() for w in (gen.word(), gen.word())) + rng.choice(
                (".tsx", ".tsx", ".jsx", ".vue"))
        if r < 0.75:
            return gen.word() + rng.choice((".ts", ".js", ".test.ts", ".module.css", ".json"))
        return rng.choice(("index.ts", "index.js", "types.ts", "constants.ts", "README.md"))

    return file_name


def part_project(gen, home, name):
    rng = gen.rng
    fd = os.open(name, O_DIR, dir_fd=home)
    try:
        for f, s in (("package.json", 2400), ("package-lock.json", gen.small(400 * KB, 0.4)),
                     ("README.md", 4200), (".gitignore", 180), ("tsconfig.json", 700),
                     (".eslintrc.json", 600), (".prettierrc", 60), (".env", 120),
                     ("vite.config.ts", 500)):
            gen.file(fd, f, s)
        src = gen.mkdir(fd, "src")
        gen.tree(src, gen.n(700 * rng.uniform(0.5, 1.5), 20), 0, 6, src_names(gen), gen.word,
                 lambda: gen.small(2200, 1.0), fanout=(2, 8))
        os.close(src)
        pub = gen.mkdir(fd, "public")
        for i in range(rng.randint(3, 30)):
            gen.file(pub, "%s-%d.%s" % (gen.word(), i, rng.choice(("png", "svg", "ico", "webp"))),
                     gen.small(6000, 1.2))
        os.close(pub)
        git_dir(gen, fd, gen.n(4500 * rng.uniform(0.4, 1.6), 256))
        per = gen.scale * PACKAGES_PER_PROJECT * PROJECTS / max(1, round(PROJECTS * gen.scale))
        node_modules(gen, fd, max(5, int(per * rng.uniform(0.6, 1.4))), 0)
    finally:
        os.close(fd)


def part_pnpm(gen, home):
    """A content store and a project whose package files are hard links into it."""
    rng = gen.rng
    store_root = os.open(".local/share/pnpm", O_DIR, dir_fd=home)
    proj = os.open(WORK + "Developer/monorepo", O_DIR, dir_fd=home)
    try:
        store = gen.mkdir(store_root, "store")
        v3 = gen.mkdir(store, "v3")
        files = gen.mkdir(v3, "files")
        entries = []
        buckets = {}
        for _ in range(gen.n(3000, 20)):
            b = "%02x" % rng.randrange(256)
            if b not in buckets:
                buckets[b] = gen.mkdir(files, b)
            name = gen.hexname(62) + ("-exec" if rng.random() < 0.02 else "")
            gen.file(buckets[b], name, gen.small(1200, 1.1))
            entries.append((b, name))
        for bfd in buckets.values():
            os.close(bfd)
        gen.file(v3, "metadata.json", 4 * KB)
        os.close(v3)
        os.close(store)
        gen.file(proj, "package.json", 1800)
        gen.file(proj, "pnpm-lock.yaml", 180 * KB)
        nm = gen.mkdir(proj, "node_modules")
        dot = gen.mkdir(nm, ".pnpm")
        used = set()
        for _ in range(gen.n(240, 4)):
            name = rng.choice(NPM_NAMES).replace("@", "").replace("/", "+")
            while name in used:
                name = name + "-" + gen.word()
            used.add(name)
            ver = "%d.%d.%d" % (rng.randrange(8), rng.randrange(30), rng.randrange(20))
            pdir = gen.mkdir(dot, "%s@%s" % (name, ver))
            inner = gen.mkdir(pdir, "node_modules")
            pkg = gen.mkdir(inner, name)
            for i in range(rng.randint(3, 40)):
                b, src = rng.choice(entries)
                fname = "%s%d%s" % (gen.word(), i, rng.choice(EXT_JS))
                gen.hardlink(files, "%s/%s" % (b, src), pkg, fname)
            os.close(pkg)
            os.close(inner)
            os.close(pdir)
            # The top-level entry is a link to the package folder, as pnpm makes it.
            gen.symlink(nm, name, ".pnpm/%s@%s/node_modules/%s" % (name, ver, name))
        os.close(dot)
        os.close(nm)
        os.close(files)
    finally:
        os.close(store_root)
        os.close(proj)


BUNDLE_IDS = (
    "com.apple.Safari com.apple.mail com.apple.Music com.apple.Photos com.apple.Notes "
    "com.apple.dt.Xcode com.apple.iCal com.apple.Maps com.apple.news com.apple.Preview "
    "com.google.Chrome com.microsoft.VSCode com.spotify.client com.tinyspeck.slackmacgap "
    "us.zoom.xos com.docker.docker org.mozilla.firefox com.figma.Desktop notion.id "
    "com.jetbrains.intellij com.readdle.smartemail-Mac com.microsoft.Word com.microsoft.Excel "
    "com.microsoft.teams2 com.valvesoftware.steam com.adobe.Photoshop org.videolan.vlc "
    "com.culturedcode.ThingsMac com.agilebits.onepassword7 com.hnc.Discord"
).split()


def part_library(gen, home):
    """A macOS-style Library: caches by bundle identifier, application support,
    sandbox containers, Xcode's derived data and preferences."""
    rng = gen.rng
    lib = os.open("Library", O_DIR, dir_fd=home)
    hexfile = lambda: gen.hexname(rng.choice((16, 32, 40)))
    try:
        caches = gen.mkdir(lib, "Caches")
        for bid in BUNDLE_IDS:
            c = gen.mkdir(caches, bid)
            gen.tree(c, gen.n(min(9000, rng.paretovariate(0.9) * 120), 2), 0, 5, hexfile,
                     lambda: rng.choice(("fsCachedData", "Cache.db-wal", "blobs", "com.apple.metal",
                                         "WebKit", "NetworkCache", "Records", gen.hexname(2))),
                     lambda: gen.small(2500, 1.2), fanout=(2, 16))
            os.close(c)
        os.close(caches)

        support = gen.mkdir(lib, "Application Support")
        for app in ("Code", "Google", "Slack", "Spotify", "discord", "zoom.us", "Firefox",
                    "CloudDocs", "MobileSync", "AddressBook", "CallHistoryDB", "Knowledge",
                    "JetBrains", "Docker Desktop", "Figma", "Notion", "Steam", "com.apple.sharedfilelist"):
            a = gen.mkdir(support, app)
            gen.tree(a, gen.n(min(15000, rng.paretovariate(0.8) * 200), 2), 0, 9,
                     lambda: gen.word() + rng.choice((".json", ".db", ".sqlite", "-wal", ".ldb",
                                                      ".log", ".plist", ".vsix", "")),
                     lambda: rng.choice(("User", "Default", "workspaceStorage", "globalStorage",
                                         "extensions", "IndexedDB", "Local Storage", "leveldb",
                                         "Service Worker", "CacheStorage", "Backups", gen.word())),
                     lambda: gen.small(1800, 1.2), fanout=(2, 9))
            os.close(a)
        os.close(support)

        containers = gen.mkdir(lib, "Containers")
        for bid in BUNDLE_IDS[:20]:
            c = gen.mkdir(containers, bid)
            gen.file(c, ".com.apple.containermanagerd.metadata.plist", 3 * KB)
            data = gen.mkdir(c, "Data")
            inner = gen.mkdir(data, "Library")
            gen.tree(inner, gen.n(min(6000, rng.paretovariate(0.9) * 100), 2), 0, 8, hexfile,
                     lambda: rng.choice(("Caches", "Preferences", "Application Support", "Saved "
                                         "Application State", "WebKit", "Cookies", gen.word())),
                     lambda: gen.small(1800, 1.1), fanout=(2, 6))
            os.close(inner)
            os.close(data)
            os.close(c)
        os.close(containers)

        dev = gen.mkdir(lib, "Developer")
        xc = gen.mkdir(dev, "Xcode")
        dd = gen.mkdir(xc, "DerivedData")
        for i in range(gen.n(6, 1)):
            d = gen.mkdir(dd, "%s-%s" % (gen.word().capitalize(), gen.hexname(28)))
            gen.tree(d, gen.n(5000, 10), 0, 10,
                     lambda: gen.word().capitalize() + rng.choice((".o", ".swiftmodule", ".d", ".dia",
                                                                   ".swiftdeps", ".json", ".hmap")),
                     lambda: rng.choice(("Build", "Intermediates.noindex", "Products", "Objects-normal",
                                         "arm64", "x86_64", "Debug", "Index.noindex", gen.word())),
                     lambda: gen.small(2000, 1.1), fanout=(2, 6))
            os.close(d)
        os.close(dd)
        os.close(xc)
        os.close(dev)

        prefs = gen.mkdir(lib, "Preferences")
        for i in range(gen.n(450, 5)):
            gen.file(prefs, "%s.%s.%s.plist" % (rng.choice(("com", "org", "io", "net")), gen.word(),
                                                gen.word() + str(i)), gen.small(1500, 1.0))
        os.close(prefs)
        for name in ("Keychains", "Fonts", "Logs", "Saved Application State", "Cookies", "HTTPStorages",
                     "WebKit", "Group Containers"):
            d = gen.mkdir(lib, name)
            gen.tree(d, gen.n(rng.randint(50, 2500), 2), 0, 6, hexfile, gen.word,
                     lambda: gen.small(2500, 1.2), fanout=(2, 8))
            os.close(d)
    finally:
        os.close(lib)


def part_kernel(gen, home):
    rng = gen.rng
    fd = os.open(WORK + "src/linux", O_DIR, dir_fd=home)
    try:
        for f, s in (("Makefile", 68 * KB), ("Kconfig", 1200), ("MAINTAINERS", 200 * KB),
                     ("COPYING", 500), ("README", 700), (".gitignore", 2000)):
            gen.file(fd, f, s)

        def file_name():
            r = rng.random()
            if r < 0.05:
                return rng.choice(("Makefile", "Kconfig", "Kbuild"))
            return gen.word() + ("_" + gen.word() if r < 0.6 else "") + rng.choice(KERNEL_EXTS)

        gen.tree(fd, gen.n(110000, 50), 0, 8, file_name, lambda: rng.choice(KERNEL_DIRS),
                 lambda: gen.small(1200, 0.9), fanout=(3, 14))
    finally:
        os.close(fd)


def part_mail(gen, home):
    rng = gen.rng
    fd = os.open("Mail", O_DIR, dir_fd=home)
    stamp = [1546300800]

    def message(d):
        stamp[0] += rng.randrange(1, 20000)
        size = gen.small(5000, 1.0, 200 * KB)
        name = "%d.M%dP%d.mbp.local,S=%d,W=%d:2,%s" % (
            stamp[0], rng.randrange(10 ** 6), rng.randrange(10 ** 5), size, size + size // 40,
            rng.choice(("S", "RS", "FS", "S", "")))
        gen.file(d, name, size)

    try:
        acct = gen.mkdir(fd, "Work")
        for folder, count in (("INBOX", 5000), ("Sent", 1500), ("Drafts", 20), ("Spam", 300),
                              ("Trash", 400), ("Archive.2019", 600), ("Archive.2020", 700),
                              ("Archive.2021", 800), ("Archive.2022", 900), ("Archive.2023", 1000),
                              ("Lists.dev", 1200), ("Lists.announce", 300)):
            f = gen.mkdir(acct, folder)
            for sub in ("cur", "new", "tmp"):
                s = gen.mkdir(f, sub)
                if sub == "cur":
                    for _ in range(gen.n(count)):
                        message(s)
                elif sub == "new" and rng.random() < 0.5:
                    for _ in range(rng.randint(1, 5)):
                        message(s)
                os.close(s)
            for meta in ("dovecot.index", "dovecot.index.cache", "dovecot.index.log",
                         "dovecot-uidlist"):
                gen.file(f, meta, gen.small(30 * KB, 0.8))
            os.close(f)
        os.close(acct)
    finally:
        os.close(fd)


def part_photos(gen, home):
    rng = gen.rng
    fd = os.open("Pictures", O_DIR, dir_fd=home)
    try:
        roll = gen.mkdir(fd, "Camera Roll")
        gen.file(roll, ".DS_Store", 14340)
        day = datetime.date(2021, 1, 1)
        last = None
        k = 1
        for _ in range(gen.n(4000, 10)):
            day += datetime.timedelta(days=1 if rng.random() < 0.2 else 0)
            stem = "IMG_%d_%02d%02d" % (day.year, day.month, day.day)
            if stem == last:
                k += 1
                stem = "%s_%d" % (stem, k)
            else:
                last, k = stem, 1
            r = rng.random()
            if r < 0.01:
                gen.file(roll, stem + ".MOV", int(rng.uniform(1, 4) * MB))
            elif r < 0.25:
                gen.file(roll, stem + ".HEIC", int(rng.uniform(20, 100) * KB))
                if rng.random() < 0.3:
                    gen.file(roll, stem + ".AAE", 1100)
            else:
                gen.file(roll, stem + ".jpg", int(rng.uniform(20, 120) * KB))
        os.close(roll)
        # A library's thumbnail cache: a 16-way fan-out of small files.
        lib = gen.mkdir(fd, "Photos Library.photoslibrary")
        for meta in ("database", "resources", "private", "scopes"):
            m = gen.mkdir(lib, meta)
            gen.file(m, "Photos.sqlite" if meta == "database" else "info.plist",
                     gen.small(40 * KB, 1.0, 200 * KB))
            os.close(m)
        der = gen.mkdir(lib, "derivatives")
        for i in range(16):
            h = gen.mkdir(der, "%X" % i)
            for _ in range(gen.n(500)):
                gen.file(h, "%s_1_105_c.jpeg" % gen.hexname(8).upper(), gen.small(9000, 0.5))
            os.close(h)
        os.close(der)
        os.close(lib)
        shots = gen.mkdir(fd, "Screenshots")
        for i in range(gen.n(600)):
            gen.file(shots, "Screenshot 2023-%02d-%02d at %02d.%02d.%02d.png" % (
                i % 12 + 1, i % 28 + 1, rng.randrange(24), rng.randrange(60), rng.randrange(60)),
                gen.small(60 * KB, 0.6))
        os.close(shots)
    finally:
        os.close(fd)


def part_documents(gen, home):
    rng = gen.rng
    fd = os.open("Documents", O_DIR, dir_fd=home)
    try:
        def file_name():
            stem = rng.choice(DOC_STEMS)
            r = rng.random()
            if r < 0.3:
                stem += " %d-%02d-%02d" % (rng.randrange(2010, 2025), rng.randrange(1, 13),
                                           rng.randrange(1, 29))
            elif r < 0.5:
                stem += " (%d)" % rng.randrange(1, 9)
            elif r < 0.6:
                stem += " - Final v%d - signed copy for records" % rng.randrange(1, 5)
            return stem + rng.choice(DOC_EXTS)

        def dir_name():
            d = rng.choice(DOC_DIRS)
            return d + (" %d" % rng.randrange(2010, 2025) if rng.random() < 0.4 else "")

        gen.tree(fd, gen.n(24000, 40), 0, 11, file_name, dir_name,
                 lambda: gen.small(6 * KB, 1.2), fanout=(2, 7), ds_store=0.4)
        # File names are bytes: one that is not UTF-8.
        gen.file(fd, b"caf\xe9 menu.txt", 1800)
        # One chain well past the usual depth, but inside any sane walker's limit.
        arch = gen.mkdir(fd, "Archive of old backups")
        cur = arch
        for i in range(100):
            nxt = gen.mkdir(cur, "level %02d" % i)
            gen.file(nxt, "notes.txt", 300 + i)
            if cur != arch:
                os.close(cur)
            cur = nxt
        if cur != arch:
            os.close(cur)
        os.close(arch)
        gen.symlink(fd, "latest report.pdf", "Archive of old backups/level 00/notes.txt")
        gen.symlink(fd, "Desktop copy", "../Desktop")
    finally:
        os.close(fd)


def part_caches(gen, home):
    rng = gen.rng
    fd = os.open(".cache", O_DIR, dir_fd=home)
    try:
        moz = gen.mkdir(fd, "mozilla")
        ff = gen.mkdir(moz, "firefox")
        prof = gen.mkdir(ff, "x7k2m9qa.default-release")
        c2 = gen.mkdir(prof, "cache2")
        ent = gen.mkdir(c2, "entries")
        for _ in range(gen.n(20000, 10)):
            gen.file(ent, gen.hexname(40).upper(), gen.small(3 * KB, 1.2))
        os.close(ent)
        for sub in ("doomed", "trash"):
            os.close(gen.mkdir(c2, sub))
        gen.file(c2, "index", 512 * KB)
        os.close(c2)
        os.close(prof)
        os.close(ff)
        os.close(moz)

        th = gen.mkdir(fd, "thumbnails")
        for sub, count, med in (("normal", 3000, 12 * KB), ("large", 1500, 40 * KB),
                                ("fail", 50, 600)):
            s = gen.mkdir(th, sub)
            for _ in range(gen.n(count)):
                gen.file(s, gen.hexname(32) + ".png", gen.small(med, 0.6))
            os.close(s)
        os.close(th)

        pip = gen.mkdir(fd, "pip")
        http = gen.mkdir(pip, "http-v2")
        # pip's five single-character levels: many folders holding one file each.
        for _ in range(gen.n(3500, 5)):
            h = gen.hexname(56)
            fds = [http]
            try:
                for c in h[:5]:
                    try:
                        fds.append(gen.mkdir(fds[-1], c))
                    except FileExistsError:
                        fds.append(os.open(c, O_DIR, dir_fd=fds[-1]))
                gen.file(fds[-1], h, gen.small(40 * KB, 1.2))
            finally:
                for x in fds[1:]:
                    os.close(x)
        os.close(http)
        os.close(pip)

        for app in ("fontconfig", "mesa_shader_cache", "gstreamer-1.0", "JetBrains", "yarn",
                    "go-build", "typescript", "electron"):
            a = gen.mkdir(fd, app)
            gen.tree(a, gen.n(rng.randint(200, 3000), 5), 0, 4, lambda: gen.hexname(16),
                     lambda: gen.hexname(2), lambda: gen.small(3000, 1.2), fanout=(4, 16))
            os.close(a)
        gen.file(fd, "CACHEDIR.TAG", 43)
    finally:
        os.close(fd)


def part_npm(gen, home):
    fd = os.open(".npm", O_DIR, dir_fd=home)
    try:
        cc = gen.mkdir(fd, "_cacache")
        for kind, count, med in (("content-v2/sha512", 9000, 8 * KB), ("index-v5", 7000, 600)):
            head, tail = kind.split("/") if "/" in kind else (kind, None)
            base = gen.mkdir(cc, head)
            top = gen.mkdir(base, tail) if tail else base
            opened = {}
            for _ in range(gen.n(count, 5)):
                h = gen.hexname(64 if tail else 40)
                a, b = h[:2], h[2:4]
                if a not in opened:
                    opened[a] = (gen.mkdir(top, a), {})
                afd, subs = opened[a]
                if b not in subs:
                    subs[b] = gen.mkdir(afd, b)
                gen.file(subs[b], h[4:], gen.small(med, 1.3))
            for afd, subs in opened.values():
                for bfd in subs.values():
                    os.close(bfd)
                os.close(afd)
            if tail:
                os.close(top)
            os.close(base)
        os.close(gen.mkdir(cc, "tmp"))
        os.close(cc)
        logs = gen.mkdir(fd, "_logs")
        for i in range(10):
            gen.file(logs, "2024-03-%02dT10_11_12_%03dZ-debug-0.log" % (i + 1, i), 3000)
        os.close(logs)
    finally:
        os.close(fd)


def part_cargo(gen, home):
    rng = gen.rng
    fd = os.open(".cargo", O_DIR, dir_fd=home)
    try:
        reg = gen.mkdir(fd, "registry")
        src = gen.mkdir(reg, "src")
        idx = gen.mkdir(src, "index.crates.io-6f17d22bba15001f")
        cache = gen.mkdir(reg, "cache")
        cidx = gen.mkdir(cache, "index.crates.io-6f17d22bba15001f")
        used = set()
        for _ in range(gen.n(320, 3)):
            name = "%s%s-%d.%d.%d" % (gen.word(), rng.choice(("", "_derive", "-core", "-sys", "")),
                                      rng.randrange(3), rng.randrange(40), rng.randrange(30))
            if name in used:
                continue
            used.add(name)
            c = gen.mkdir(idx, name)
            for f, s in (("Cargo.toml", 2000), ("Cargo.toml.orig", 1500), (".cargo_vcs_info.json", 90),
                         ("README.md", 5000), ("LICENSE-MIT", 1050), ("LICENSE-APACHE", 10800)):
                gen.file(c, f, s)
            s = gen.mkdir(c, "src")
            gen.tree(s, int(min(900, rng.paretovariate(1.3) * 15)), 0, 4,
                     lambda: gen.word() + ".rs", gen.word, lambda: gen.small(5000, 1.1),
                     fanout=(1, 6))
            os.close(s)
            os.close(c)
            gen.file(cidx, name + ".crate", gen.small(60 * KB, 1.0, 2 * MB))
        os.close(cidx)
        os.close(cache)
        os.close(idx)
        os.close(src)
        os.close(reg)
        b = gen.mkdir(fd, "bin")
        for tool in ("cargo", "rustc", "rustup", "rustfmt", "cargo-clippy", "rust-analyzer"):
            gen.file(b, tool, int(rng.uniform(0.3, 1.2) * MB))
        os.close(b)
    finally:
        os.close(fd)


def part_config(gen, home):
    rng = gen.rng
    cfg = os.open(".config", O_DIR, dir_fd=home)
    share = os.open(".local/share", O_DIR, dir_fd=home)
    try:
        apps = ("Code google-chrome chromium BraveSoftware Slack discord spotify obs-studio gtk-3.0 "
                "gtk-4.0 dconf pulse fish nvim htop git gh JetBrains libreoffice evolution "
                "autostart systemd fontconfig ibus kdeconnect Signal Element Mattermost zoomus "
                "teams-for-linux Postman Insomnia dbeaver filezilla vlc mpv gimp inkscape "
                "blender krita audacity transmission qBittorrent nautilus menus xfce4 "
                "enchant yelp goa-1.0 pavucontrol.ini").split()
        for app in apps:
            a = gen.mkdir(cfg, app)
            n = gen.n(min(6000, rng.paretovariate(0.9) * 8), 2)
            gen.tree(a, n, 0, 7, lambda: gen.word() + rng.choice((".json", ".conf", ".ini", "",
                                                                  ".db", "-journal", ".log", ".ldb")),
                     lambda: rng.choice(("Default", "User", "Local Storage", "IndexedDB", "Cache",
                                         "Code Cache", "GPUCache", "Service Worker", "leveldb",
                                         "blob_storage", "Session Storage", gen.word())),
                     lambda: gen.small(2500, 1.4), fanout=(2, 8))
            os.close(a)
        gen.symlink(cfg, "nvim-dotfiles", "nvim")
        for app in ("Trash", "applications", "fonts", "recently-used.xbel", "keyrings", "gvfs-metadata",
                    "flatpak", "Steam", "containers", "zeitgeist", "tracker3", "icons", "gnome-shell"):
            if "." in app:
                gen.file(share, app, 80 * KB)
                continue
            a = gen.mkdir(share, app)
            n = gen.n(min(12000, rng.paretovariate(0.8) * 30), 2)
            gen.tree(a, n, 0, 9, lambda: gen.word() + rng.choice((".desktop", ".png", ".svg", ".ttf",
                                                                  ".so", ".json", "")),
                     gen.word, lambda: gen.small(4000, 1.3), fanout=(2, 9))
            os.close(a)
        # A link back up: a walker that followed links would never end.
        gen.symlink(share, "loop", "..")
    finally:
        os.close(cfg)
        os.close(share)


def part_media(gen, home):
    """Music, Downloads and virtual machines: the large and the sparse files."""
    rng = gen.rng
    big = max(gen.scale, 0.05)
    music = os.open("Music", O_DIR, dir_fd=home)
    try:
        for a in range(gen.n(12, 1)):
            artist = gen.mkdir(music, "%s %s" % (gen.word().capitalize(), gen.word().capitalize()))
            for b in range(rng.randint(1, 3)):
                album = gen.mkdir(artist, "%s of %s (%d)" % (gen.word().capitalize(),
                                                             gen.word().capitalize(),
                                                             rng.randrange(1970, 2024)))
                for t in range(rng.randint(8, 14)):
                    gen.file(album, "%02d %s %s.mp3" % (t + 1, gen.word().capitalize(), gen.word()),
                             int(rng.uniform(300, 900) * KB))
                gen.file(album, "cover.jpg", 90 * KB)
                os.close(album)
            os.close(artist)
    finally:
        os.close(music)
    dl = os.open("Downloads", O_DIR, dir_fd=home)
    try:
        for name, size in (("debian-12.5.0-amd64-DVD-1.iso", 192 * MB),
                           ("dataset-export-2023.tar.gz", 96 * MB),
                           ("Conference talk recording.mp4", 64 * MB)):
            gen.large_file(dl, name, int(size * big))
        gen.sparse_file(dl, "disk-image.img", int(16 * GB * big), 4, 256 * KB)
        for i in range(gen.n(300, 5)):
            gen.file(dl, "%s (%d)%s" % (rng.choice(DOC_STEMS), i, rng.choice(
                (".pdf", ".zip", ".deb", ".AppImage", ".tar.xz", ".png", ".csv"))),
                gen.small(60 * KB, 1.5, 4 * MB))
    finally:
        os.close(dl)
    vms = os.open("VirtualBox VMs", O_DIR, dir_fd=home)
    try:
        for vm, length in (("Windows 11", 80 * GB), ("Ubuntu Server", 40 * GB)):
            v = gen.mkdir(vms, vm)
            gen.sparse_file(v, vm + ".vdi", int(length * big), 16, 512 * KB)
            gen.file(v, vm + ".vbox", 9 * KB)
            gen.file(v, vm + ".vbox-prev", 9 * KB)
            logs = gen.mkdir(v, "Logs")
            for i in range(4):
                gen.file(logs, "VBox.log" + (".%d" % i if i else ""), gen.small(120 * KB, 0.5))
            os.close(logs)
            os.close(v)
    finally:
        os.close(vms)
    cont = os.open(".local/share/containers-storage", O_DIR, dir_fd=home)
    try:
        gen.sparse_file(cont, "podman-machine.raw", int(32 * GB * big), 8, 512 * KB)
    finally:
        os.close(cont)


def part_home(gen, home):
    """Dotfiles and the odd links at the top of the home folder."""
    rng = gen.rng
    for name, size in ((".bashrc", 3771), (".profile", 807), (".bash_logout", 220),
                       (".bash_history", 48 * KB), (".zsh_history", 110 * KB), (".gitconfig", 420),
                       (".viminfo", 14 * KB), (".lesshst", 20), (".DS_Store", 10244),
                       (".Xauthority", 55), (".wget-hsts", 165), (".python_history", 9 * KB)):
        gen.file(home, name, size)
    ssh = os.open(".ssh", O_DIR, dir_fd=home)
    for name, size in (("id_ed25519", 411), ("id_ed25519.pub", 97), ("known_hosts", 2600),
                       ("config", 380), ("authorized_keys", 570)):
        gen.file(ssh, name, size)
    os.close(ssh)
    desk = os.open("Desktop", O_DIR, dir_fd=home)
    for i in range(rng.randint(20, 40)):
        gen.file(desk, "%s %d%s" % (rng.choice(DOC_STEMS), i, rng.choice(DOC_EXTS)),
                 gen.small(40 * KB, 1.2))
    gen.file(desk, ".DS_Store", 6148)
    gen.symlink(desk, "old shortcut", "/nonexistent/Applications/Old.app")
    gen.symlink(desk, "Projects", "../Projects")
    os.close(desk)
    gen.symlink(home, "rootfs", "/")
    gen.symlink(home, "current-project", project_dir(0))


def project_name(i):
    names = ("webapp", "dashboard", "api-server", "mobile-app", "design-system", "blog",
             "checkout", "admin-panel", "docs-site", "chat-client", "analytics", "landing-page",
             "cli-tools", "graphql-gateway", "storefront", "editor", "portfolio", "game")
    return names[i % len(names)] + ("" if i < len(names) else "-%d" % (i // len(names)))


SKELETON = ("Desktop", "Documents", "Downloads", "Music", "Pictures", "Projects", "Developer",
            "Developer/monorepo", "Public", "Templates", "Videos", "src", "src/linux", "Library",
            "Mail", ".cache", ".config",
            ".local", ".local/share", ".local/share/pnpm", ".local/share/containers-storage",
            ".npm", ".cargo", ".ssh", "VirtualBox VMs")


# Where the projects and the kernel tree go: the home folder itself, or with
# --skewed one folder inside Library, which then holds about 85 % of the
# entries (as a real Library with Xcode's and a package manager's data can).
WORK = ""
WORKSPACE = "Library/Workspace/"
MOVED = ("Projects", "Developer", "Developer/monorepo", "src", "src/linux")


def project_dir(i):
    """Six projects in Projects, four in Developer, the rest in src."""
    return "%s%s/%s" % (WORK, "Projects" if i < 6 else "Developer" if i < 10 else "src", project_name(i))


def units(scale):
    """The parts, largest first, so that the pool finishes together."""
    out = [("project", project_dir(i)) for i in range(max(1, round(PROJECTS * scale)))]
    out += [("library", None), ("kernel", None), ("caches", None), ("config", None),
            ("documents", None),
            ("npm", None), ("cargo", None), ("mail", None), ("photos", None), ("pnpm", None),
            ("media", None), ("home", None)]
    return out


def run_unit(job):
    root, seed, scale, kind, arg, skewed = job
    global WORK
    WORK = WORKSPACE if skewed else ""
    gen = Gen(unit_seed(seed, "%s:%s" % (kind, arg)), scale)
    home = os.open(root, O_DIR)
    try:
        if kind == "project":
            part_project(gen, home, arg)
        else:
            globals()["part_" + kind](gen, home)
    finally:
        os.close(home)
    return gen.counts()


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("dir", help="where to build the tree; must be absent or empty")
    ap.add_argument("--seed", type=int, default=20240413)
    ap.add_argument("--scale", type=float, default=1.0,
                    help="1.0 gives about a million entries; 0.02 about 18,000")
    # Creating files is bound by the file system's own locks: a second process
    # mostly adds contention, so one is the default.
    ap.add_argument("--jobs", type=int, default=1, help="parts built in parallel")
    ap.add_argument("--skewed", action="store_true",
                    help="put the projects and the kernel tree in Library: one first-level "
                    "folder then holds about 85 %% of the entries")
    args = ap.parse_args()
    if args.scale <= 0:
        ap.error("--scale must be positive")

    root = os.path.abspath(args.dir)
    os.makedirs(root, exist_ok=True)
    if os.listdir(root):
        sys.exit("gen_tree: %s is not empty" % root)
    started = time.monotonic()
    global WORK
    WORK = WORKSPACE if args.skewed else ""
    parts = units(args.scale)
    skeleton = list(SKELETON)
    if args.skewed:
        skeleton = [d for d in skeleton if d not in MOVED] + [WORKSPACE.rstrip("/")]
        skeleton += [WORKSPACE + d for d in MOVED]
    made = skeleton + [arg for kind, arg in parts if kind == "project"]
    for d in made:
        os.mkdir(os.path.join(root, d), 0o755)
    jobs = [(root, args.seed, args.scale, kind, arg, args.skewed) for kind, arg in parts]
    totals = {"files": 0, "dirs": len(made), "symlinks": 0, "hardlinks": 0, "large": 0,
              "sparse": 0, "written": 0}
    if args.jobs > 1:
        with multiprocessing.Pool(args.jobs) as pool:
            results = list(pool.imap_unordered(run_unit, jobs))
    else:
        results = [run_unit(j) for j in jobs]
    for r in results:
        for k, v in r.items():
            totals[k] += v
    entries = totals["files"] + totals["dirs"] + totals["symlinks"] + totals["hardlinks"]
    print("root: %s" % root)
    print("entries: %d" % entries)
    print("files: %d" % totals["files"])
    print("dirs: %d" % totals["dirs"])
    print("symlinks: %d" % totals["symlinks"])
    print("hardlinks: %d" % totals["hardlinks"])
    print("large_files: %d" % totals["large"])
    print("sparse_files: %d" % totals["sparse"])
    print("bytes_written: %d" % totals["written"])
    print("seconds: %.1f" % (time.monotonic() - started))


if __name__ == "__main__":
    main()
