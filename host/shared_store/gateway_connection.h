// HTTP to one member of a cluster at a time: requests, and beside them one stream. Any bytes that
// arrive are bounded, and so is every wait.
//
// One thread at a time; wake() and stop() may be called from any. While the process exits, every
// wait ends and every call fails, because the libraries below are being taken down.
#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/shared_store/cluster_options.h"

namespace zlutil::settings::host {

using SteadyTime = std::chrono::steady_clock::time_point;

class GatewayConnection {
 public:
  struct Post {
    std::string url;
    std::string token;  // "" for none
    std::string body;
  };

  // How a request has ended.
  struct Outcome {
    // Nothing has been sent; sent, but no whole answer came; the answer is too long; an answer.
    enum Kind { kNotSent, kNoAnswer, kTooLong, kAnswer };
    Kind kind = kNotSent;
    int sendings = 0;  // the library sends again if a connection that it has kept turns out closed
    std::string reason;  // why there is no answer; narrow text
    long status = 0;     // of HTTP
    std::string body;
  };

  // An answer to a request that is longer than `longestAnswer` bytes is not taken.
  GatewayConnection(const TlsFiles& files, std::size_t longestAnswer);
  ~GatewayConnection();
  GatewayConnection(const GatewayConnection&) = delete;
  GatewayConnection& operator=(const GatewayConnection&) = delete;

  // Sends the request and waits for the whole answer, until `deadline`, and at most `silence` for
  // the next bytes. Returns early after stop().
  Outcome exchange(const Post& post, SteadyTime deadline, std::chrono::milliseconds silence);

  // Opens a stream. Its bytes go to `receive`, within the other calls; if that returns false, the
  // stream ends. Ends an earlier one.
  using Receiver = std::function<bool(std::string_view bytes)>;
  void openStream(const Post& post, const Receiver& receive);
  bool isStreamOpen() const { return isStreamOpen_; }
  // Returns why the stream has ended; narrow text.
  const std::string& streamReason() const { return streamReason_; }
  void closeStream();

  // Lets the stream's bytes in. Returns after the first ones, or at the deadline, the stream's end,
  // a wake() or a stop().
  void wait(SteadyTime deadline);

  // Ends a wait() that is running, or the next one.
  void wake();
  void stop();
  bool isStopped() const;

 private:
  struct Transfer;
  static std::size_t onBytes(char* bytes, std::size_t size, std::size_t count, void* transfer);
  static int onSending(void* transfer, char*, char*, int, int);

  void prepare(Transfer& transfer, const Post& post);
  bool step(SteadyTime deadline);
  bool collectEnded();
  void endStream(const std::string& reason);

  const TlsFiles files_;
  CURLM* const multi_;
  const std::unique_ptr<Transfer> request_, stream_;
  Receiver receive_;
  bool isStreamOpen_ = false;
  std::string streamReason_;
  std::atomic<bool> isStopped_{false}, isWoken_{false};
};

}  // namespace zlutil::settings::host
