#include "host/shared_store/write_plan.h"

#include "service/failures.h"
#include "values/stored_value.h"

namespace zlutil::settings::host {

WritePlan::WritePlan(const Changes& changes, ValidatorOf validatorOf, std::string commit,
                     const std::string& name)
    : validatorOf_(std::move(validatorOf)), commit_(std::move(commit)), name_(name) {
  for (const Change& change : changes) {
    std::visit([this](const auto& typed) { add(typed); }, change);
  }
}

SettingDocument& WritePlan::documentAt(const std::string& path) {
  for (std::size_t end = path.find('.');; end = path.find('.', end + 1)) {
    const auto above = operations_.find(path.substr(0, end));
    if (above != operations_.end() && above->second.isRemoval) {
      throw Failure<KORVEN::settings::core::StoreFailure>(
          name_, "\"" + path + "\" cannot be removed and set in one change. Make two changes");
    }
    if (end == std::string::npos) break;
  }
  const auto [found, isNew] = operations_.try_emplace(path);
  SettingDocument& document = found->second.document;
  if (isNew) {
    document.validator = validatorOf_(path);
    document.commit = commit_;
  }
  return document;
}

void WritePlan::add(const PutValue& change) {
  SettingDocument& document = documentAt(change.path);
  document.kind = boostany::kindOfValue(change.value);
  document.value = change.value;
}

void WritePlan::add(const EraseValue& change) {
  SettingDocument& document = documentAt(change.path);
  document.kind = change.kind;
  document.value = boost::any();
}

void WritePlan::add(const DefineEntry& change) {
  SettingDocument& document = documentAt(change.path);
  document.isNode = !change.isKey;
  document.kind = change.isKey ? change.kind : 0;
  document.validator = change.validator;
}

void WritePlan::add(const FixKind& change) { documentAt(change.path).kind = change.kind; }

void WritePlan::add(const RemoveSubtree& change) {
  const std::string below = change.path + '.';
  auto operation = operations_.lower_bound(below);
  while (operation != operations_.end() && operation->first.compare(0, below.size(), below) == 0) {
    operation = operations_.erase(operation);
  }
  operations_[change.path] = {true, {}};
}

Changes changesOf(const std::string& path, const SettingDocument& document) {
  Changes changes;
  for (std::size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
    changes.push_back(DefineEntry{path.substr(0, dot), false, 0, {}});
  }
  changes.push_back(DefineEntry{path, !document.isNode, document.kind, document.validator});
  if (document.isNode) return changes;
  if (document.value.empty()) {
    changes.push_back(EraseValue{path, document.kind});
  } else {
    changes.push_back(PutValue{path, document.value});
  }
  return changes;
}

}  // namespace zlutil::settings::host
