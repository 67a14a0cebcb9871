#include "tests/durability/failing_system.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>

namespace test {
namespace {

thread_local int calls = 0, chosen = 0, failure = 0;
thread_local bool onlyThreads = false;
thread_local const std::function<void()>* interruption = nullptr;
thread_local std::set<std::string> unflushed;

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

// Returns "" if the descriptor has no file.
std::string nameOf(int file) {
  std::error_code none;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), none).filename();
}

void noteWritten(int file) {
  if (chosen > 0) unflushed.insert(nameOf(file));
}
void noteFlushed(int file) {
  if (chosen > 0) unflushed.erase(nameOf(file));
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
  unflushed.clear();
}

void failThreadOn(int n, int error) {
  failOn(n, error);
  onlyThreads = true;
}

void interruptOn(int n, const std::function<void()>& function) {
  failOn(n, 0);
  interruption = &function;
}

bool hasCome() { return chosen > 0 && calls >= chosen; }
std::set<std::string> unflushedFiles() { return unflushed; }

}  // namespace test

// These replace the functions of the C library for every library of the process.
#define FAILING_CALL(result, name, parameters, arguments, note)              \
  extern "C" __attribute__((visibility("default"))) result name parameters { \
    static auto* const call = test::real<result parameters>(#name);          \
    if (test::failsNow()) return -1;                                         \
    note;                                                                    \
    return call arguments;                                                   \
  }
#define FAILING_WRITE(result, name, parameters, arguments) \
  FAILING_CALL(result, name, parameters, arguments, test::noteWritten(file))
#define FAILING_FLUSH(name) FAILING_CALL(int, name, (int file), (file), test::noteFlushed(file))
#define NOTHING static_cast<void>(0)

FAILING_WRITE(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
FAILING_WRITE(ssize_t, pwrite, (int file, const void* data, size_t size, off_t at),
              (file, data, size, at))
FAILING_WRITE(ssize_t, pwrite64, (int file, const void* data, size_t size, off64_t at),
              (file, data, size, at))
FAILING_WRITE(int, ftruncate, (int file, off_t size), (file, size))
FAILING_WRITE(int, ftruncate64, (int file, off64_t size), (file, size))
FAILING_FLUSH(fsync)
FAILING_FLUSH(fdatasync)
FAILING_CALL(int, rename, (const char* from, const char* to), (from, to), NOTHING)
FAILING_CALL(int, unlink, (const char* name), (name), NOTHING)
FAILING_CALL(int, mkdir, (const char* name, mode_t mode), (name, mode), NOTHING)

// Returns the error number instead of setting errno.
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
