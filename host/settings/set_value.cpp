// One value at a time: setAny and unset.
#include "host/settings/commit.h"
#include "host/settings/publication.h"
#include "host/settings/stored_value.h"
#include "host/settings/value_checks.h"
#include "service/failures.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

// Throws NoSuchKey when the key, or a node above it, has been removed since it was found.
void checkAttached(const Node& node, const Key& key) {
  if (!key.isAttached()) throw Failure<NoSuchKey>(node.name(), key.name());
}

// Puts `value` in the level's place and takes what was there into it. The caller holds the writer.
void makeVisible(Key& key, int level, boost::any& value, ChangedKeys& changed) {
  WriteLock lock(key.tree().lock());
  key.swapValue(level, value);
  changed.add(key);
}

}  // namespace

void setValue(Node& node, const std::string& name, const boost::any& value,
              const std::string& levelText) {
  const int level = requireLevel(levelText);
  Tree& tree = node.tree();
  KeyPtr key;
  ValidatorPtr guard;
  {
    ReadLock lock(tree.lock());
    Key& found = node.requireKey(name);
    checkWritable(found, level);
    checkKind(found, found.kind(), value);
    guard = found.guard();
    key = boost::static_pointer_cast<Key>(found.shared_from_this());
  }
  if (guard) runValidator(*guard, node.shared_from_this(), name, value);
  boost::any exchanged = value;
  ChangedKeys changed;
  {
    WriterLock writer(tree.writer());
    std::string path;
    {
      ReadLock lock(tree.lock());
      checkAttached(node, *key);
      checkKind(*key, key->kind(), value);
      if (tree.store(level).keepsChanges()) path = key->path();
    }
    // Setting the same value again is no change; but others may have stored another one meanwhile.
    const bool isSame = sameValue(key->value(level), value);
    if (isSame && tree.store(level).isCurrent()) return;
    if (tree.store(level).keepsChanges()) tree.store(level).apply({PutValue{path, value}});
    if (!isSame) makeVisible(*key, level, exchanged, changed);
  }
  changed.publish();
}

void unsetValue(Node& node, const std::string& name, const std::string& levelText) {
  const int level = requireLevel(levelText);
  Tree& tree = node.tree();
  KeyPtr key;
  boost::any exchanged;
  ChangedKeys changed;
  {
    WriterLock writer(tree.writer());
    std::string path;
    {
      ReadLock lock(tree.lock());
      Key& found = node.requireKey(name);
      key = boost::static_pointer_cast<Key>(found.shared_from_this());
      checkAttached(node, *key);
      checkWritable(*key, level);
      path = key->path();
    }
    if (key->value(level).empty()) {
      throw Failure<ValueNotDefinedForGivenLevel>(path, levelText);
    }
    if (tree.store(level).keepsChanges()) tree.store(level).apply({EraseValue{path}});
    makeVisible(*key, level, exchanged, changed);
  }
  changed.publish();
}

}  // namespace zlutil::settings::host
