// A real cluster for tests, run by scripts/cluster.sh in a directory of its own.
#pragma once

#include <memory>
#include <string>

#include "tests/cluster/shared_tree.h"
#include "tests/support/temporary_directory.h"

namespace test {

// One cluster for the whole program, made at the first use and ended with the program.
class Cluster {
 public:
  static Cluster& instance();

  // Runs the script with the arguments and returns its output. Throws if it fails.
  std::string run(const std::string& arguments);
  // Runs etcdctl as root.
  std::string ctl(const std::string& arguments) { return run("ctl " + arguments); }
  // Removes all settings, and waits until all members answer.
  void clear();

  // The options for a store with settings below the prefix, as that user.
  zlutil::settings::host::SharedStoreOptions options(const std::string& user = "admin");
  std::string url(int member);
  std::string file(const std::string& name) const { return directory_.file(name); }

  static constexpr char kPrefix[] = "/team/settings";

 private:
  Cluster();
  ~Cluster();
  friend class TheCluster;

  const TemporaryDirectory directory_;
};

}  // namespace test
