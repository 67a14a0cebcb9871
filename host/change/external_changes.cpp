#include "host/change/external_changes.h"

#include <boost/make_shared.hpp>

#include "host/change/external_events.h"
#include "host/change/store_diff.h"
#include "host/change/tree_edit.h"
#include "host/os/log_error.h"
#include "host/tree/subtree.h"
#include "service/failures.h"
#include "service/identifier.h"
#include "service/synchronization.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings {
namespace host {
namespace {

constexpr std::size_t kReportedLines = 10;

std::string valuesOf(int kind) { return std::string(boostany::kindName(kind)) + " values"; }

// Applies one batch. The caller holds the tree's lock() for writing; replaced values and removed
// entries are kept until this object is destroyed, without the lock.
class Application {
 public:
  Application(Node& root, int level) : root_(root), level_(level) {}

  void operator()(const PutValue& change) {
    Key* key = keyAt(change.path);
    const std::string* const present =
        key ? nullptr : root_.tree().formerNames().presentPath(change.path);
    if (present) key = keyAt(*present);
    const int kind = boostany::kindOfValue(change.value);
    if (!key) return leaveOut(change.path, "a value is stored for it, and there is no such key");
    FormerNames& former = root_.tree().formerNames();
    if (present && !key->value(level_).empty() && !former.counts(level_, *present)) {
      return former.note(level_, *present, change.path, false);
    }
    if (key->kind() != boostany::kNoValue && key->kind() != kind) {
      return leaveOut(change.path, "the stored value is " + std::string(boostany::kindName(kind)) +
                                       ", and the key holds " + valuesOf(key->kind()));
    }
    if (present) {
      former.note(level_, *present, change.path, true);
    } else {
      former.supersede(level_, change.path);
    }
    root_.tree().leftOut().forget(level_, change.path);
    exchange(*key, change.value);
  }

  void operator()(const EraseValue& change) {
    root_.tree().leftOut().forget(level_, change.path);
    FormerNames& former = root_.tree().formerNames();
    if (Key* const key = keyAt(change.path)) return exchange(*key, boost::any());
    const std::string* const present = former.presentPath(change.path);
    if (!present) return;
    Key* const renamed = keyAt(*present);
    const bool counts = former.counts(level_, *present);
    former.forget(level_, *present);
    if (!renamed || !counts) return;
    exchange(*renamed, boost::any());
  }

  void operator()(const FixKind& change) {
    Key* const key = keyAt(change.path);
    if (key && key->kind() == boostany::kNoValue) key->setKind(change.kind);
  }

  void operator()(const DefineEntry& change) {
    const std::size_t dot = change.path.rfind('.');
    const bool isTop = dot == std::string::npos;
    Entry* const above = isTop ? &root_ : root_.atPath(change.path.substr(0, dot));
    const std::string name = isTop ? change.path : change.path.substr(dot + 1);
    if (!above || above->isKey()) return leaveOut(change.path, "there is no node above it");
    if (!isIdentifierName(name.c_str())) return leaveOut(change.path, "it is not a name");
    Node& parent = static_cast<Node&>(*above);
    if (Entry* const present = parent.child(name)) return agree(*present, change);
    if (parent.depth() >= kMaxDepth) return leaveOut(change.path, "it is too deep");
    const EntryPtr entry = make(name, change);
    entry->setDefinedAt(level_);
    parent.insertChild(entry);
    countStructureChange(*entry, parent);
    note(ExternalEvent::kAdded, &parent, entry, audienceOf(*entry));
  }

  void operator()(const RemoveSubtree& change) {
    if (Entry* const entry = root_.atPath(change.path)) leave(*entry);
  }

  // Returns the events, in the order of the changes. They share the removed entries.
  std::vector<ExternalEvent> takeEvents() { return std::move(events_); }

  // The caller does not hold the tree's lock().
  void reportLeftOut(const std::string& holder) const {
    for (std::size_t at = 0; at < leftOut_.size() && at < kReportedLines; ++at) {
      logError(holder + ": " + leftOut_[at] + "; it stays stored");
    }
    if (leftOut_.size() > kReportedLines) {
      logError(holder + ": " + std::to_string(leftOut_.size() - kReportedLines) +
               " more are left out for such reasons");
    }
  }

 private:
  Key* keyAt(const std::string& path) const {
    Entry* const entry = root_.atPath(path);
    return entry && entry->isKey() ? static_cast<Key*>(entry) : nullptr;
  }

  void leaveOut(const std::string& path, const std::string& reason) {
    root_.tree().leftOut().note(level_, path, reason);
    leftOut_.push_back('"' + path + "\" is left out: " + reason);
  }

  // Takes the level's part of the entry and of all below it away, and removes what no other level
  // defines.
  void leave(Entry& entry) {
    if (!isDefinedElsewhere(entry)) return remove(entry);
    entry.clearDefinedAt(level_);
    if (entry.isKey()) return exchange(static_cast<Key&>(entry), boost::any());
    // A copy, because children are removed.
    const std::vector<EntryPtr> children = static_cast<Node&>(entry).childrenByName();
    for (const EntryPtr& child : children) leave(*child);
  }

  // Returns whether another level defines the entry or one below it.
  bool isDefinedElsewhere(const Entry& entry) const {
    for (int level = 0; level < kLevelCount; ++level) {
      if (level != level_ && entry.isDefinedAt(level)) return true;
    }
    if (entry.isKey()) return false;
    for (const EntryPtr& child : static_cast<const Node&>(entry).childrenByName()) {
      if (isDefinedElsewhere(*child)) return true;
    }
    return false;
  }

  void remove(Entry& entry) {
    Node& parent = *entry.parent();
    Audience audience = audienceOfRemoval(entry);
    const EntryPtr removed = parent.takeChild(entry.name());
    removed->setRemoved();
    countStructureChange(*removed, parent);
    note(ExternalEvent::kRemoved, &parent, removed, std::move(audience));
  }

  // Completes an entry that exists already: it keeps what it has, and gets a kind if it has none,
  // and a validator as long as no other thread knows the tree.
  void agree(Entry& present, const DefineEntry& change) {
    if (present.isKey() != change.isKey) {
      return leaveOut(change.path, present.isKey() ? "it is a key here" : "it is a node here");
    }
    present.setDefinedAt(level_);
    if (!present.validator() && !root_.tree().externalEvents()) {
      present.setDefinition(level_, definitionWith(makeValidator(change.validator)));
    }
    if (change.isKey && change.kind != boostany::kNoValue)
      (*this)(FixKind{change.path, change.kind});
  }

  void note(ExternalEvent::Kind kind, Node* parent, const EntryPtr& entry, Audience audience) {
    NodePtr shared;
    if (parent) shared = boost::static_pointer_cast<Node>(parent->shared_from_this());
    events_.push_back({kind, std::move(shared), entry, std::move(audience)});
  }

  EntryPtr make(const std::string& name, const DefineEntry& change) const {
    const TreePtr& tree = root_.treePtr();
    EntryPtr entry;
    if (change.isKey) {
      entry = boost::make_shared<Key>(tree, name, change.kind, true, ValidatorPtr());
    } else {
      entry = boost::make_shared<Node>(tree, name, true, ValidatorPtr());
    }
    entry->setDefinition(level_, definitionWith(makeValidator(change.validator)));
    return entry;
  }

  void exchange(Key& key, boost::any value) {
    if (boostany::sameValue(key.value(level_), value)) return;
    key.replaceValue(level_, value);
    note(ExternalEvent::kChanged, nullptr, key.shared_from_this(), audienceOf(key));
    replaced_.push_back(std::move(value));
  }

  Node& root_;
  const int level_;
  std::vector<ExternalEvent> events_;
  std::vector<boost::any> replaced_;
  std::vector<std::string> leftOut_;
};

}  // namespace

void applyExternalChanges(Node& root, int level, const ExternalChanges& external) {
  if (external.changes.empty() && !external.isEverything) return;
  Application application(root, level);
  Changes difference;
  if (external.isEverything) difference = diffWithStore(root, level, external.changes);
  {
    WriteLock lock(root.tree().lock());
    for (const Change& change : external.isEverything ? difference : external.changes) {
      std::visit(application, change);
    }
  }
  application.reportLeftOut(external.holder);
  if (ExternalEvents* const events = root.tree().externalEvents()) {
    events->note(application.takeEvents());
  }
}

void applyExternalChanges(Tree& tree, int level, const ExternalChanges& external) {
  if (const EntryPtr root = tree.root())
    applyExternalChanges(static_cast<Node&>(*root), level, external);
}

void catchUp(Tree& tree, int level) {
  TreeEdit edit(tree, TreeEdit::kAhead);
  edit.catchUp(level);
}

}  // namespace host

void synchronize(const boost::shared_ptr<Settings>& given) {
  const auto entry = boost::dynamic_pointer_cast<host::Entry>(given);
  if (!entry) throw Failure<KORVEN::settings::core::NoSuchNode>(std::string(), std::string());
  host::TreeEdit edit(entry->tree(), host::TreeEdit::kAhead);
  for (int level = 0; level < host::kLevelCount; ++level) edit.synchronize(level);
}

}  // namespace zlutil::settings
