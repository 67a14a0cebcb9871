// The values of one commit or validation on their way into their keys: which of them can go there,
// and why the others cannot. Borrows the caller's range. Belongs to one thread; may run validators,
// so findProblems() is called with no lock held.
#pragma once

#include <map>
#include <optional>
#include <unordered_map>

#include "host/tree/node.h"

namespace zlutil::settings::host {

class ValueBatch {
 public:
  struct Candidate {
    Key* key;  // null when the value's entry is no key of the tree
    const boost::any* value;
    std::size_t place;  // of its enclosing node, in places_
  };

  // `level` is where the values are to go, or nothing when they go nowhere.
  ValueBatch(Tree& tree, const ValueRange& values, std::optional<int> level)
      : tree_(tree), values_(values), level_(level) {}

  // One pass over the values, as the tree is now: whether each can go into its key. Validators are
  // not asked; hasValidators() says whether there are any to ask.
  bool resolve();
  bool hasValidators() const { return hasValidators_; }

  // Finds the problems of the last pass, validators' too: (path, reason) in the order of the
  // values.
  SettingsProblems findProblems();

  // In the order of the values, as the last pass found them.
  const std::vector<Candidate>& list() const { return candidates_; }

 private:
  // A node above some of the keys, and what the keys have from it.
  struct Place {
    const Node* node;
    bool isAttached;
    ValidatorPtr validator;
  };
  using ProblemsAt = std::map<std::size_t, std::pair<std::string, std::string>>;

  Key* keyAt(std::size_t position) const;
  bool fits(const Candidate& candidate);
  std::size_t placeOf(const Key& key);
  const ValidatorPtr& validatorOf(const Candidate& candidate) const;
  void checkKey(std::size_t position) const;
  void validate(const Candidate& candidate) const;

  Tree& tree_;
  const ValueRange values_;
  const std::optional<int> level_;
  std::vector<Candidate> candidates_;
  std::vector<std::size_t> refused_;  // the positions of those that cannot go into their keys
  std::vector<Place> places_;
  std::unordered_map<const Key*, int> firstKinds_;  // of keys that have no kind yet
  bool hasValidators_ = false;
};

}  // namespace zlutil::settings::host
