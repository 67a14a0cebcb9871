// The contract suite run on the embedded settings service: on a standalone tree and on the tree of
// a context whose directories are empty.
#include "host/roots/context_trees.h"
#include "tests/contract/service_contract.h"

namespace test {
namespace {

namespace host = zlutil::settings::host;

INSTANTIATE_TEST_SUITE_P(
    Embedded, ServiceContract,
    testing::Values(Implementation{"Standalone",
                                   [] {
                                     return zlutil::settings::ZSettings::createSettingsNode(
                                         "__ROOT__", false, true, ValidatorChoice());
                                   }},
                    Implementation{"Context",
                                   [] {
                                     return SettingsPtr(host::makeContextTree(
                                         zlutil::contextmgr::BlessedZcrID, host::Directories()));
                                   }}),
    [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace test
