#include "command_line/terminal.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>

namespace command_line {
namespace {

constexpr auto kSoon = std::chrono::milliseconds(500);
constexpr char kEraseLine[] = "\r\033[K";

bool isTerminal(Stream stream) {
  const char* const kind = std::getenv("TERM");
  return isatty(static_cast<int>(stream)) && kind && std::strcmp(kind, "dumb") != 0;
}

}  // namespace

std::string coloured(Stream stream, Colour colour, const std::string& text) {
  const char* const none = std::getenv("NO_COLOR");
  if (!isTerminal(stream) || (none && *none)) return text;
  return "\033[" + std::to_string(static_cast<int>(colour)) + "m" + text + "\033[0m";
}

Progress::Progress(const std::string& line) : line_(line) {
  if (!isTerminal(Stream::kError)) return;
  try {
    thread_ = std::thread([this] { show(); });
  } catch (const std::system_error&) {
    // Without a further thread the work is done silently.
  }
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    hasEnded_ = true;
  }
  end_.notify_one();
  thread_.join();
}

void Progress::show() {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto start = std::chrono::steady_clock::now();
  bool isShown = false;
  while (!end_.wait_for(lock, kSoon, [this] { return hasEnded_; })) {
    const auto spent = std::chrono::steady_clock::now() - start;
    std::cerr << kEraseLine << line_ << " ("
              << std::chrono::duration_cast<std::chrono::seconds>(spent).count() << " s)"
              << std::flush;
    isShown = true;
  }
  if (isShown) std::cerr << kEraseLine << std::flush;
}

}  // namespace command_line
