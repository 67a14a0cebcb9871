// The changes of one transaction as documents, one for each key of etcd. One thread.
//
// Entries cannot be removed: the tree removes them from the user level only, because two stores
// cannot change as one.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "host/shared_store/etcd_messages.h"
#include "host/shared_store/setting_document.h"
#include "host/tree/store.h"

namespace zlutil::settings::host {

class WritePlan {
 public:
  // Returns the validator that etcd has for an entry.
  using ValidatorOf = std::function<ValidatorChoice(const std::string& path)>;

  // Throws StoreFailure, with `name` for the store, if an entry is to be removed.
  WritePlan(const Changes& changes, ValidatorOf validatorOf, std::string commit,
            const std::string& name);

  const std::map<std::string, SettingDocument>& documents() const { return documents_; }  // by path
  const std::string& commit() const { return commit_; }

 private:
  void add(const PutValue& change);
  void add(const EraseValue& change);
  void add(const DefineEntry& change);
  [[noreturn]] void add(const RemoveSubtree& change) const;
  void add(const FixKind& change);
  SettingDocument& documentAt(const std::string& path);

  const ValidatorOf validatorOf_;
  const std::string commit_, name_;
  std::map<std::string, SettingDocument> documents_;
};

// Returns the changes that bring the document's entry into a tree, with the nodes above it.
Changes changesOf(const std::string& path, const SettingDocument& document);

}  // namespace zlutil::settings::host
