#include "tests/cluster/cluster.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace test {

using namespace zlutil::settings::host;

class TheCluster {
 public:
  Cluster cluster;
};

Cluster& Cluster::instance() {
  static TheCluster instance;
  return instance.cluster;
}

Cluster::Cluster() { run("start"); }
Cluster::~Cluster() { run("stop"); }

std::string Cluster::run(const std::string& arguments) {
  const std::string command =
      "CLUSTER_DIR=" + directory_.path() + " " CLUSTER_SCRIPT " " + arguments + " 2>&1";
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run " + command);
  std::string output;
  char buffer[4096];
  while (const std::size_t size = fread(buffer, 1, sizeof buffer, pipe))
    output.append(buffer, size);
  if (pclose(pipe) != 0) throw std::runtime_error(command + ": " + output);
  return output;
}

void Cluster::clear() { ctl("del --prefix " + std::string(kPrefix)); }

std::string Cluster::url(int member) {
  std::istringstream urls(directory_.read("urls"));
  std::string url;
  for (int line = 0; line < member; ++line) std::getline(urls, url);
  return url;
}

SharedStoreOptions Cluster::options(const std::string& user) {
  SharedStoreOptions options = optionsFor(url(1) + ',' + url(2) + ',' + url(3) + kPrefix);
  options.credentials = file(user + ".credentials");
  options.authority = file("ca.crt");
  return options;
}

}  // namespace test
