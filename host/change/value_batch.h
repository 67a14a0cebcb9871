// The values of one commit or validation: finds the key of each, whether it can take the value, and
// if not why. Borrows the caller's range. One thread at a time.
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
    std::size_t parent;  // index in parents_ of the node that holds the key
    ValidatorPtr validator;
  };

  // `level` is the level to change; none for a validation.
  ValueBatch(Tree& tree, const ValueRange& values, std::optional<int> level)
      : tree_(tree), values_(values), level_(level) {}

  // Finds the keys, as the tree is now, and returns whether each can take its value. Runs no
  // validators; hasValidators() returns whether there are any to run.
  bool resolve();
  bool hasValidators() const { return hasValidators_; }

  // Returns the problems of the last resolve(), and those that the validators find, as (path,
  // reason) in the order of the values. The caller holds no lock.
  SettingsProblems findProblems();

  // The result of the last resolve(), in the order of the values.
  const std::vector<Candidate>& list() const { return candidates_; }

 private:
  // A node that is the parent of some of the keys.
  struct Parent {
    const Node* node;
    bool isAttached;
    ValidatorPtr validator;
  };
  using ProblemsAt = std::map<std::size_t, std::pair<std::string, std::string>>;

  Key* keyAt(std::size_t position) const;
  bool fits(const Candidate& candidate);
  std::size_t parentOf(const Key& key);
  void checkKey(std::size_t position) const;
  void validate(const Candidate& candidate) const;

  Tree& tree_;
  const ValueRange values_;
  const std::optional<int> level_;
  std::vector<Candidate> candidates_;
  std::vector<std::size_t> refused_;  // the positions of those that cannot go into their keys
  std::vector<Parent> parents_;
  std::unordered_map<const Key*, int> firstKinds_;  // of keys that have no kind yet
  bool hasValidators_ = false;
};

}  // namespace zlutil::settings::host
