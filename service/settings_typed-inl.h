// Settings::get, find and set: values with their C++ types and texts in standard UTF-8. Included by
// service/settings.h only.
#pragma once

#include <algorithm>
#include <type_traits>

#include "service/failures.h"
#include "values/value_kinds.h"

namespace zlutil {
namespace settings {
namespace detail {

// A key by the node that holds it and its own name. The node is null if there is none.
struct KeyOfNode {
  boost::shared_ptr<Settings> node;
  std::string name;

  std::string path() const {
    const std::string nodePath = node->getPath();
    return nodePath.empty() ? name : nodePath + "." + name;
  }
};

// Returns the key at `path` below `entry`; `entry` itself as a key for an empty path.
inline KeyOfNode keyAt(const Settings& entry, const std::string& path) {
  if (path.empty()) return {entry.getParent(), entry.getName()};
  std::vector<std::string> names(1);
  for (const char c : path) {
    if (c == '.') {
      names.emplace_back();
    } else {
      names.back() += c;
    }
  }
  std::string key = std::move(names.back());
  names.pop_back();
  return {entry.findDescendant(names), std::move(key)};
}

// Throws NoSuchKey if there is no node that could hold the key.
inline KeyOfNode requireKeyAt(const Settings& entry, const std::string& path) {
  KeyOfNode key = keyAt(entry, path);
  if (!key.node) {
    throw Failure<KORVEN::settings::core::NoSuchKey>(entry.getName(),
                                                     path.empty() ? key.name : path);
  }
  return key;
}

// The type that a value given as a `Type` is stored as: any text is a std::string.
template <class Type>
using StoredType =
    std::conditional_t<std::is_convertible_v<const Type&, std::string_view>, std::string, Type>;

template <class Type>
constexpr void requireKind() {
  static_assert(boostany::kHasKind<Type>,
                "A setting is a std::string, bool, signed char, unsigned char, short, unsigned "
                "short, int, unsigned int, long, unsigned long, float or double, or a std::vector "
                "of one of these.");
}

inline std::string utf8Of(const KeyOfNode& key, const std::string& narrow) {
  std::optional<std::string> utf8 = base::utf8FromNarrow(narrow);
  if (!utf8) {
    throw Failure<KORVEN::settings::core::ValidationFailure>(
        "The text of \"" + key.path() +
        "\" has a lone surrogate, which UTF-8 cannot hold. Read it with getValue().");
  }
  return *std::move(utf8);
}

template <class Type>
Type valueAs(const KeyOfNode& key, const boost::any& value) {
  const Type* const typed = boost::any_cast<Type>(&value);
  if (!typed) {
    const std::string stored(boostany::kindName(boostany::kindOfType(value.type())));
    const std::string asked(boostany::kindName(boostany::kKindOf<Type>));
    throw Failure<KORVEN::settings::core::ValidationFailure>("\"" + key.path() + "\" holds " +
                                                             stored + " values, not " + asked +
                                                             ". Read it as " + stored + ".");
  }
  Type result = *typed;
  if constexpr (std::is_same_v<Type, std::string>) {
    result = utf8Of(key, result);
  } else if constexpr (std::is_same_v<Type, std::vector<std::string>>) {
    for (std::string& text : result) text = utf8Of(key, text);
  }
  return result;
}

}  // namespace detail

template <class Type>
Type Settings::get(const std::string& path, const std::string& level) const {
  detail::requireKind<Type>();
  if constexpr (boostany::kHasKind<Type>) {
    const detail::KeyOfNode key = detail::requireKeyAt(*this, path);
    const boost::any value = key.node->getValue(key.name, level);
    if (value.empty()) {
      throw Failure<KORVEN::settings::core::ValueNotDefinedForGivenLevel>(
          key.path(), level.empty() ? "any" : level);
    }
    return detail::valueAs<Type>(key, value);
  }
}

template <class Type>
std::optional<Type> Settings::find(const std::string& path, const std::string& level) const {
  detail::requireKind<Type>();
  if constexpr (boostany::kHasKind<Type>) {
    const detail::KeyOfNode key = detail::keyAt(*this, path);
    if (!key.node || !key.node->getChild(key.name)) return std::nullopt;
    try {
      const boost::any value = key.node->getValue(key.name, level);
      if (value.empty()) return std::nullopt;
      return detail::valueAs<Type>(key, value);
    } catch (const Failure<KORVEN::settings::core::NoSuchKey>&) {
      return std::nullopt;  // another thread has just removed it
    }
  }
}

template <class Type>
void Settings::set(const std::string& path, const Type& value, const std::string& level) {
  using Stored = detail::StoredType<Type>;
  detail::requireKind<Stored>();
  if constexpr (boostany::kHasKind<Stored>) {
    const detail::KeyOfNode key = detail::requireKeyAt(*this, path);
    key.node->setAny(key.name, Stored(value), level);
  }
}

}  // namespace settings
}  // namespace zlutil
