#include "tests/support/user_tree.h"

#include <boost/variant/get.hpp>

#include "host/tree/subtree.h"
#include "host/user_store/sqlite_value.h"
#include "values/value_kinds.h"

namespace test {
namespace {

using namespace zlutil::settings::host;
using zlutil::settings::JValidator;

struct Line {
  std::string operator()(const PutValue& change) const {
    const ColumnValue column = columnFromValue(change.value);
    return change.path + " = " +
           std::string(
               zlutil::boostany::kindName(zlutil::boostany::kindOfType(change.value.type()))) +
           ' ' + column.bytes + '\n';
  }
  std::string operator()(const DefineEntry& change) const {
    const auto* const java = boost::get<JValidator>(&change.validator);
    return change.path + (change.isKey ? " key" : " node") +
           (java ? ' ' + java->first() + ' ' + java->second() : std::string()) + '\n';
  }
  std::string operator()(const EraseValue&) const { return {}; }
  std::string operator()(const RemoveSubtree&) const { return {}; }
  std::string operator()(const FixKind&) const { return {}; }
};

}  // namespace

std::string contentsOf(const NodePtr& root) {
  Changes changes;
  {
    ReadLock lock(root->tree().lock());
    for (const EntryPtr& child : root->childrenByName()) {
      describe(*child, child->name(), kUser, child->isDefinedAt(kUser), changes);
    }
  }
  std::string text;
  for (const Change& change : changes) text += std::visit(Line(), change);
  return text;
}

}  // namespace test
