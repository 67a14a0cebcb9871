// Requests to a cluster: tries its members in turn, and obtains and renews the token of the user. A
// request may reach etcd twice, so it must do no harm then.
//
// One thread at a time, but for wake() and stop() of the connection.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "host/shared_store/etcd_messages.h"
#include "host/shared_store/gateway_connection.h"

namespace zlutil::settings::host {

// Why a request has failed. The text is narrow.
class ClusterError : public std::runtime_error {
 public:
  enum Kind {
    kAway,     // no member could be reached; nothing was sent
    kUnknown,  // sent, and without an answer that tells whether it was done
    kTooLong,  // the answer is longer than is taken
    kRefused   // etcd has answered with an error; nothing was done
  };
  ClusterError(Kind kind, const std::string& reason, int code = 0)
      : std::runtime_error(reason), kind_(kind), code_(code) {}
  Kind kind() const { return kind_; }
  int code() const { return code_; }  // EtcdError::Code

 private:
  const Kind kind_;
  const int code_;
};

struct ClusterOptions {
  ClusterAddress address;
  Credentials credentials;
  TlsFiles files;
  std::size_t longestAnswer = 64u << 20;  // to a request, and of one line of a watch
  // A watch that has brought no events for that long is checked for missing ones.
  std::chrono::milliseconds quietTime{60000};
};

class ClusterClient {
 public:
  // How long a request may take.
  struct Patience {
    std::chrono::milliseconds all;      // with all members
    std::chrono::milliseconds silence;  // of one member
  };

  explicit ClusterClient(const ClusterOptions& options)
      : options_(options), connection_(options.files, options.longestAnswer) {}

  // Returns the answer's body, which is no error. Throws ClusterError. Gives up after one round if
  // no member can be reached.
  std::string ask(const std::string& path, const std::string& body, const Patience& patience);
  // Returns whether etcd may have got the last request more than once, and so have done it before
  // the answer to it.
  bool wasRepeated() const { return wasRepeated_; }

  // Opens the stream of a watch on the present member. Throws ClusterError if there is no token.
  void openWatch(const std::string& body, const GatewayConnection::Receiver& receive,
                 const Patience& patience);

  // The present member has failed, in a way that the caller has noticed.
  void nextMember();
  // The token may have expired: the next request obtains another.
  void forgetToken() { token_.clear(); }

  const std::string& member() const { return options_.address.members[member_]; }
  std::size_t memberCount() const { return options_.address.members.size(); }
  const ClusterAddress& address() const { return options_.address; }
  const Credentials& credentials() const { return options_.credentials; }
  GatewayConnection& connection() { return connection_; }

 private:
  struct Attempt;

  Attempt attempt(const std::string& path, const std::string& body, SteadyTime deadline,
                  std::chrono::milliseconds silence);
  std::optional<Attempt> obtainToken(SteadyTime deadline, std::chrono::milliseconds silence);

  const ClusterOptions options_;
  std::size_t member_ = 0;
  std::string token_;
  bool isOpen_ = false;  // etcd has said that it knows no users
  bool wasRepeated_ = false;
  GatewayConnection connection_;
};

}  // namespace zlutil::settings::host
