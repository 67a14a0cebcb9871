#include "host/shared_store/cluster_options.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string_view>

#include "host/os/file_descriptor.h"
#include "host/os/file_name.h"

namespace zlutil::settings::host {
namespace {

constexpr std::size_t kLongestAddress = 4096;
constexpr std::size_t kLongestPrefix = 200;  // it becomes a part of a file name
constexpr std::size_t kMostMembers = 32;
constexpr std::size_t kLongestCredentials = 4096;
constexpr char kPort[] = ":2379";

[[noreturn]] void refuse(const std::string& reason) { throw std::invalid_argument(reason); }

bool isHostCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_';
}

bool isPort(std::string_view text) {
  return !text.empty() && text.size() <= 5 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Returns the member with its port. `text` is what follows "://".
std::string completeMember(std::string_view scheme, std::string_view text) {
  const bool isBracketed = !text.empty() && text.front() == '[';
  const std::size_t hostEnd =
      isBracketed ? text.find(']') + 1 : std::min(text.find(':'), text.size());
  const std::string_view host = text.substr(0, hostEnd), port = text.substr(hostEnd);
  const bool isHost =
      isBracketed ? hostEnd > 2 && std::all_of(host.begin() + 1, host.end() - 1,
                                               [](char c) { return isxdigit(c) || c == ':'; })
                  : !host.empty() && std::all_of(host.begin(), host.end(), isHostCharacter);
  if (!isHost || (!port.empty() && (port.front() != ':' || !isPort(port.substr(1))))) {
    refuse("\"" + std::string(text) + "\" is not a host with a port");
  }
  return std::string(scheme) + "://" + std::string(text) + (port.empty() ? kPort : "");
}

std::string_view schemeOf(std::string_view member) {
  for (const std::string_view scheme : {"https", "http"}) {
    if (member.substr(0, scheme.size()) == scheme && member.substr(scheme.size(), 3) == "://") {
      return scheme;
    }
  }
  refuse("\"" + std::string(member) + "\" does not begin with https:// or http://");
}

// `member` begins with "http://" and has a port.
bool isLoopback(const std::string& member) {
  const std::string host = member.substr(7, member.rfind(':') - 7);
  return host == "localhost" || host == "[::1]" ||
         (host.compare(0, 4, "127.") == 0 &&
          host.find_first_not_of("0123456789.") == std::string::npos);
}

void checkPrefix(const std::string& prefix) {
  const bool isPlain = std::all_of(prefix.begin(), prefix.end(), [](char c) {
    return isHostCharacter(c) || c == '/' || c == '~' || c == '+';
  });
  if (prefix.size() > kLongestPrefix) refuse("its prefix is too long");
  if (prefix.size() < 2 || !isPlain || prefix.find("//") != std::string::npos) {
    refuse("a prefix such as /team/settings must follow the last member");
  }
}

}  // namespace

ClusterAddress parseClusterAddress(const std::string& text) {
  if (text.size() > kLongestAddress) refuse("it is too long");
  // The address is shown in messages, the password must not be.
  if (text.find('@') != std::string::npos) {
    refuse("it must have no user and password; write them to a file");
  }
  ClusterAddress address;
  std::string_view rest = text;
  while (true) {
    const std::string_view scheme = schemeOf(rest.substr(0, rest.find(',')));
    rest.remove_prefix(scheme.size() + 3);
    const std::size_t end = std::min(rest.find_first_of(",/"), rest.size());
    address.members.push_back(completeMember(scheme, rest.substr(0, end)));
    if (address.members.size() > kMostMembers) refuse("it has too many members");
    rest.remove_prefix(end);
    if (rest.empty() || rest.front() == '/') break;
    rest.remove_prefix(1);
  }
  while (!rest.empty() && rest.back() == '/') rest.remove_suffix(1);
  address.prefix = rest;
  checkPrefix(address.prefix);
  return address;
}

void requireSecrecy(const ClusterAddress& address) {
  for (const std::string& member : address.members) {
    if (schemeOf(member) == "https" || isLoopback(member)) continue;
    refuse("the password would be sent to " + member + " unencrypted; use https://");
  }
}

Credentials readCredentials(const std::string& file) {
  // Without waiting, because the name may be that of a pipe.
  const FileDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status;
  if (!descriptor || fstat(descriptor.get(), &status) != 0) refuse(systemText(errno));
  if (!S_ISREG(status.st_mode)) refuse("it is not a file");
  if (status.st_uid != geteuid()) refuse("it belongs to another user");
  if ((status.st_mode & 077) != 0) {
    refuse("others than its owner may use it. Run: chmod 600 on it");
  }
  std::string content(kLongestCredentials, '\0');
  const ssize_t size = read(descriptor.get(), content.data(), content.size());
  if (size < 0) refuse(systemText(errno));
  content.resize(static_cast<std::size_t>(size));
  const std::size_t line = content.find('\n');
  if (line == 0 || line == std::string::npos || content.size() == kLongestCredentials) {
    refuse("it must have two lines, the user's name and the password");
  }
  const std::string password = content.substr(line + 1);
  return {content.substr(0, line), password.substr(0, password.find('\n'))};
}

}  // namespace zlutil::settings::host
