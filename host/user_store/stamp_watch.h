// A thread that calls a function when a file is written to, and at the latest a second after the
// last call. It blocks all signals, and nothing waits for it when the process exits.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zlutil::settings::host {

class StampWatch {
 public:
  // Calls `wake` once at first. The file need not exist yet. What `wake` throws is reported on
  // standard error, the first time, and it is called again as if it had thrown nothing. Where the
  // process can have no further thread, it says so on standard error and never calls.
  StampWatch(const std::string& file, std::function<void()> wake);
  // No call is running or begins once this has returned; except that `wake` itself may end the
  // watch, and is then not called again.
  ~StampWatch();
  // False where the process can have no further thread.
  bool isRunning() const;
  StampWatch(const StampWatch&) = delete;
  StampWatch& operator=(const StampWatch&) = delete;

 private:
  struct Shared;
  const std::shared_ptr<Shared> shared_;  // with the thread
};

}  // namespace zlutil::settings::host
