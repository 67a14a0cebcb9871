#include "service/bound_key.h"

#include <atomic>

#include "host/change/tree_edit.h"
#include "values/number_bits.h"
#include "values/stored_value.h"
#include "values/value_kinds.h"

namespace zlutil::settings {
namespace host {
namespace {

class BoundKeyInTree final : public BoundKey {
 public:
  BoundKeyInTree(NodePtr root, std::vector<std::string> names)
      : root_(std::move(root)), names_(std::move(names)) {}

  bool getValue(int level, boost::any& value) const noexcept override {
    return read(level, [&](const boost::any& found) { value = found; });
  }

  bool getNumber(int level, int kind, std::int64_t& bits) const noexcept override {
    bool isNumber = false;
    read(level, [&](const boost::any& found) {
      boostany::withTypeOfKind(kind, [&](auto tag) {
        using Type = typename decltype(tag)::type;
        if constexpr (std::is_arithmetic_v<Type>) {
          const Type* const number = boost::any_cast<Type>(&found);
          isNumber = number != nullptr;
          if (isNumber) bits = boostany::toBits(*number);
        }
      });
    });
    return isNumber;
  }

  bool setAny(int level, boost::any& value) noexcept override {
    return change(level, boostany::kindOfValue(value), [&](TreeEdit& edit, Key& key) {
      edit.replaceValue(key, level, boostany::ownMove(value));
    });
  }

  bool setNumber(int level, int kind, std::int64_t bits) noexcept override {
    bool isNumber = false;
    return change(level, kind,
                  [&](TreeEdit& edit, Key& key) {
                    boostany::withTypeOfKind(kind, [&](auto tag) {
                      using Type = typename decltype(tag)::type;
                      if constexpr (std::is_arithmetic_v<Type>) {
                        isNumber = true;
                        edit.replaceNumber(key, level, boostany::fromBits<Type>(bits));
                      }
                    });
                  }) &&
           isNumber;
  }

  bool unset(int level) noexcept override {
    return orRefused([&] {
      tree().look();
      TreeEdit edit(tree());
      Key* const key = findToChange(level);
      if (!key || key->value(level).empty()) return false;
      edit.replaceValue(*key, level, boost::any());
      edit.finish();
      return true;
    });
  }

  boost::shared_ptr<Settings> entry() const noexcept override {
    ReadLock lock(tree().lock());
    Key* const key = find();
    return key ? key->shared_from_this() : EntryPtr();
  }

 private:
  template <class Operation>
  static bool orRefused(const Operation& operation) noexcept {
    try {
      return operation();
    } catch (const std::exception&) {
      return false;
    }
  }

  // Calls `use(value)` with the value at the level or the effective one. Returns false if there is
  // no such key.
  template <class Use>
  bool read(int level, const Use& use) const noexcept {
    return orRefused([&] {
      tree().look();
      ReadLock lock(tree().lock());
      const Key* const key = find();
      if (!key || !isLevelOrEffective(level)) return false;
      use(level == kEffective ? key->effectiveValue() : key->value(level));
      return true;
    });
  }

  // Calls `replace(edit, key)` if the key can take a value of the kind at the level and no
  // validator has to be called. Refuses levels whose store keeps changes: there the I/O takes the
  // time, and Settings::setAny does it.
  template <class Replace>
  bool change(int level, int kind, const Replace& replace) noexcept {
    return orRefused([&] {
      tree().look();
      TreeEdit edit(tree());
      Key* const key = findToChange(level);
      if (!key || key->effectiveValidator() || !takesKind(*key, kind)) return false;
      replace(edit, *key);
      edit.finish();
      return true;
    });
  }

  Tree& tree() const { return root_->tree(); }

  static bool isLevelOrEffective(int level) { return level >= kEffective && level < kLevelCount; }

  static bool takesKind(const Key& key, int kind) {
    return kind != boostany::kNoValue && (key.kind() == boostany::kNoValue || key.kind() == kind);
  }

  // Returns the key at the path, or null. The caller holds the tree's lock() or writer(). Several
  // readers may look it up at once; all of them cache the same key.
  Key* find() const {
    const std::uint64_t removals = Node::removals();
    if (asOf_.load(std::memory_order_acquire) != removals || !key_.load()) {
      key_.store(lookUp());
      asOf_.store(removals, std::memory_order_release);
    }
    return key_.load();
  }

  Key* lookUp() const {
    Entry* entry = root_.get();
    for (const std::string& name : names_) {
      if (!entry || entry->isKey()) return nullptr;
      entry = static_cast<Node*>(entry)->child(name);
    }
    return entry && entry->isKey() ? static_cast<Key*>(entry) : nullptr;
  }

  // Returns the key if its value at the level is kept in memory only and can be changed; otherwise
  // null.
  Key* findToChange(int level) const {
    if (level < 0 || level >= kLevelCount) return nullptr;
    if (tree().isReadOnly(level) || tree().store(level).keepsChanges()) return nullptr;
    Key* const key = find();
    return key && key->isAttached() && level >= key->firstLevel() ? key : nullptr;
  }

  const NodePtr root_;
  const std::vector<std::string> names_;
  // The cached key, or null. The tree keeps it alive as long as no entry has been removed since.
  mutable std::atomic<Key*> key_{nullptr};
  mutable std::atomic<std::uint64_t> asOf_{0};
};

}  // namespace
}  // namespace host

std::unique_ptr<BoundKey> bindKey(const boost::shared_ptr<Settings>& root,
                                  std::vector<std::string> names) {
  auto node = boost::dynamic_pointer_cast<host::Node>(root);
  if (!node || names.empty()) return nullptr;
  return std::make_unique<host::BoundKeyInTree>(std::move(node), std::move(names));
}

}  // namespace zlutil::settings
