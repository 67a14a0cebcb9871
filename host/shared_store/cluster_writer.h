// Writes the changes of one transaction to a cluster, on the condition that no key that it writes
// is later than the tree knows, and finds out whether they were made: etcd may have got a request
// twice, and others may have overwritten it since. One thread at a time.
#pragma once

#include <vector>

#include "host/shared_store/cluster_client.h"
#include "host/shared_store/setting_document.h"
#include "host/shared_store/tree_progress.h"
#include "host/shared_store/write_plan.h"

namespace zlutil::settings::host {

class ClusterWriter {
 public:
  explicit ClusterWriter(const ClusterOptions& options);

  struct Result {
    std::int64_t committed = 0;   // the revision of the commit; 0 if others have changed its keys
    std::vector<KeyValue> later;  // then: all keys that the tree does not know, of one revision
  };
  // Throws ClusterError, of the kind kUnknown if the changes may have been made.
  Result write(const WritePlan& plan, const TreeProgress& progress, SteadyTime deadline);

 private:
  std::string ask(const char* path, const std::string& body, SteadyTime deadline);
  void addRemoval(TxnRequest& request, const std::string& path, const TreeProgress& progress) const;
  std::int64_t findCommit(const WritePlan& plan, const TreeProgress& progress,
                          const std::vector<KeyValue>& later, SteadyTime deadline);
  std::int64_t findInHistory(const KeyValue& item, std::int64_t known, const std::string& commit,
                             SteadyTime deadline);

  const std::string prefix_, end_;
  ClusterClient client_;
  DocumentOrigin origin_;
};

}  // namespace zlutil::settings::host
