// A scope in which this thread blocks all signals, so that a thread started in it inherits that:
// signals are for the program's own threads. The destructor restores the thread's own mask: a
// thread of a JVM needs SIGSEGV.
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
