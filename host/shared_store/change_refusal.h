// The failures of a change that a cluster has not made. Pure; any thread.
#pragma once

#include <string>

#include "host/shared_store/cluster_client.h"
#include "host/shared_store/write_plan.h"

namespace zlutil::settings::host {

// Throws the failure of the service for that of the cluster: CantModifyValuesOnReadOnlyLevel if the
// user lacks the permission, otherwise StoreFailure. `name` is that of the store in messages.
[[noreturn]] void throwRefusal(const ClusterError& failure, const WritePlan& plan,
                               const std::string& name, const std::string& level);

}  // namespace zlutil::settings::host
