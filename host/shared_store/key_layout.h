// Where the entries of a tree are in etcd: the entry "editor.fontSize" has the key
// "<prefix>/editor/fontSize". A node needs no key of its own: it is there as long as there is a key
// below it.
//
// KeyReader turns keys and documents into changes of a tree. One thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/shared_store/etcd_messages.h"
#include "host/tree/store.h"

namespace zlutil::settings::host {

// Returns the key of the entry. `keyPrefix` ends with "/".
std::string keyOf(const std::string& keyPrefix, const std::string& path);

// Returns the path of a key that begins with `keyPrefix`; nothing if no entry can have it.
std::optional<std::string> pathOf(const std::string& keyPrefix, std::string_view key);

class KeyReader {
 public:
  // Receives each key whose content is ignored, and why. Narrow text.
  using Report = std::function<void(const std::string& key, const std::string& reason)>;

  KeyReader(std::string keyPrefix, Report report)
      : keyPrefix_(std::move(keyPrefix)), report_(std::move(report)) {}

  // What the content of one key means for the tree.
  struct Reading {
    std::string path;  // "" if the key is ignored
    Changes changes;
    ValidatorChoice validator;
    std::string commit;
  };

  // Forgets all keys.
  void clear();
  // Reads a key that is there now; `isNew` if it was not there, or not known, before. If it is
  // ignored, its earlier content stays in the tree.
  Reading read(const KeyValue& item, bool isNew);
  // Reads that the key is gone.
  Reading readDeletion(const KeyValue& item);

 private:
  struct Node {
    int children = 0;  // keys and nodes directly below it
    bool hasKey = false;
  };

  // Counts an entry at the path. Adds the definitions of nodes above it that are new.
  void enter(const std::string& path, Changes& changes);
  // Counts that an entry has gone, and adds the removal of it and of the nodes above that it leaves
  // empty.
  void leave(const std::string& path, Changes& changes);

  const std::string keyPrefix_;
  const Report report_;
  std::unordered_map<std::string, Node> nodes_;  // those that have keys below them or of their own
  std::unordered_set<std::string> ignored_;      // the keys
};

}  // namespace zlutil::settings::host
