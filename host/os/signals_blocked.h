// Blocks all signals on this thread for a while, so that a thread that it starts meanwhile inherits
// that: signals are for the program's own threads. The thread itself gets its own back whatever
// happens: it may be one of a JVM's, which cannot do without SIGSEGV.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace zlutil::settings::host {

class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace zlutil::settings::host
