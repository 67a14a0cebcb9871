// The changes of one transaction as operations, one for each key of etcd. One thread.
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

  // Throws StoreFailure, with `name` for the store, if an entry is removed and defined again: etcd
  // takes no such transaction.
  WritePlan(const Changes& changes, ValidatorOf validatorOf, std::string commit,
            const std::string& name);

  struct Operation {
    bool isRemoval = false;  // of the entry and all below it
    SettingDocument document;
  };
  const std::map<std::string, Operation>& operations() const { return operations_; }  // by path
  const std::string& commit() const { return commit_; }

 private:
  void add(const PutValue& change);
  void add(const EraseValue& change);
  void add(const DefineEntry& change);
  void add(const RemoveSubtree& change);
  void add(const FixKind& change);
  SettingDocument& documentAt(const std::string& path);

  const ValidatorOf validatorOf_;
  const std::string commit_, name_;
  std::map<std::string, Operation> operations_;
};

// Returns the changes that bring the document's entry into a tree, with the nodes above it.
Changes changesOf(const std::string& path, const SettingDocument& document);

}  // namespace zlutil::settings::host
