// Output for people at a terminal: colours, and a line that shows what takes long. Nothing of it is
// written to files and pipes, nor if the environment has NO_COLOR (for colours) or TERM=dumb. One
// thread at a time.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace command_line {

enum class Colour { kRed = 31, kYellow = 33, kCyan = 36 };
enum class Stream { kOutput = 1, kError = 2 };  // numbers of descriptors

// Returns the text in the colour, if the stream shows colours.
std::string coloured(Stream stream, Colour colour, const std::string& text);

// A scope that shows a line on a terminal's standard error if it takes longer than half a second.
class Progress {
 public:
  explicit Progress(const std::string& line);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void show();

  const std::string line_;
  std::mutex mutex_;
  std::condition_variable end_;
  bool hasEnded_ = false;
  std::thread thread_;  // none without a terminal
};

}  // namespace command_line
