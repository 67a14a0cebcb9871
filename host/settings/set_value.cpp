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

// The key's path, if the level's store keeps changes. NoSuchKey when the key is not attached.
std::string pathToStore(const Node& node, const Key& key, int level) {
  checkAttached(node, key);
  return key.tree().store(level).keepsChanges() ? key.path() : std::string();
}

// Puts `value` in the level's place and takes what was there into it. The caller holds the writer.
void makeVisible(Key& key, int level, boost::any& value, ChangedKeys& changed) {
  WriteLock lock(key.tree().lock());
  key.swapValue(level, value);
  changed.add(key);
}

// Has the level's store keep `value` at `path`, and puts a copy in its place; what was there goes
// into `exchanged`, which is let go of when no lock is held. The caller holds the writer.
void storeValue(Key& key, int level, const std::string& path, const boost::any& value,
                boost::any& exchanged, ChangedKeys& changed) {
  Store& store = key.tree().store(level);
  // Setting the same value again is no change; but others may have stored another one meanwhile.
  const bool isSame = sameValue(key.value(level), value);
  if (isSame && store.isCurrent()) return;
  if (!isSame) exchanged = value;
  if (store.keepsChanges()) store.apply({PutValue{path, value}});
  if (!isSame) makeVisible(key, level, exchanged, changed);
}

}  // namespace

void setValue(Node& node, const std::string& name, const boost::any& value,
              const std::string& levelText) {
  const int level = requireLevel(levelText);
  Tree& tree = node.tree();
  KeyPtr guardedKey;
  ValidatorPtr guard;
  boost::any exchanged;
  ChangedKeys changed;
  {
    WriterLock writer(tree.writer());
    Key* key;
    std::string path;
    {
      ReadLock lock(tree.lock());
      key = &node.requireKey(name);
      checkWritable(*key, level);
      checkKind(*key, key->kind(), value);
      guard = key->guard();
      if (guard) {
        guardedKey = boost::static_pointer_cast<Key>(key->shared_from_this());
      } else {
        path = pathToStore(node, *key, level);
      }
    }
    if (!guard) storeValue(*key, level, path, value, exchanged, changed);
  }
  if (guard) {
    // A validator is somebody else's code and runs without a lock: meanwhile the key may have been
    // removed, or have got its first value.
    runValidator(*guard, node.shared_from_this(), name, value);
    WriterLock writer(tree.writer());
    std::string path;
    {
      ReadLock lock(tree.lock());
      checkKind(*guardedKey, guardedKey->kind(), value);
      path = pathToStore(node, *guardedKey, level);
    }
    storeValue(*guardedKey, level, path, value, exchanged, changed);
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
