// Real clusters for tests, run by scripts/cluster.sh in directories of their own.
#pragma once

#include <memory>
#include <string>

#include "tests/cluster/shared_tree.h"
#include "tests/support/temporary_directory.h"

namespace test {

class Cluster {
 public:
  // Makes a cluster; `options` are further ones of etcd.
  explicit Cluster(int members, const std::string& options = "");
  ~Cluster();
  Cluster(const Cluster&) = delete;
  Cluster& operator=(const Cluster&) = delete;

  // One of three members for the whole program, made at the first use.
  static Cluster& instance();

  // Runs the script with the arguments, for that long at most, and returns its output. Throws if it
  // fails.
  std::string run(const std::string& arguments, int seconds = 120) const;
  // Runs etcdctl as root.
  std::string ctl(const std::string& arguments) const;
  // Puts a document at a path such as "editor/fontSize".
  void put(const std::string& path, const std::string& document) const;
  void putInt(const std::string& path, int value) const;
  // Removes all settings.
  void clear() const { ctl("del --prefix " + std::string(kPrefix)); }

  // The options for a store as that user; with one of the members if `member` is not 0.
  zlutil::settings::host::SharedStoreOptions options(const std::string& user = "admin",
                                                     int member = 0) const;
  std::string url(int member) const;
  std::string file(const std::string& name) const { return directory_.file(name); }

  static constexpr char kPrefix[] = "/team/settings";

 private:
  const int members_;
  const std::string options_;
  const TemporaryDirectory directory_;
};

}  // namespace test
