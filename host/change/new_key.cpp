#include "host/change/new_key.h"

#include <boost/make_shared.hpp>

#include "base/loaded_library.h"
#include "host/change/given_text.h"
#include "host/change/structure.h"
#include "host/change/value_checks.h"
#include "host/tree/java_proxies.h"
#include "service/new_key.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings {
namespace host {
namespace {

// An expectValue() whose settle() is still to come; empty while no key waits.
struct Expected {
  NodePtr parent;
  KeyPtr key;
};

std::vector<Expected>& expected() {
  static thread_local std::vector<Expected> list;
  return list;
}

// Gives a key its first value before any other thread knows the key; the destructor takes it back
// unless keep() was called.
class FirstValue {
 public:
  FirstValue(Key& key, int level, const boost::any& given) : key_(key), level_(level) {
    boost::any value = boostany::ownCopy(given);
    key_.replaceValue(level_, value);
  }
  ~FirstValue() {
    if (isKept_) return;
    boost::any nothing;
    key_.replaceValue(level_, nothing);
    key_.setKind(boostany::kNoValue);
  }
  FirstValue(const FirstValue&) = delete;
  FirstValue& operator=(const FirstValue&) = delete;

  void keep() { isKept_ = true; }

 private:
  Key& key_;
  const int level_;
  bool isKept_ = false;
};

}  // namespace

bool waitsForValue(const EntryPtr& key, const NodePtr& parent) {
  if (!key->isKey() || expected().empty() || expected().back().key) return false;
  expected().back() = {parent, boost::static_pointer_cast<Key>(key)};
  return true;
}

KeyPtr waitingKey(const Node& parent, const std::string& name) {
  for (const Expected& waiting : expected()) {
    if (waiting.key && waiting.parent.get() == &parent && waiting.key->name() == name) {
      return waiting.key;
    }
  }
  return {};
}

void addWithValue(Node& parent, const KeyPtr& key, const boost::any& value,
                  const std::string& levelText) {
  const int level = requireLevel(levelText);
  ValidatorPtr validator = key->validator();
  {
    ReadLock lock(parent.tree().lock());
    checkWritable(parent, level);
    checkKind(*key, boostany::kNoValue, value);
    if (!validator) validator = parent.effectiveValidator();
  }
  if (validator) runValidator(*validator, parent.shared_from_this(), key->name(), value);
  FirstValue first(*key, level, value);
  editTree(parent.tree(), [&](TreeEdit& edit) {
    if (!tryInserting(edit, parent, key)) return false;
    first.keep();
    for (Expected& waiting : expected()) {
      if (waiting.key == key) waiting = {};
    }
    edit.noteChanged(*key);
    return true;
  });
}

}  // namespace host

void NewKey::add(const boost::shared_ptr<Settings>& parent, const std::string& name,
                 const ValidatorChoice& validator, const boost::any& value,
                 const std::string& level) {
  const host::ValidatorPtr made = host::makeValidator(
      host::withNarrowTexts(validator, name),
      host::JavaProxies::instance().of(base::libraryOf(__builtin_return_address(0))));
  const auto key =
      boost::make_shared<host::Key>(host::Tree::makeStandalone(), host::narrowText(name, "a name"),
                                    boostany::kNoValue, true, made);
  boost::any copy;
  host::addWithValue(*host::requireParent(key, parent), key,
                     host::withNarrowTexts(value, name, copy), level);
}

void NewKey::expectValue() { host::expected().emplace_back(); }

void NewKey::settle() {
  const host::Expected last = std::move(host::expected().back());
  host::expected().pop_back();
  if (!last.key) return;
  host::editTree(last.parent->tree(), [&](host::TreeEdit& edit) {
    return host::tryInserting(edit, *last.parent, last.key);
  });
}

}  // namespace zlutil::settings
