// A thread that calls a function when a file is written to, and at the latest a second after the
// last call. It blocks all signals; the end of the process does not wait for it.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zlutil::settings::host {

class StampWatch {
 public:
  // Calls `wake` once at the beginning. The file need not exist yet. Reports the first exception of
  // `wake` on standard error, and goes on calling it. Reports on standard error if no thread can be
  // started; `wake` is then never called.
  StampWatch(const std::string& file, std::function<void()> wake);
  // Waits for a call that is running; none begins afterwards. `wake` itself may destroy the watch,
  // and is then not called again.
  ~StampWatch();
  // Returns false if no thread could be started.
  bool isRunning() const;
  StampWatch(const StampWatch&) = delete;
  StampWatch& operator=(const StampWatch&) = delete;

 private:
  struct Shared;
  const std::shared_ptr<Shared> shared_;  // with the thread
};

}  // namespace zlutil::settings::host
