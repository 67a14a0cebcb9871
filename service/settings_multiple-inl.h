// Resolution of (path, value) pairs for Settings::multipleSet and multipleValidate; included by
// service/settings.h only.
#pragma once

#include <algorithm>
#include <iterator>

namespace zlutil {
namespace settings {
namespace detail {

// Turns a (path, value) pair into an (entry, value) pair. For a path that leads to no key it adds a
// (path, reason) pair to the problems instead.
class SETTINGS_HOST_API NameToObjectTransformer {
 public:
  // `acceptNodes` says whether a path may also lead to a node. `start` is where paths begin.
  // `problems` is borrowed and must outlive the transformer.
  NameToObjectTransformer(bool acceptNodes, const boost::shared_ptr<Settings>& start,
                          SettingsProblems& problems)
      : acceptNodes_(acceptNodes), start_(start), problems_(problems) {}

  // Returns the entry at the path; null if a problem was added.
  boost::shared_ptr<Settings> operator()(const std::string& path);

 private:
  boost::shared_ptr<Settings> find(const std::string& path);

  const bool acceptNodes_;
  const boost::shared_ptr<Settings> start_;
  SettingsProblems& problems_;
  // The node of the last path; the next path is most often one of a neighbour.
  boost::shared_ptr<Settings> node_;
  std::string nodePath_;
};

template <class Iterator>
SettingsValues resolvePaths(Settings& root, const Iterator& first, const Iterator& last,
                            SettingsProblems& problems) {
  NameToObjectTransformer transform(false, root.getSharedSelf(), problems);
  SettingsValues values;
  values.reserve(std::distance(first, last));
  for (Iterator change = first; change != last; ++change) {
    if (boost::shared_ptr<Settings> entry = transform(change->first)) {
      values.emplace_back(std::move(entry), change->second);
    }
  }
  return values;
}

}  // namespace detail

template <class Iterator>
SettingsProblems Settings::multipleSet(const Iterator& first, const Iterator& last,
                                       const std::string& level) {
  SettingsProblems problems;
  const SettingsValues values = detail::resolvePaths(*this, first, last, problems);
  if (!problems.empty() || values.empty()) return problems;
  return setMultiple(boost::make_iterator_range(values.begin(), values.end()), level, 0);
}

template <class Iterator>
SettingsProblems Settings::multipleValidate(const Iterator& first, const Iterator& last) {
  SettingsProblems problems;
  const SettingsValues values = detail::resolvePaths(*this, first, last, problems);
  if (!problems.empty() || values.empty()) return problems;
  return validateMultiple(boost::make_iterator_range(values.begin(), values.end()), 0);
}

}  // namespace settings
}  // namespace zlutil
