// The contract suite of stores, for one on a real cluster.
#include "tests/cluster/cluster.h"
#include "tests/support/store_contract.h"

namespace test {
namespace {

// Opens a store below a prefix of the test's own.
std::shared_ptr<zlutil::settings::host::Store> openBelow(const TemporaryDirectory& directory) {
  auto options = Cluster::instance().options();
  options.address += directory.path().substr(directory.path().rfind('/'));
  return std::make_shared<zlutil::settings::host::SharedStore>(options);
}

INSTANTIATE_TEST_SUITE_P(Cluster, WritableStore,
                         testing::Values(StoreKind{
                             "Shared", [](const auto&, const TemporaryDirectory& directory) {
                               return openBelow(directory);
                             }}));

}  // namespace
}  // namespace test
