#include "host/tree/key.h"

#include "host/tree/node.h"
#include "service/change_counters.h"
#include "service/failures.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings::host {
namespace {

using namespace KORVEN::settings::core;

}  // namespace

boost::any Key::getValue(const std::string& key, const std::string&) const {
  throw Failure<NoSuchKey>(name(), key);
}
void Key::unset(const std::string& key, const std::string&) {
  throw Failure<NoSuchKey>(name(), key);
}
bool Key::isSet(const std::string& key, const std::string&) const {
  throw Failure<NoSuchKey>(name(), key);
}
boost::optional<int> Key::getKeyType(const std::string& key) const {
  throw Failure<NoSuchKey>(name(), key);
}
void Key::setAny(const std::string& key, const boost::any&, const std::string&) {
  throw Failure<NoSuchKey>(name(), key);
}
void Key::removeKey(const std::string& key) { throw Failure<NoSuchKey>(name(), key); }
void Key::removeNode(const std::string& node) { throw Failure<NoSuchNode>(name(), node); }

void Key::copySubtree(const boost::shared_ptr<Settings>&, const std::string& copy) {
  throw Failure<ErrorAddingChildNodeOrKey>(name(), copy, std::string("a key has no children"));
}

boost::shared_ptr<Settings> Key::findDescendant(const std::vector<std::string>& names) const {
  if (!names.empty()) return {};
  return const_cast<Key*>(this)->getSharedSelf();
}

const boost::any& Key::effectiveValue() const {
  for (int level = firstLevel(); level < kLevelCount; ++level) {
    if (!values_[level].empty()) return values_[level];
  }
  return values_.back();
}

void Key::replaceValue(int level, boost::any& value) {
  values_[level].swap(value);
  if (kind_ == boostany::kNoValue) setKind(boostany::kindOfValue(values_[level]));
  countChange();
}

void Key::countChange() const {
  // No reader can find a key without a parent.
  if (parent()) ChangeCounters::add(parent()->name(), name());
}

}  // namespace zlutil::settings::host
