// The end of the process: threads that use the network must be out of its libraries before those
// are taken down. Any thread.
#pragma once

#include <functional>

namespace zlutil::settings::host {

// Prepares the libraries for the network; called before their first use. From then on the end of
// the process waits, for a moment, until no NetworkUse is left.
void prepareNetwork();

// Returns whether the process is exiting, or is a child that has the state of its parent.
bool isProcessExiting();

// Returns whether this process is such a child: of a fork() since prepareNetwork(). It has none of
// the threads.
bool isForkedChild();

// A scope in which a thread uses the network. `wake` is called, on another thread, when the process
// exits; the scope must then end soon.
class NetworkUse {
 public:
  explicit NetworkUse(const std::function<void()>& wake);
  ~NetworkUse();
  NetworkUse(const NetworkUse&) = delete;
  NetworkUse& operator=(const NetworkUse&) = delete;

 private:
  const std::function<void()>* const wake_;
};

}  // namespace zlutil::settings::host
