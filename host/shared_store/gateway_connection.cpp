#include "host/shared_store/gateway_connection.h"

#include <signal.h>
#include <time.h>

#include <algorithm>
#include <new>
#include <utility>

#include "host/os/file_name.h"
#include "host/shared_store/process_exit.h"

namespace zlutil::settings::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestConnecting(1500);
constexpr milliseconds kLongestStep(250);

// A scope in which writing to a connection that the other side has closed raises no SIGPIPE, which
// would end the process: the TLS library writes without the flag that prevents it.
class SigpipeBlocked {
 public:
  SigpipeBlocked() {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE);
    sigemptyset(&sigpipe_);
    sigaddset(&sigpipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &sigpipe_, &previous_);
  }
  ~SigpipeBlocked() {
    constexpr timespec kAtOnce{0, 0};
    if (!wasPending_) sigtimedwait(&sigpipe_, nullptr, &kAtOnce);
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
  }
  SigpipeBlocked(const SigpipeBlocked&) = delete;
  SigpipeBlocked& operator=(const SigpipeBlocked&) = delete;

 private:
  sigset_t sigpipe_, previous_;
  bool wasPending_;
};

}  // namespace

struct GatewayConnection::Transfer {
  Transfer(CURLM* connections, std::size_t longestAnswer)
      : multi(connections), longest(longestAnswer), easy(curl_easy_init()) {
    if (!easy) throw std::bad_alloc();
  }
  ~Transfer() {
    if (isProcessExiting()) return;
    finish();
    curl_easy_cleanup(easy);
  }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  void finish() {
    if (isRunning) curl_multi_remove_handle(multi, easy);
    isRunning = false;
    curl_slist_free_all(headers);
    headers = nullptr;
  }

  CURLM* const multi;
  // Returns why the transfer has ended; `whole` if all has arrived.
  std::string reason(const char* whole) const {
    if (result == CURLE_OK) return whole;
    if (isTooLong) return "its answer is too long";
    return shownFileName(error[0] ? error : curl_easy_strerror(result));
  }

  const std::size_t longest;  // of the body
  CURL* const easy;
  curl_slist* headers = nullptr;
  char error[CURL_ERROR_SIZE] = "";
  bool isRunning = false;
  CURLcode result = CURLE_OK;
  Post post;
  const Receiver* receive = nullptr;  // of a stream
  bool hasBytes = false;              // of a stream: since the last wait()
  std::string body;                   // of a request
  bool isTooLong = false;
  int sendings = 0;  // of the request that have begun
  SteadyTime lastBytes;
};

GatewayConnection::GatewayConnection(const TlsFiles& files, std::size_t longestAnswer)
    : files_(files),
      multi_((prepareNetwork(), curl_multi_init())),
      request_(std::make_unique<Transfer>(multi_, longestAnswer)),
      stream_(std::make_unique<Transfer>(multi_, longestAnswer)) {}

GatewayConnection::~GatewayConnection() {
  // At the end of the process the libraries are gone already.
  if (isProcessExiting()) return;
  const SigpipeBlocked blocked;
  request_->finish();
  stream_->finish();
  curl_multi_cleanup(multi_);
}

std::size_t GatewayConnection::onBytes(char* bytes, std::size_t size, std::size_t count,
                                       void* given) {
  Transfer& transfer = *static_cast<Transfer*>(given);
  const std::string_view text(bytes, size * count);
  transfer.lastBytes = std::chrono::steady_clock::now();
  try {
    if (transfer.receive) {
      transfer.hasBytes = true;
      return (*transfer.receive)(text) ? text.size() : 0;
    }
    transfer.isTooLong = transfer.body.size() + text.size() > transfer.longest;
    if (transfer.isTooLong) return 0;
    transfer.body += text;
    return text.size();
  } catch (const std::exception&) {  // no memory; nothing may be thrown through the library
    return 0;
  }
}

int GatewayConnection::onSending(void* transfer, char*, char*, int, int) {
  ++static_cast<Transfer*>(transfer)->sendings;
  return CURL_PREREQFUNC_OK;
}

void GatewayConnection::prepare(Transfer& transfer, const Post& post) {
  transfer.finish();
  transfer.post = post;
  transfer.body.clear();
  transfer.isTooLong = false;
  transfer.sendings = 0;
  transfer.error[0] = '\0';
  transfer.lastBytes = std::chrono::steady_clock::now();
  CURL* const easy = transfer.easy;
  curl_easy_reset(easy);
  curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
  headers = curl_slist_append(headers, "Expect:");
  if (!post.token.empty()) {
    headers = curl_slist_append(headers, ("Authorization: " + post.token).c_str());
  }
  transfer.headers = headers;
  curl_easy_setopt(easy, CURLOPT_URL, transfer.post.url.c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, transfer.post.body.data());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(transfer.post.body.size()));
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // Otherwise the end of a transfer waits for a thread that resolves a name, without a limit.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy, CURLOPT_PROXY, "");
  curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, kLongestConnecting.count());
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer.error);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &GatewayConnection::onBytes);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &GatewayConnection::onSending);
  curl_easy_setopt(easy, CURLOPT_PREREQDATA, &transfer);
  if (!files_.authority.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, files_.authority.c_str());
  }
  if (!files_.certificate.empty()) {
    curl_easy_setopt(easy, CURLOPT_SSLCERT, files_.certificate.c_str());
  }
  if (!files_.key.empty()) curl_easy_setopt(easy, CURLOPT_SSLKEY, files_.key.c_str());
  transfer.result = CURLE_OK;
  transfer.isRunning = curl_multi_add_handle(multi_, easy) == CURLM_OK;
  if (!transfer.isRunning) transfer.result = CURLE_FAILED_INIT;
}

// Moves all transfers on, and waits for bytes until the deadline. Returns false after a stop().
bool GatewayConnection::step(SteadyTime deadline) {
  if (isStopped()) return false;
  int running = 0;
  curl_multi_perform(multi_, &running);
  if (collectEnded()) return true;
  const auto left =
      std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
  const auto wait = std::clamp(left + milliseconds(1), milliseconds(0), kLongestStep);
  curl_multi_poll(multi_, nullptr, 0, static_cast<int>(wait.count()), nullptr);
  curl_multi_perform(multi_, &running);
  collectEnded();
  return !isStopped();
}

// Returns whether a transfer has ended.
bool GatewayConnection::collectEnded() {
  int left = 0;
  bool hasEnded = false;
  while (const CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    Transfer& transfer = message->easy_handle == request_->easy ? *request_ : *stream_;
    transfer.result = message->data.result;
    curl_multi_remove_handle(multi_, transfer.easy);
    transfer.isRunning = false;
    hasEnded = true;
    if (&transfer == stream_.get()) endStream(transfer.reason("the stream has ended"));
  }
  return hasEnded;
}

GatewayConnection::Outcome GatewayConnection::exchange(const Post& post, SteadyTime deadline,
                                                       milliseconds silence) {
  Outcome outcome;
  const std::function<void()> wakeUp = [this] { curl_multi_wakeup(multi_); };
  const NetworkUse use(wakeUp);
  if (isStopped()) {
    outcome.reason = "the program ends";
    return outcome;
  }
  const SigpipeBlocked blocked;
  Transfer& transfer = *request_;
  prepare(transfer, post);
  std::string late;
  while (transfer.isRunning) {
    const SteadyTime limit = std::min(deadline, transfer.lastBytes + silence);
    if (!step(limit)) late = "the program ends";
    if (transfer.isRunning && std::chrono::steady_clock::now() >= limit)
      late = "it does not answer";
    if (!late.empty()) break;
  }
  curl_easy_getinfo(transfer.easy, CURLINFO_RESPONSE_CODE, &outcome.status);
  const bool isWhole = late.empty() && transfer.result == CURLE_OK;
  outcome.sendings = transfer.sendings;
  outcome.kind = isWhole                 ? Outcome::kAnswer
                 : transfer.isTooLong    ? Outcome::kTooLong
                 : transfer.sendings > 0 ? Outcome::kNoAnswer
                                         : Outcome::kNotSent;
  outcome.reason = late.empty() ? transfer.reason("") : late;
  if (isWhole) outcome.body = std::move(transfer.body);
  transfer.finish();
  transfer.body = {};
  return outcome;
}

void GatewayConnection::openStream(const Post& post, const Receiver& receive) {
  const std::function<void()> wakeUp = [this] { curl_multi_wakeup(multi_); };
  const NetworkUse use(wakeUp);
  const SigpipeBlocked blocked;
  closeStream();
  receive_ = receive;
  stream_->receive = &receive_;
  streamReason_.clear();
  if (isStopped()) return endStream("the program ends");
  prepare(*stream_, post);
  isStreamOpen_ = stream_->isRunning;
}

void GatewayConnection::endStream(const std::string& reason) {
  isStreamOpen_ = false;
  streamReason_ = reason;
}

void GatewayConnection::closeStream() {
  if (isProcessExiting()) return;
  stream_->finish();
  isStreamOpen_ = false;
}

void GatewayConnection::wait(SteadyTime deadline) {
  const std::function<void()> wakeUp = [this] { curl_multi_wakeup(multi_); };
  const NetworkUse use(wakeUp);
  const SigpipeBlocked blocked;
  const bool wasOpen = isStreamOpen_;
  while (std::chrono::steady_clock::now() < deadline && !isWoken_.exchange(false)) {
    if (!step(deadline) || (wasOpen && !isStreamOpen_)) return;
    if (std::exchange(stream_->hasBytes, false)) return;
  }
}

void GatewayConnection::wake() {
  isWoken_ = true;
  curl_multi_wakeup(multi_);
}

void GatewayConnection::stop() {
  isStopped_ = true;
  curl_multi_wakeup(multi_);
}

bool GatewayConnection::isStopped() const { return isStopped_ || isProcessExiting(); }

}  // namespace zlutil::settings::host
