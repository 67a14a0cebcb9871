#include "tests/cluster/fake_etcd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include "host/shared_store/base64.h"

namespace test {
namespace {

using nlohmann::json;
using zlutil::settings::host::base64From;
using zlutil::settings::host::bytesFromBase64;

std::string bytesAt(const json& object, const char* name) {
  return object.contains(name) ? bytesFromBase64(object[name].get<std::string>()).value() : "";
}

std::int64_t numberAt(const json& object, const char* name) {
  if (!object.contains(name)) return 0;
  const json& number = object[name];
  return number.is_string() ? std::stoll(number.get<std::string>()) : number.get<std::int64_t>();
}

bool isInRange(const std::string& key, const std::string& from, const std::string& end) {
  return end.empty() ? key == from : key >= from && key < end;
}

json keyValue(const std::string& key, const std::string& value, std::int64_t created,
              std::int64_t modified) {
  return {{"key", base64From(key)},
          {"value", base64From(value)},
          {"create_revision", std::to_string(created)},
          {"mod_revision", std::to_string(modified)}};
}

bool sendAll(int connection, std::string_view text) {
  while (!text.empty()) {
    const ssize_t size = ::send(connection, text.data(), text.size(), MSG_NOSIGNAL);
    if (size <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(size));
  }
  return true;
}

bool sendChunk(int connection, const json& message) {
  const std::string text = message.dump() + '\n';
  char size[20];
  std::snprintf(size, sizeof size, "%zx\r\n", text.size());
  return sendAll(connection, size + text + "\r\n");
}

}  // namespace

FakeEtcd::FakeEtcd() {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener_, 64) != 0 ||
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("the fake server cannot listen");
  }
  port_ = ntohs(address.sin_port);
  threads_.emplace_back([this] { accept(listener_); });
}

FakeEtcd::~FakeEtcd() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isEnding_ = true;
  }
  shutdown(listener_, SHUT_RDWR);
  threads_.front().join();
  threads_.pop_front();
  close();
  for (std::thread& thread : threads_) thread.join();
  ::close(listener_);
}

void FakeEtcd::accept(int listener) {
  while (true) {
    const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!isOpen_ || isEnding_) {
      ::close(connection);
      continue;
    }
    connections_.push_back(connection);
    threads_.emplace_back([this, connection] { serve(connection); });
  }
}

void FakeEtcd::serve(int connection) {
  std::string buffered;
  while (serveOne(connection, buffered)) {
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  connections_.erase(std::find(connections_.begin(), connections_.end(), connection));
  ::close(connection);
}

bool FakeEtcd::serveOne(int connection, std::string& buffered) {
  char bytes[16384];
  std::size_t headEnd, size = 0;
  while (true) {
    headEnd = buffered.find("\r\n\r\n");
    if (headEnd != std::string::npos) {
      const std::size_t at = buffered.find("Content-Length: ");
      size = at < headEnd ? std::stoul(buffered.substr(at + 16)) : 0;
      if (buffered.size() >= headEnd + 4 + size) break;
    }
    const ssize_t received = recv(connection, bytes, sizeof bytes, 0);
    if (received <= 0) return false;
    buffered.append(bytes, static_cast<std::size_t>(received));
  }
  const std::string head = buffered.substr(0, headEnd + 2);
  const json request = json::parse(buffered.substr(headEnd + 4, size));
  buffered.erase(0, headEnd + 4 + size);
  const std::string path = head.substr(5, head.find(' ', 5) - 5);
  Answer made;
  std::function<void()> beforeTxn;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++requests_[path];
    const std::string token = "Authorization: token" + std::to_string(tokens_) + "\r\n";
    if (path == "/v3/auth/authenticate") {
      made.body = json{{"header", header()}, {"token", "token" + std::to_string(++tokens_)}}.dump();
    } else if (!error_.empty() ||
               (demandsTokens_ && (tokens_ == 0 || head.find(token) == std::string::npos))) {
      made.status = 400;
      made.body = json{{"error", error_.empty() ? "etcdserver: invalid auth token" : error_},
                       {"code", error_.empty() ? 16 : errorCode_}}
                      .dump();
    }
    beforeTxn = beforeTxn_;
  }
  if (made.body.empty()) {
    if (path == "/v3/watch") return watch(connection, request["create_request"]), false;
    if (path == "/v3/kv/txn" && beforeTxn) beforeTxn();
    const std::lock_guard<std::mutex> lock(mutex_);
    made.body = run(path, request).dump();
  }
  return answer(connection, path, made);
}

bool FakeEtcd::answer(int connection, const std::string& path, Answer& made) {
  Knob knob;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    knob = knob_;
  }
  if (knob) knob(path, made);
  const std::string head = "HTTP/1.1 " + std::to_string(made.status) + " Status\r\n" + made.header +
                           "Content-Length: " + std::to_string(made.body.size()) + "\r\n\r\n";
  const std::string all = head + made.body;
  return sendAll(connection, std::string_view(all).substr(0, made.sent)) && made.sent >= all.size();
}

json FakeEtcd::header() const {
  return {{"cluster_id", "7"}, {"revision", std::to_string(revision_)}};
}

std::map<std::string, FakeEtcd::Item> FakeEtcd::itemsAt(std::int64_t revision) const {
  std::map<std::string, Item> items;
  for (const Event& event : events_) {
    if (event.modified > revision) break;
    items.erase(event.key);
    if (!event.isDeletion) items[event.key] = {event.value, event.created, event.modified};
  }
  return items;
}

json FakeEtcd::range(const json& request) const {
  json found = json::array();
  const std::string from = bytesAt(request, "key"), end = bytesAt(request, "range_end");
  const std::int64_t past = numberAt(request, "revision"), limit = numberAt(request, "limit");
  int count = 0;
  bool hasMore = false;
  for (const auto& [key, item] : past == 0 ? items_ : itemsAt(past)) {
    if (!isInRange(key, from, end)) continue;
    ++count;
    if (item.modified < numberAt(request, "min_mod_revision")) continue;
    hasMore = limit != 0 && found.size() == static_cast<std::size_t>(limit);
    if (hasMore) continue;
    found.push_back(keyValue(key, item.value, item.created, item.modified));
  }
  return {{"kvs", found}, {"more", hasMore}, {"count", std::to_string(count)}};
}

json FakeEtcd::run(const std::string& path, const json& request) {
  if (path == "/v3/kv/txn") return transact(request);
  json answer = range(request);
  answer["header"] = header();
  return answer;
}

json FakeEtcd::transact(const json& request) {
  json answer = {{"responses", json::array()}};
  bool holds = true;
  for (const json& condition : request["compare"]) {
    const std::string from = bytesAt(condition, "key"), end = bytesAt(condition, "range_end");
    for (const auto& [key, item] : items_) {
      if (!isInRange(key, from, end)) continue;
      holds = holds && item.modified < numberAt(condition, "mod_revision");
    }
  }
  if (!holds) {
    const json& later = request["failure"][0]["request_range"];
    answer["responses"].push_back({{"response_range", range(later)}});
  } else {
    const std::int64_t next = revision_ + 1;
    for (const json& operation : request["success"]) {
      if (operation.contains("request_put")) {
        const json& put = operation["request_put"];
        const std::string value = bytesAt(put, "value");
        change(bytesAt(put, "key"), &value, next);
        continue;
      }
      const json& range = operation["request_delete_range"];
      const std::string from = bytesAt(range, "key"), end = bytesAt(range, "range_end");
      const std::map<std::string, Item> all = items_;
      for (const auto& item : all) {
        if (isInRange(item.first, from, end)) change(item.first, nullptr, next);
      }
    }
    answer["succeeded"] = true;
  }
  answer["header"] = header();
  return answer;
}

void FakeEtcd::change(const std::string& key, const std::string* value, std::int64_t revision) {
  revision_ = revision;
  if (value) {
    const auto [item, isNew] = items_.try_emplace(key, Item{"", revision, revision});
    item->second.value = *value;
    item->second.modified = revision;
    events_.push_back({key, *value, item->second.created, revision, false});
  } else {
    items_.erase(key);
    events_.push_back({key, "", 0, revision, true});
  }
  changed_.notify_all();
}

void FakeEtcd::watch(int connection, const json& request) {
  const std::string from = bytesAt(request, "key"), end = bytesAt(request, "range_end");
  std::int64_t next = numberAt(request, "start_revision");
  std::unique_lock<std::mutex> lock(mutex_);
  int repeats = repeats_;
  sendAll(connection, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
  if (!sendChunk(connection, {{"result", {{"header", header()}, {"created", true}}}})) return;
  while (isOpen_) {
    if (next <= compacted_) {
      sendChunk(connection, {{"result",
                              {{"header", header()},
                               {"canceled", true},
                               {"compact_revision", std::to_string(compacted_ + 1)}}}});
      return;
    }
    if (repeats != repeats_) next = 1;
    repeats = repeats_;
    if (isHolding_) {
      changed_.wait(lock, [&] { return !isOpen_ || !isHolding_; });
      continue;
    }
    json events = json::array();
    for (const Event& event : events_) {
      if (event.modified < next || !isInRange(event.key, from, end)) continue;
      json described = {{"kv", keyValue(event.key, event.value, event.created, event.modified)}};
      if (event.isDeletion) described["type"] = "DELETE";
      events.push_back(described);
    }
    next = revision_ + 1;
    if (!events.empty() &&
        !sendChunk(connection, {{"result", {{"header", header()}, {"events", events}}}})) {
      return;
    }
    changed_.wait(lock, [&] {
      return !isOpen_ || revision_ >= next || repeats != repeats_ || compacted_ >= next;
    });
  }
}

void FakeEtcd::setKnob(const Knob& knob) {
  const std::lock_guard<std::mutex> lock(mutex_);
  knob_ = knob;
}

void FakeEtcd::setBeforeTxn(const std::function<void()>& call) {
  const std::lock_guard<std::mutex> lock(mutex_);
  beforeTxn_ = call;
}

void FakeEtcd::setError(int code, const std::string& message) {
  const std::lock_guard<std::mutex> lock(mutex_);
  errorCode_ = code;
  error_ = message;
}

void FakeEtcd::demandTokens() {
  const std::lock_guard<std::mutex> lock(mutex_);
  demandsTokens_ = true;
  ++tokens_;
}

void FakeEtcd::put(const std::string& key, const std::string& value) {
  const std::lock_guard<std::mutex> lock(mutex_);
  change(key, &value, revision_ + 1);
}

void FakeEtcd::putAll(const std::map<std::string, std::string>& values) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const std::int64_t next = revision_ + 1;
  for (const auto& [key, value] : values) change(key, &value, next);
}

void FakeEtcd::erase(const std::string& key) {
  const std::lock_guard<std::mutex> lock(mutex_);
  change(key, nullptr, revision_ + 1);
}

std::string FakeEtcd::valueOf(const std::string& key) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = items_.find(key);
  return found == items_.end() ? "" : found->second.value;
}

std::int64_t FakeEtcd::revision() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return revision_;
}

void FakeEtcd::compact() {
  const std::lock_guard<std::mutex> lock(mutex_);
  compacted_ = revision_;
  changed_.notify_all();
}

void FakeEtcd::close() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isOpen_ = false;
  for (const int connection : connections_) shutdown(connection, SHUT_RDWR);
  changed_.notify_all();
}

void FakeEtcd::open() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isOpen_ = true;
}

void FakeEtcd::repeatEvents() {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++repeats_;
  changed_.notify_all();
}

void FakeEtcd::holdEvents(bool isHolding) {
  const std::lock_guard<std::mutex> lock(mutex_);
  isHolding_ = isHolding;
  changed_.notify_all();
}

int FakeEtcd::requests(const std::string& path) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return requests_[path];
}

int FakeEtcd::tokensGiven() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return tokens_;
}

}  // namespace test
