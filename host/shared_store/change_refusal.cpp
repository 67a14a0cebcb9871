#include "host/shared_store/change_refusal.h"

#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

std::string adviceFor(const std::string& reason, std::size_t count) {
  const auto isAbout = [&](const char* part) { return reason.find(part) != std::string::npos; };
  const std::string limit =
      ": the change has " + std::to_string(count) + " settings. The limit is the server's option ";
  if (isAbout("too many operations")) return limit + "--max-txn-ops. ";
  if (isAbout("too large") || isAbout("larger than max")) return limit + "--max-request-bytes. ";
  return ". ";
}

}  // namespace

void throwRefusal(const ClusterError& failure, const WritePlan& plan, const std::string& name,
                  const std::string& level) {
  const std::string reason = failure.what();
  if (failure.kind() == ClusterError::kUnknown) {
    throw Failure<StoreFailure>(
        name, reason +
                  ". It is not known whether the change was made; if it was, it will arrive as a "
                  "change by another process.");
  }
  if (failure.code() == EtcdError::kPermissionDenied) {
    throw Failure<CantModifyValuesOnReadOnlyLevel>(plan.operations().begin()->first, level, reason);
  }
  throw Failure<StoreFailure>(
      name, reason + adviceFor(reason, plan.operations().size()) + "The change was not made.");
}

}  // namespace zlutil::settings::host
