/* Preloaded into a program: each of its writes to a file takes 5 ms more. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

static void Wait(int file) {
    struct stat facts;
    if (fstat(file, &facts) == 0 && S_ISREG(facts.st_mode)) usleep(5000);
}

#define SLOW(result, name, parameters, ...)                  \
    result name parameters {                                 \
        static result(*next) parameters;                     \
        if (!next) *(void**)&next = dlsym(RTLD_NEXT, #name); \
        Wait(file);                                          \
        return next(__VA_ARGS__);                            \
    }
SLOW(ssize_t, write, (int file, const void* bytes, size_t size), file, bytes, size)
SLOW(ssize_t, writev, (int file, const struct iovec* parts, int count), file, parts, count)
SLOW(ssize_t, pwrite, (int file, const void* bytes, size_t size, off_t at), file, bytes, size, at)
SLOW(ssize_t, pwrite64, (int file, const void* bytes, size_t size, off64_t at), file, bytes, size, at)
SLOW(int, fsync, (int file), file)
SLOW(int, fdatasync, (int file), file)
