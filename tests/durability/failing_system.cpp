#include "tests/durability/failing_system.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

namespace test {
namespace {

thread_local int calls = 0, chosen = 0, failure = 0;
thread_local bool onlyThreads = false;
thread_local const std::function<void()>* interruption = nullptr;

bool failsNow(bool startsThread = false) {
  if (onlyThreads && !startsThread) return false;
  if (++calls != chosen) return false;
  if (interruption) {
    (*interruption)();
    return false;
  }
  errno = failure;
  return true;
}

template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void failOn(int n, int error) {
  calls = 0;
  chosen = n;
  failure = error;
  interruption = nullptr;
  onlyThreads = false;
}

void failThreadOn(int n, int error) {
  failOn(n, error);
  onlyThreads = true;
}

void interruptOn(int n, const std::function<void()>& function) {
  failOn(n, 0);
  interruption = &function;
}

int callsSince() { return calls; }
bool hasCome() { return chosen > 0 && calls >= chosen; }

}  // namespace test

// These stand before the C library's own for every library of the process.
#define FAILING_CALL(result, name, parameters, arguments)                    \
  extern "C" __attribute__((visibility("default"))) result name parameters { \
    static auto* const call = test::real<result parameters>(#name);          \
    return test::failsNow() ? -1 : call arguments;                           \
  }

FAILING_CALL(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
FAILING_CALL(ssize_t, pwrite, (int file, const void* data, size_t size, off_t at),
             (file, data, size, at))
FAILING_CALL(ssize_t, pwrite64, (int file, const void* data, size_t size, off64_t at),
             (file, data, size, at))
FAILING_CALL(int, fsync, (int file), (file))
FAILING_CALL(int, fdatasync, (int file), (file))
FAILING_CALL(int, ftruncate, (int file, off_t size), (file, size))
FAILING_CALL(int, ftruncate64, (int file, off64_t size), (file, size))
FAILING_CALL(int, rename, (const char* from, const char* to), (from, to))
FAILING_CALL(int, unlink, (const char* name), (name))
FAILING_CALL(int, mkdir, (const char* name, mode_t mode), (name, mode))

// It gives the error instead of setting it.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* with,
                                                                     void* (*run)(void*),
                                                                     void* argument) {
  static auto* const call =
      test::real<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
  return test::failsNow(true) ? errno : call(thread, with, run, argument);
}

#define FAILING_OPEN(name)                                                                       \
  extern "C" __attribute__((visibility("default"))) int name(const char* file, int flags, ...) { \
    static auto* const call = test::real<int(const char*, int, ...)>(#name);                     \
    va_list rest;                                                                                \
    va_start(rest, flags);                                                                       \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(rest, mode_t) : 0;              \
    va_end(rest);                                                                                \
    return test::failsNow() ? -1 : call(file, flags, mode);                                      \
  }

FAILING_OPEN(open)
FAILING_OPEN(open64)
