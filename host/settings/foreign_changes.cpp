#include "host/settings/foreign_changes.h"

#include <boost/make_shared.hpp>

#include "host/settings/publication.h"
#include "host/settings/stored_value.h"
#include "host/settings/subtree.h"
#include "service/identifier.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

// Applies one batch. Its methods change what the tree guards; the objects that they replace are
// kept until the lock is gone.
class Application {
 public:
  Application(Node& root, int level) : root_(root), level_(level) {}

  void operator()(const PutValue& change) {
    Key* const key = keyAt(change.path);
    const int kind = kindOfValue(change.value);
    if (!key || kind == boostany::kNoValue) return;
    if (key->kind() != boostany::kNoValue && key->kind() != kind) return;
    exchange(*key, change.value);
  }

  void operator()(const EraseValue& change) {
    if (Key* const key = keyAt(change.path)) exchange(*key, boost::any());
  }

  void operator()(const DefineEntry& change) {
    const std::size_t dot = change.path.rfind('.');
    const bool isTop = dot == std::string::npos;
    Entry* const above = isTop ? &root_ : root_.atPath(change.path.substr(0, dot));
    const std::string name = isTop ? change.path : change.path.substr(dot + 1);
    if (!above || above->isKey() || !isIdentifierName(name.c_str())) return;
    Node& parent = static_cast<Node&>(*above);
    if (Entry* const present = parent.child(name)) {
      if (present->isKey() == change.isKey) present->setDefinedAt(level_);
      return;
    }
    if (parent.depth() >= kMaxDepth) return;
    const EntryPtr entry = make(name, change);
    entry->setDefinedAt(level_);
    parent.insertChild(entry);
    added_.emplace_back(boost::static_pointer_cast<Node>(parent.shared_from_this()), entry);
  }

  void operator()(const RemoveSubtree& change) {
    Entry* const entry = root_.atPath(change.path);
    if (!entry) return;
    for (int level = 0; level < kLevelCount; ++level) {
      if (entry->isDefinedAt(level) && entry->tree().isReadOnly(level)) return;
    }
    Node& parent = *entry->parent();
    removed_.push_back({boost::static_pointer_cast<Node>(parent.shared_from_this()), EntryPtr(),
                        audienceOfRemoval(*entry)});
    Removal& removal = removed_.back();
    removal.entry = parent.takeChild(entry->name());
    removal.entry->setRemoved();
    countLeaving(*removal.entry, parent);
  }

  // With no lock held.
  void publish() const {
    for (const auto& [parent, entry] : added_) publishAdded(parent, entry);
    for (const Removal& removal : removed_) {
      publishRemoved(removal.parent, removal.entry, removal.audience);
    }
    changed_.publish();
  }

 private:
  struct Removal {
    NodePtr parent;
    EntryPtr entry;
    Audience audience;
  };

  Key* keyAt(const std::string& path) const {
    Entry* const entry = root_.atPath(path);
    return entry && entry->isKey() ? static_cast<Key*>(entry) : nullptr;
  }

  EntryPtr make(const std::string& name, const DefineEntry& change) const {
    const ValidatorPtr validator = makeValidator(change.validator);
    if (!change.isKey) return boost::make_shared<Node>(root_.treePtr(), name, true, validator);
    return boost::make_shared<Key>(root_.treePtr(), name, change.kind, true, validator);
  }

  void exchange(Key& key, boost::any value) {
    if (sameValue(key.value(level_), value)) return;
    key.swapValue(level_, value);
    changed_.add(key);
    replaced_.push_back(std::move(value));
  }

  Node& root_;
  const int level_;
  std::vector<std::pair<NodePtr, EntryPtr>> added_;
  std::vector<Removal> removed_;
  std::vector<boost::any> replaced_;
  ChangedKeys changed_;
};

}  // namespace

void applyForeignChanges(Node& root, int level, const Store::Source& source) {
  Application application(root, level);
  {
    WriterLockAhead writer(root.tree().writer());
    const Changes changes = source(root);
    WriteLock lock(root.tree().lock());
    for (const Change& change : changes) std::visit(application, change);
  }
  application.publish();
}

}  // namespace zlutil::settings::host
