#include "tests/cluster/cluster.h"

#include <cstdio>
#include <sstream>

namespace test {

using namespace zlutil::settings::host;

Cluster::Cluster(int members, const std::string& options) : members_(members), options_(options) {
  run("start");
}
Cluster::~Cluster() { run("stop"); }

Cluster& Cluster::instance() {
  static Cluster instance(3);
  return instance;
}

std::string Cluster::run(const std::string& arguments, int seconds) const {
  const std::string command =
      "CLUSTER_DIR=" + directory_.path() + " CLUSTER_MEMBERS=" + std::to_string(members_) +
      " CLUSTER_OPTIONS='" + options_ + "' timeout " + std::to_string(seconds) +
      " " CLUSTER_SCRIPT " " + arguments + " 2>&1";
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run " + command);
  std::string output;
  char buffer[4096];
  while (const std::size_t size = fread(buffer, 1, sizeof buffer, pipe)) {
    output.append(buffer, size);
  }
  if (pclose(pipe) != 0) throw std::runtime_error(command + ": " + output);
  return output;
}

// While a leader is elected, etcdctl fails.
std::string Cluster::ctl(const std::string& arguments) const {
  for (int attempt = 0;; ++attempt) {
    try {
      return run("ctl " + arguments);
    } catch (const std::runtime_error&) {
      if (attempt == 10) throw;
    }
  }
}

void Cluster::put(const std::string& path, const std::string& document) const {
  ctl("put " + std::string(kPrefix) + '/' + path + " '" + document + "'");
}

void Cluster::putInt(const std::string& path, int value) const {
  put(path, "{\"type\":\"int\",\"value\":" + std::to_string(value) + "}");
}

std::string Cluster::url(int member) const {
  std::istringstream urls(directory_.read("urls"));
  std::string url;
  for (int line = 0; line < member; ++line) std::getline(urls, url);
  return url;
}

SharedStoreOptions Cluster::options(const std::string& user, int member) const {
  std::string members = url(member == 0 ? 1 : member);
  for (int other = 2; member == 0 && other <= members_; ++other) members += ',' + url(other);
  SharedStoreOptions options = optionsFor(members + kPrefix);
  options.credentials = file(user + ".credentials");
  options.authority = file("ca.crt");
  return options;
}

}  // namespace test
