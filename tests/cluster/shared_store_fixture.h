// Trees with a shared store behind their workgroup level, on a server that fails as told.
#pragma once

#include <filesystem>

#include "tests/cluster/fake_etcd.h"
#include "tests/cluster/shared_tree.h"
#include "tests/support/temporary_directory.h"

namespace test {

constexpr char kKey[] = "/team/settings/editor/fontSize";
constexpr char kTxn[] = "/v3/kv/txn", kRange[] = "/v3/kv/range", kWatch[] = "/v3/watch";

inline std::string intDocument(int value) {
  return "{\"type\":\"int\",\"value\":" + std::to_string(value) + "}";
}

class SharedStoreTest : public testing::Test {
 protected:
  SharedStoreTest() { etcd.put(kKey, intDocument(14)); }

  zlutil::settings::host::SharedStoreOptions options() {
    zlutil::settings::host::SharedStoreOptions options =
        optionsFor(etcd.url() + ',' + etcd.otherUrl() + "/team/settings");
    options.directory = directory.path();
    return options;
  }
  // For a start while the server gives no answer that is of use: it lasts as long as it may.
  zlutil::settings::host::SharedStoreOptions optionsForStartAway() {
    zlutil::settings::host::SharedStoreOptions made = options();
    made.longestStart = std::chrono::seconds(1);
    return made;
  }
  zlutil::settings::host::SharedStoreOptions optionsWithPassword() {
    zlutil::settings::host::SharedStoreOptions made = options();
    made.credentials = directory.write("password", "anna\nsecret\n");
    chmod(made.credentials.c_str(), 0600);
    return made;
  }
  // Returns what options() give a watch.
  zlutil::settings::host::ClusterOptions cluster() {
    return {zlutil::settings::host::parseClusterAddress(options().address), {}, {}};
  }
  static SettingsPtr editorOf(const zlutil::settings::host::NodePtr& root) {
    return root->getChild("editor");
  }
  static int sizeOf(const zlutil::settings::host::NodePtr& root) {
    const SettingsPtr editor = editorOf(root);
    return editor && editor->getChild("fontSize") ? intAt(editor, "fontSize", "workgroup") : -1;
  }
  // Returns the name of the file of the only copy.
  std::string copyName() const {
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
      if (entry.path().extension() == ".copy") return entry.path().filename();
    }
    return "";
  }
  // Opens a tree, and returns what is reported meanwhile.
  std::string reportOfOpening(zlutil::settings::host::NodePtr& root,
                              const zlutil::settings::host::SharedStoreOptions& chosen) {
    testing::internal::CaptureStderr();
    root = openShared(chosen);
    return testing::internal::GetCapturedStderr();
  }

  const TemporaryDirectory directory;
  FakeEtcd etcd;
};

}  // namespace test
