/* A file layer that fails: preloaded, it counts the calls of one program that change files. The n-th of them ends the
   process in its middle, or fails, which standard error tells, and all later ones with it. The program sets in its
   environment: OST_FAIL_IN its name, OST_FAIL_AT n from 1 (absent: nothing fails; another n begins a new count),
   OST_FAIL_AS the errno or 0 for the sudden end, OST_FAIL_ONCE when later calls work again, OST_NO_EXCHANGE when
   renameat2() cannot do more than rename(). */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { kEnd = -1, kWorks = 0 };

/* What happens to the call: kWorks, kEnd, or an errno. */
static int verdict(int mayOnlyEnd) {
  static int calls, last;
  const char *program = getenv("OST_FAIL_IN"), *at = getenv("OST_FAIL_AT"), *as = getenv("OST_FAIL_AS");
  if (!program || !at || strcmp(program, program_invocation_short_name) != 0) return kWorks;
  const int code = as ? atoi(as) : 0;
  if (mayOnlyEnd && code) return kWorks;
  if (atoi(at) != last) calls = 0;
  last = atoi(at);
  if (++calls < last || (calls > last && getenv("OST_FAIL_ONCE"))) return kWorks;
  if (calls == last && code) dprintf(2, "<call fails>\n");
  return code ? code : kEnd;
}

static int fails(void) {
  const int code = verdict(0);
  if (code == kEnd) _exit(77);
  if (code != kWorks) errno = code;
  return code != kWorks;
}

#define REAL(name)               \
  static __typeof__(&name) real; \
  if (!real) *(void**)&real = dlsym(RTLD_NEXT, #name)

/* Where nameless files cannot be made, named ones are. */
static int changes(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY && !(flags & O_PATH) && (flags & O_TMPFILE) != O_TMPFILE;
}

/* A sudden end leaves the new file empty. */
#define OPEN(name, parameters, arguments)                                         \
  int name parameters {                                                           \
    REAL(name);                                                                   \
    va_list rest;                                                                 \
    va_start(rest, flags);                                                        \
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0; \
    va_end(rest);                                                                 \
    const int code = changes(flags) ? verdict(0) : kWorks;                        \
    if (code > kWorks) errno = code;                                              \
    if (code > kWorks) return -1;                                                 \
    const int fd = code == kWorks || flags & O_CREAT ? real arguments : -1;       \
    if (code == kEnd) _exit(77);                                                  \
    return fd;                                                                    \
  }
OPEN(open, (const char* path, int flags, ...), (path, flags, mode))
OPEN(open64, (const char* path, int flags, ...), (path, flags, mode))
OPEN(openat, (int at, const char* path, int flags, ...), (at, path, flags, mode))
OPEN(openat64, (int at, const char* path, int flags, ...), (at, path, flags, mode))

/* A sudden end leaves half of what was to be written. The console and pipes are no files. */
ssize_t write(int fd, const void* data, size_t size) {
  REAL(write);
  struct stat status;
  const int code = fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? verdict(0) : kWorks;
  if (code == kWorks) return real(fd, data, size);
  if (code == kEnd) {
    real(fd, data, size / 2);
    _exit(77);
  }
  errno = code;
  return -1;
}

#define CALL(name, parameters, arguments) \
  int name parameters {                   \
    REAL(name);                           \
    return fails() ? -1 : real arguments; \
  }
CALL(rename, (const char* from, const char* to), (from, to))
CALL(renameat, (int at, const char* from, int in, const char* to), (at, from, in, to))
CALL(link, (const char* from, const char* to), (from, to))
CALL(mkdir, (const char* path, mode_t mode), (path, mode))
CALL(mkdirat, (int at, const char* path, mode_t mode), (at, path, mode))
CALL(ftruncate64, (int fd, off64_t size), (fd, size))
CALL(fchmod, (int fd, mode_t mode), (fd, mode))
CALL(fchown, (int fd, uid_t user, gid_t group), (fd, user, group))

/* A disk can say at the end that it has not taken what was written. A sudden end there leaves the same as one at the
   next call. */
static int failsAtEnd(void) {
  const char* as = getenv("OST_FAIL_AS");
  return as && atoi(as) && fails();
}

/* Storing a folder is best effort, and what has no name is gone with its end. */
static int writesFile(int fd) {
  struct stat status;
  return (fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY && fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_nlink > 0;
}

#define STORE(name)                                        \
  int name(int fd) {                                       \
    REAL(name);                                            \
    return writesFile(fd) && failsAtEnd() ? -1 : real(fd); \
  }
STORE(fsync)
STORE(fdatasync)

/* The descriptor is gone all the same. */
int close(int fd) {
  REAL(close);
  const int failed = writesFile(fd) && failsAtEnd(), code = errno;
  const int closed = real(fd);
  if (!failed) return closed;
  errno = code;
  return -1;
}

/* Removing works on a full disk. */
#define REMOVAL(name, parameters, arguments) \
  int name parameters {                      \
    REAL(name);                              \
    if (verdict(1) == kEnd) _exit(77);       \
    return real arguments;                   \
  }
REMOVAL(unlink, (const char* path), (path))
REMOVAL(unlinkat, (int at, const char* path, int flags), (at, path, flags))
REMOVAL(rmdir, (const char* path), (path))

int renameat2(int at, const char* from, int in, const char* to, unsigned flags) {
  REAL(renameat2);
  if (fails()) return -1;
  if (!getenv("OST_NO_EXCHANGE")) return real(at, from, in, to, flags);
  errno = EINVAL;
  return -1;
}
