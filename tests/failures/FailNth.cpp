// Preloaded into a program, makes one of its calls fail: the n-th of a kind.
//
// PLOTTERRA_FAIL_KIND is the kind, PLOTTERRA_FAIL_AT the first call that fails, from 1, and
// PLOTTERRA_FAIL_COUNT how many fail from there on. PLOTTERRA_FAIL_CALLS names a file in which the
// calls of each kind are counted, 8 bytes a kind.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <iterator>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

enum Kind { memory, map, open_, read_, write_, close_, thread, name, status, none };
constexpr const char *kKinds[] = {"memory", "map",    "open", "read",  "write",
                                  "close",  "thread", "name", "status"};

// Plain data, since memory is asked for before anything here is constructed.
Kind kind = none;
std::uint64_t first = 0, count = 1;
std::atomic<std::uint64_t> ownCalls[none];
std::atomic<std::uint64_t> *calls = ownCalls;

std::uint64_t number(const char *name, std::uint64_t otherwise) {
    const char *text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Whether this call of a kind is one that has to fail.
bool fails(Kind of) {
    const std::uint64_t call = ++calls[of];
    return of == kind && call >= first && call - first < count;
}

template <class Result>
Result failWith(int cause, Result result) {
    errno = cause;
    return result;
}

/// The function that this library stands before.
template <class Function>
Function *next(Function *, const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}
#define NEXT(name) next(&name, #name)

/// What a program says of a failure must be seen to judge it.
bool isLog(int descriptor) {
    return descriptor == STDERR_FILENO;
}

[[gnu::constructor(101)]] void prepare() {
    if (const char *path = std::getenv("PLOTTERRA_FAIL_CALLS")) {
        const int file = open(path, O_RDWR);
        void *words = mmap(nullptr, sizeof ownCalls, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (words == MAP_FAILED)
            _exit(120);
        close(file);
        calls = static_cast<std::atomic<std::uint64_t> *>(words);
    }
    first = number("PLOTTERRA_FAIL_AT", 0);
    count = number("PLOTTERRA_FAIL_COUNT", 1);
    const char *wanted = std::getenv("PLOTTERRA_FAIL_KIND");
    const auto found = std::find_if(std::begin(kKinds), std::end(kKinds), [=](const char *known) {
        return wanted != nullptr && std::strcmp(known, wanted) == 0;
    });
    kind = static_cast<Kind>(found - kKinds); // `none` where there is no such kind
}

} // namespace

extern "C" {

// What the C library calls its own; `free` takes what they give.
void *__libc_malloc(std::size_t);
void *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void *, std::size_t);
void *__libc_memalign(std::size_t, std::size_t);

void *malloc(std::size_t size) {
    return fails(memory) ? failWith(ENOMEM, nullptr) : __libc_malloc(size);
}
void *calloc(std::size_t items, std::size_t size) {
    return fails(memory) ? failWith(ENOMEM, nullptr) : __libc_calloc(items, size);
}
void *realloc(void *old, std::size_t size) {
    return fails(memory) ? failWith(ENOMEM, nullptr) : __libc_realloc(old, size);
}
void *memalign(std::size_t alignment, std::size_t size) {
    return fails(memory) ? failWith(ENOMEM, nullptr) : __libc_memalign(alignment, size);
}
void *aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}
int posix_memalign(void **result, std::size_t alignment, std::size_t size) {
    void *found = memalign(alignment, size);
    if (found == nullptr)
        return ENOMEM;
    *result = found;
    return 0;
}

void *mmap(void *address, std::size_t size, int protection, int flags, int file, off_t offset) {
    static const auto real = NEXT(mmap);
    return fails(map) ? failWith(ENOMEM, MAP_FAILED)
                      : real(address, size, protection, flags, file, offset);
}
void *mmap64(void *address, std::size_t size, int protection, int flags, int file, off_t offset) {
    return mmap(address, size, protection, flags, file, offset);
}

int openat(int folder, const char *path, int flags, ...) {
    static const auto real = NEXT(openat);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(open_) ? failWith(EMFILE, -1) : real(folder, path, flags, mode);
}
int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openat(AT_FDCWD, path, flags, mode);
}
int open64(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openat(AT_FDCWD, path, flags, mode);
}
FILE *fopen(const char *path, const char *mode) {
    static const auto real = NEXT(fopen);
    return fails(open_) ? failWith(EMFILE, nullptr) : real(path, mode);
}
FILE *fopen64(const char *path, const char *mode) {
    return fopen(path, mode);
}

ssize_t read(int file, void *bytes, std::size_t size) {
    static const auto real = NEXT(read);
    return fails(read_) ? failWith(EIO, -1) : real(file, bytes, size);
}
ssize_t pread(int file, void *bytes, std::size_t size, off_t offset) {
    static const auto real = NEXT(pread);
    return fails(read_) ? failWith(EIO, -1) : real(file, bytes, size, offset);
}
ssize_t pread64(int file, void *bytes, std::size_t size, off_t offset) {
    return pread(file, bytes, size, offset);
}

ssize_t write(int file, const void *bytes, std::size_t size) {
    static const auto real = NEXT(write);
    return !isLog(file) && fails(write_) ? failWith(ENOSPC, -1) : real(file, bytes, size);
}
ssize_t pwrite(int file, const void *bytes, std::size_t size, off_t offset) {
    static const auto real = NEXT(pwrite);
    return fails(write_) ? failWith(ENOSPC, -1) : real(file, bytes, size, offset);
}
ssize_t pwrite64(int file, const void *bytes, std::size_t size, off_t offset) {
    return pwrite(file, bytes, size, offset);
}
ssize_t writev(int file, const iovec *parts, int partCount) {
    static const auto real = NEXT(writev);
    return !isLog(file) && fails(write_) ? failWith(ENOSPC, -1) : real(file, parts, partCount);
}

/// As a file system that could not keep what was written: closed, and failed.
int close(int file) {
    static const auto real = NEXT(close);
    const bool isFailing = fails(close_);
    const int result = real(file);
    return isFailing ? failWith(EIO, -1) : result;
}

int pthread_create(pthread_t *made, const pthread_attr_t *attributes, void *(*routine)(void *),
                   void *argument) {
    static const auto real = NEXT(pthread_create);
    return fails(thread) ? EAGAIN : real(made, attributes, routine, argument);
}

int linkat(int from, const char *path, int to, const char *link, int flags) {
    static const auto real = NEXT(linkat);
    return fails(name) ? failWith(EIO, -1) : real(from, path, to, link, flags);
}
int rename(const char *from, const char *to) {
    static const auto real = NEXT(rename);
    return fails(name) ? failWith(EIO, -1) : real(from, to);
}
int renameat(int fromFolder, const char *from, int toFolder, const char *to) {
    static const auto real = NEXT(renameat);
    return fails(name) ? failWith(EIO, -1) : real(fromFolder, from, toFolder, to);
}
int mkdir(const char *path, mode_t mode) {
    static const auto real = NEXT(mkdir);
    return fails(name) ? failWith(EIO, -1) : real(path, mode);
}
int utimensat(int folder, const char *path, const timespec *times, int flags) {
    static const auto real = NEXT(utimensat);
    return fails(name) ? failWith(EIO, -1) : real(folder, path, times, flags);
}
int futimens(int file, const timespec *times) {
    static const auto real = NEXT(futimens);
    return fails(name) ? failWith(EIO, -1) : real(file, times);
}
int fchmod(int file, mode_t mode) {
    static const auto real = NEXT(fchmod);
    return fails(name) ? failWith(EIO, -1) : real(file, mode);
}

int stat(const char *path, struct stat *result) {
    static const auto real = next<int(const char *, struct stat *)>(nullptr, "stat");
    return fails(status) ? failWith(EIO, -1) : real(path, result);
}
int fstat(int file, struct stat *result) {
    static const auto real = next<int(int, struct stat *)>(nullptr, "fstat");
    return fails(status) ? failWith(EIO, -1) : real(file, result);
}
int lstat(const char *path, struct stat *result) {
    static const auto real = next<int(const char *, struct stat *)>(nullptr, "lstat");
    return fails(status) ? failWith(EIO, -1) : real(path, result);
}

} // extern "C"
