// A small etcd in this process, with knobs: HTTP on loopback, keys with revisions, transactions,
// watches and tokens, as far as a shared store uses them. It can fail in ways that a real one does
// not on demand.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

namespace test {

class FakeEtcd {
 public:
  // How one answer is given: `body` after `status`, of which `sent` bytes are sent before the
  // connection is closed. The request has been done before.
  struct Answer {
    int status = 200;
    std::string body;
    std::size_t sent = std::string::npos;
    std::string header = {};  // a further one, with its end of line
  };
  // Called for each request, with its path and its answer, which it may change. No lock is held.
  using Knob = std::function<void(const std::string& path, Answer& answer)>;

  FakeEtcd();
  ~FakeEtcd();
  FakeEtcd(const FakeEtcd&) = delete;
  FakeEtcd& operator=(const FakeEtcd&) = delete;

  // "http://127.0.0.1:PORT", and the same as if it were another member.
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }
  std::string otherUrl() const { return "http://localhost:" + std::to_string(port_); }

  void setKnob(const Knob& knob);
  // Called before each transaction is done.
  void setBeforeTxn(const std::function<void()>& call);
  // Refuses all requests with this error from now on; "" for none.
  void setError(int code, const std::string& message);
  // Demands tokens, and accepts only those that it gives from now on.
  void demandTokens();

  void put(const std::string& key, const std::string& value);
  // Puts several keys in one transaction.
  void putAll(const std::map<std::string, std::string>& values);
  void erase(const std::string& key);
  // Returns "" if there is none.
  std::string valueOf(const std::string& key);
  std::int64_t revision();
  // Ends all watches: they cannot be resumed from before the present revision.
  void compact();
  // Closes all connections; takes no new ones until open().
  void close();
  void open();
  // Sends all events of the past again to all watches.
  void repeatEvents();
  // Sends no events from now on, until false is given.
  void holdEvents(bool isHolding);
  int tokensGiven();
  // Returns how many requests with that path have come.
  int requests(const std::string& path);

 private:
  struct Item {
    std::string value;
    std::int64_t created, modified;
  };
  struct Event {
    std::string key, value;
    std::int64_t created, modified;
    bool isDeletion;
  };

  void accept(int listener);
  void serve(int connection);
  bool serveOne(int connection, std::string& buffered);
  bool answer(int connection, const std::string& path, Answer& answer);
  void watch(int connection, const nlohmann::json& request);
  nlohmann::json header() const;
  std::map<std::string, Item> itemsAt(std::int64_t revision) const;
  nlohmann::json range(const nlohmann::json& request) const;
  nlohmann::json transact(const nlohmann::json& request);
  void change(const std::string& key, const std::string* value, std::int64_t revision);
  nlohmann::json run(const std::string& path, const nlohmann::json& request);

  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by the mutex.
  std::map<std::string, Item> items_;
  std::vector<Event> events_;
  std::int64_t revision_ = 1, compacted_ = 0;
  int errorCode_ = 0, tokens_ = 0, repeats_ = 0;
  bool demandsTokens_ = false, isOpen_ = true, isHolding_ = false;
  std::map<std::string, int> requests_;
  std::string error_;
  Knob knob_;
  std::function<void()> beforeTxn_;
  std::vector<int> connections_;
  std::list<std::thread> threads_;

  int listener_ = -1;
  int port_ = 0;
  bool isEnding_ = false;
};

}  // namespace test
