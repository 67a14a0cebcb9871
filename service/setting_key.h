// A setting that a program declares in its code: its path, its type, its default value and, if
// wanted, a validator. It needs no settings file.
//
//   const SettingKey<int> kFontSize("editor.fontSize", 12);
//
//   const auto root = Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID);
//   kFontSize.set(root, kFontSize.get(root) + 2);
//
// The key and the nodes above it come into being in the tree with the first value that is set; the
// default itself is not stored, so the next version of the program may have another one. Where a
// settings file or an earlier run has defined the key, its values count before the default, its
// type must be the declared one, and its validator is used in place of the declared one.
//
// Texts are in standard UTF-8. Immutable; any number of threads.
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <utility>
#include <vector>

#include "service/failures.h"
#include "service/new_key.h"
#include "service/settings.h"
#include "service/validators.h"
#include "service/z_settings.h"

namespace zlutil {
namespace settings {

template <class Type>
class SettingKey {
 public:
  // `path` is the names that lead to the key, joined with ".". `validator` is that of the key if
  // set() adds it.
  SettingKey(std::string path, Type defaultValue, ValidatorChoice validator = {})
      : path_(std::move(path)),
        default_(std::move(defaultValue)),
        validator_(std::move(validator)) {}

  const std::string& path() const { return path_; }
  const Type& defaultValue() const { return default_; }

  // Returns the effective value, or the default if no level has one. `root` is the node that the
  // path begins at. ValidationFailure (the tree has the key with another type).
  Type get(const boost::shared_ptr<Settings>& root) const {
    return root->find<Type>(path_).value_or(default_);
  }

  // Sets the value at the level, and adds the key, and the nodes above it, if the tree does not
  // have it. Throws what Settings::setAny and Settings::attachTo throw.
  void set(const boost::shared_ptr<Settings>& root, const Type& value,
           const std::string& level = "user") const {
    const detail::KeyOfNode key = detail::keyAt(*root, path_);
    if (key.node && key.node->getChild(key.name)) return root->set(path_, value, level);
    try {
      NewKey::add(nodeBelow(root), key.name, validator_, boost::any(value), level);
    } catch (const NameTaken&) {
      root->set(path_, value, level);  // another thread or process has just added it
    }
  }

 private:
  using NameTaken = Failure<KORVEN::settings::core::ErrorAddingChildNodeOrKey>;
  using NoSuchNode = Failure<KORVEN::settings::core::NoSuchNode>;

  // Returns the node that is to hold the key, after adding the nodes that are missing.
  boost::shared_ptr<Settings> nodeBelow(const boost::shared_ptr<Settings>& root) const {
    boost::shared_ptr<Settings> node = root;
    std::size_t begin = 0;
    for (std::size_t dot; (dot = path_.find('.', begin)) != std::string::npos; begin = dot + 1) {
      const std::string name = path_.substr(begin, dot - begin);
      boost::shared_ptr<Settings> child = node->getChild(name);
      if (!child) {
        try {
          ZSettings::createSettingsNode(name, false, true, {})->attachTo(node);
        } catch (const NameTaken&) {
          // Another thread or process has just added it.
        }
        child = node->getChild(name);
        if (!child) throw NoSuchNode(node->getName(), name);
      }
      node = child;
    }
    return node;
  }

  const std::string path_;
  const Type default_;
  const ValidatorChoice validator_;
};

}  // namespace settings
}  // namespace zlutil
