// The contract suite of stores, for one on a real cluster.
#include "tests/cluster/cluster.h"
#include "tests/support/store_contract.h"

namespace test {
namespace {

INSTANTIATE_TEST_SUITE_P(Cluster, WritableStore,
                         testing::Values(StoreKind{
                             "Shared", [](const auto&, const TemporaryDirectory&) {
                               return std::make_shared<zlutil::settings::host::SharedStore>(
                                   Cluster::instance().options());
                             }}));

}  // namespace
}  // namespace test
