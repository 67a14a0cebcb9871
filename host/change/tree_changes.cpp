// Several changes of a tree as one: applyChanges().
#include "service/tree_changes.h"

#include <algorithm>
#include <memory>

#include "base/loaded_library.h"
#include "host/change/given_text.h"
#include "host/change/tree_draft.h"
#include "host/tree/java_proxies.h"
#include "service/failures.h"
#include "values/stored_value.h"

namespace zlutil::settings {
namespace host {
namespace {

using namespace KORVEN::settings::core;

// A change with narrow texts, and the validator that it brings.
struct PreparedChange {
  TreeChange change;
  int level = kUser;
  ValidatorPtr validator;

  PreparedChange(const TreeChange& given, const JavaProxyPtr& origin) : change(given) {
    change.path = narrowText(given.path, "a path");
    change.target = narrowText(given.target, "a path");
    boost::any copy;
    change.value = withNarrowTexts(given.value, change.path, copy);
    if (!given.level.empty()) level = requireLevel(given.level);
    validator = makeValidator(withNarrowTexts(given.validator, change.path), origin);
  }

  void applyTo(TreeDraft& draft) const {
    const std::string& path = change.path;
    switch (change.what) {
      case TreeChange::kSet:
        return draft.set(path, level, change.value);
      case TreeChange::kUnset:
        return draft.unset(path, level);
      case TreeChange::kAddNode:
        return draft.add(path, false, validator, level, {});
      case TreeChange::kAddKey:
        return draft.add(path, true, validator, level, change.value);
      case TreeChange::kRemove:
        return draft.remove(path);
      case TreeChange::kMove:
        return draft.move(path, change.target);
    }
  }
};

// Calls `work()`; what it throws becomes a problem with the path, but for a failure of the store.
template <class Work>
void noteProblem(SettingsProblems& problems, const std::string& path, const Work& work) {
  try {
    work();
  } catch (const Failure<StoreFailure>&) {
    throw;
  } catch (const std::exception& refused) {
    problems.emplace_back(path, refused.what());
  }
}

bool isSame(const TreeDraft::Judgement& one, const TreeDraft::Judgement& other) {
  return one.validator == other.validator && boostany::sameValue(one.value, other.value);
}

// Applies changes. Each attempt makes a draft of the tree while it holds an edit of it, and is
// repeated if other changes come in between, or if the draft's values have not been judged yet.
class Applying {
 public:
  Applying(NodePtr top, std::vector<PreparedChange> changes, bool isTrial)
      : top_(std::move(top)), changes_(std::move(changes)), isTrial_(isTrial) {}

  SettingsProblems run() {
    SettingsProblems problems;
    bool isDone = false;
    while (!isDone && problems.empty()) {
      const auto draft = std::make_unique<TreeDraft>(top_);
      {
        TreeEdit edit(top_->tree());
        edit.catchUp(kUser);
        for (const PreparedChange& change : changes_) {
          noteProblem(problems, change.change.path, [&] { change.applyTo(*draft); });
        }
        if (!problems.empty()) break;
        if (isJudged(*draft)) {
          noteProblem(problems, changes_.front().change.path,
                      [&] { isDone = isTrial_ || draft->commit(edit); });
          if (isDone && !isTrial_) edit.finish();
          continue;
        }
      }
      judge(*draft, problems);
    }
    return problems;
  }

 private:
  bool isJudged(const TreeDraft& draft) const {
    const auto& wanted = draft.judgements();
    return std::equal(wanted.begin(), wanted.end(), accepted_.begin(), accepted_.end(), isSame);
  }

  // Runs the validators. Holds no lock.
  void judge(const TreeDraft& draft, SettingsProblems& problems) {
    accepted_ = draft.judgements();
    for (const TreeDraft::Judgement& judgement : accepted_) {
      noteProblem(problems, judgement.key->getPath(), [&] {
        runValidator(*judgement.validator, judgement.node, judgement.key->name(), judgement.value);
      });
    }
  }

  const NodePtr top_;
  const std::vector<PreparedChange> changes_;
  const bool isTrial_;
  std::vector<TreeDraft::Judgement> accepted_;  // by the validators
};

}  // namespace
}  // namespace host

SettingsProblems applyChanges(const boost::shared_ptr<Settings>& top,
                              const std::vector<TreeChange>& changes, bool isTrial) {
  const auto node = boost::dynamic_pointer_cast<host::Node>(top);
  if (!node) return {{std::string(), "The changes begin at no node."}};
  const host::JavaProxyPtr origin =
      host::JavaProxies::instance().of(base::libraryOf(__builtin_return_address(0)));
  SettingsProblems problems;
  std::vector<host::PreparedChange> prepared;
  for (const TreeChange& change : changes) {
    host::noteProblem(problems, change.path, [&] { prepared.emplace_back(change, origin); });
  }
  if (!problems.empty() || prepared.empty()) return problems;
  node->tree().look();
  return host::Applying(node, std::move(prepared), isTrial).run();
}

}  // namespace zlutil::settings
