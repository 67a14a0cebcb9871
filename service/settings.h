// The node interface of the settings service. A tree is made of entries: a node has children and
// holds no value, a key is a leaf that holds at most one typed value per level. Entries are always
// handled through boost::shared_ptr. The tree shares its entries with the holders of such pointers,
// and an entry that has been removed from its tree stays readable as long as it is held.
//
// Values are boost::any holding one of the types of values/value_kinds.h; an empty any means no
// value. A level is named by a text (service/levels.h); "" means the effective value. Names, paths
// and the texts among the values are narrow text (base/text.h); a path in the service's notation is
// names joined with ".". Texts may be given in standard UTF-8 as well, with U+0000 as a zero byte,
// and are read back as narrow text; bytes that are neither are a ValidationFailure.
//
// get(), find() and set() are the short way for C++ programs: they take a path, have the value's
// type, and give texts in standard UTF-8.
//
// Threads: every operation may be called from any thread. Reading never waits for another thread's
// validation, storage or listeners; only where the process can start no thread that watches for
// external changes, each read looks for them itself. Changes to one tree happen one after the
// other; a change is validated, stored, made visible, and then published, on the calling thread and
// with no lock held. External changes can be read within a moment, and are read before a change is
// stored: a change that they have made impossible fails as if this process had made them.
//
// A comment names the failures of service/failures.h that its operation throws.
#pragma once

#include <boost/any.hpp>
#include <boost/optional.hpp>
#include <boost/range/iterator_range.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/locks.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/export.h"
#include "base/text.h"
#include "service/context.h"
#include "service/event_mgr.h"
#include "service/id_type.h"
#include "service/settings_fwd.h"

namespace zlutil {
namespace settings {

// (entry, value) pairs and (path, reason) pairs.
using SettingsValues = std::vector<std::pair<boost::shared_ptr<Settings>, boost::any>>;
using SettingsProblems = std::vector<std::pair<std::string, std::string>>;

class SETTINGS_HOST_API Settings {
 public:
  virtual ~Settings();

  // Returns the value of the key at `path` below this node, or of this key for an empty path, at
  // `level`, or the effective value for "". `Type` is one of the 24 types, such as int, std::string
  // or std::vector<double>. NoSuchKey, NotAKeyName, UnSupportedLevel, ValueNotDefinedForGivenLevel,
  // ValidationFailure (the key is of another type, or a text that UTF-8 cannot hold).
  template <class Type>
  Type get(const std::string& path = "", const std::string& level = "") const;

  // Returns the same; nothing if there is no such key, or no value at the level.
  template <class Type>
  std::optional<Type> find(const std::string& path = "", const std::string& level = "") const;

  // Sets the value of the key at `path` below this node, or of this key for an empty path. Takes
  // texts in standard UTF-8. Throws what setAny throws.
  template <class Type>
  void set(const std::string& path, const Type& value, const std::string& level = "user");

  // Returns the value of the child key `key` at `level`; empty if nothing is set there. NoSuchKey,
  // NotAKeyName (a node has that name), UnSupportedLevel.
  virtual boost::any getValue(const std::string& key, const std::string& level) const = 0;

  // Returns the entry's own name, the last component of its path.
  virtual std::string getName() const = 0;

  // Returns the names below the root joined with ".". Below a standalone root the path begins with
  // that root's name, so that it does not resolve in another tree; below a removed entry with
  // "(removed)" and that entry's name, so that it resolves nowhere.
  virtual std::string getPath() const = 0;

  // Returns the entry at that path below this node (this entry itself for no names); null if there
  // is none.
  virtual boost::shared_ptr<Settings> findDescendant(
      const std::vector<std::string>& names) const = 0;

  // Removes the value of the child key at the level. NoSuchKey, NotAKeyName, UnSupportedLevel,
  // ValueNotDefinedForGivenLevel, CantModifyValuesOnReadOnlyLevel, StoreFailure.
  virtual void unset(const std::string& key, const std::string& level) = 0;

  // Returns whether the child key holds a value at the level. Throws what getValue throws.
  virtual bool isSet(const std::string& key, const std::string& level) const = 0;

  // Returns the declared kind (1 .. 24) of the child key; none while it has neither a declared type
  // nor a value. NoSuchKey, NotAKeyName.
  virtual boost::optional<int> getKeyType(const std::string& key) const = 0;

  // Returns the direct child, a node or a key; null if there is none.
  virtual boost::shared_ptr<Settings> getChild(const std::string& name) const = 0;

  // Returns all direct children in name order; none for a key.
  virtual std::vector<boost::shared_ptr<Settings>> getChildren() const = 0;

  // Returns the parent node; null for a root, a detached entry and a removed one.
  virtual boost::shared_ptr<Settings> getParent() const = 0;

  virtual bool isKey() const = 0;

  // Copies the tree below `source` into a new child of this node called `name`. The copy reads the
  // same as its source; a value found at a level that is read-only here is stored at user.
  // NoSuchNode (no source), NotANodeName (bad name or a key as source),
  // CannotMergeWithNodeContainsChildren, ErrorAddingChildNodeOrKey, StoreFailure.
  virtual void copySubtree(const boost::shared_ptr<Settings>& source, const std::string& name) = 0;

  // Returns the context whose tree this is; AnyZcrID for a standalone tree.
  virtual contextmgr::ZcrID getZcrID() const = 0;

  // Returns whether subscriptions may be made on the entry.
  virtual bool canHaveListeners() const = 0;

  virtual boost::shared_ptr<Settings> getSharedSelf() = 0;

  // Sets every (key, value) pair at the level: all of them, or none if there is a problem. Never
  // throws; the result has one (path, reason) pair per problem, in the order of the pairs.
  // `reserved` is 0.
  virtual SettingsProblems setMultiple(
      const boost::iterator_range<SettingsValues::const_iterator>& values, const std::string& level,
      int reserved) = 0;

  // Finds the problems that setMultiple would find in the values themselves, without setting
  // anything.
  virtual SettingsProblems validateMultiple(
      const boost::iterator_range<SettingsValues::const_iterator>& values, int reserved) const = 0;

  virtual exchange::IDType getID() const = 0;

  // Removes the child node with everything below it. NoSuchNode, NotANodeName,
  // CantModifyValuesOnReadOnlyLevel (a read-only file defines it), StoreFailure.
  virtual void removeNode(const std::string& name) = 0;

  // Removes the child key. NoSuchKey, NotAKeyName, CantModifyValuesOnReadOnlyLevel (a settings file
  // defines it), StoreFailure.
  virtual void removeKey(const std::string& name) = 0;

  // Inserts this freshly created entry under `parent`. NotAKeyName or NotANodeName (this entry's
  // name is no identifier), NotANodeName (the parent is a key), NoSuchNode (the parent has been
  // removed), ErrorAddingChildNodeOrKey (the name is taken, or this entry is not detached),
  // ValidationFailure (the tree would be deeper than 200 entries, or would need two stores),
  // StoreFailure. Until it is inserted, an entry belongs to one thread.
  virtual void attachTo(const boost::shared_ptr<Settings>& parent) = 0;

  // Returns whether the entry is the root of a tree.
  virtual bool isRoot() const = 0;

  // Sets the child key's value at the level. NoSuchKey, NotAKeyName, UnSupportedLevel,
  // DefaultValidationFailedOnVoidType (empty value), ValidationFailure (another type than the
  // key's, or refused), CValidationError, FailedToRunJavaValidator,
  // CantModifyValuesOnReadOnlyLevel, StoreFailure. A value equal to that at the level changes
  // nothing and publishes nothing.
  virtual void setAny(const std::string& key, const boost::any& value,
                      const std::string& level) = 0;

  // Subscribes to one kind of event (service/events.h) about this entry and, for a node, about
  // everything below it. Returns an empty pointer if the entry can have no listeners.
  template <class Event>
  eventmgr::AutoPtr<eventmgr::Connection> addListener(
      const boost::function1<void, const Event&>& callback) const {
    boost::shared_lock<boost::shared_mutex> lock(getTheRootMutex());
    if (!canHaveListeners()) return eventmgr::makeAuto<eventmgr::Connection>(nullptr);
    return eventmgr::EventMgr::instance().subscribe<Event>(Event::EventType() + getID().toString(),
                                                           callback);
  }

  // Sets (path, any) pairs, whose paths are those of getPath() seen from this root, as one
  // operation. Sets nothing if a path cannot be resolved or setMultiple finds a problem.
  template <class Iterator>
  SettingsProblems multipleSet(const Iterator& first, const Iterator& last,
                               const std::string& level);

  // Finds the problems of the values that multipleSet would find, at no level: neither a read-only
  // level nor a store is asked. Sets nothing.
  template <class Iterator>
  SettingsProblems multipleValidate(const Iterator& first, const Iterator& last);

  // Returns the root of the context's tree, made at first use from the directories of that moment;
  // null if the context has none. Never throws.
  static boost::shared_ptr<Settings> getSettingsRoot(const contextmgr::ZcrID& context);

  // Returns the root of a new standalone tree read from a settings file, never null.
  // FileLoadingError, SaxParseException, SaxUnknownException.
  static boost::shared_ptr<Settings> importAsStandaloneObject(const base::ustring& path);

  // Returns the mutex that keeps the set of trees from changing while a subscription is made.
  static boost::shared_mutex& getTheRootMutex();
};

}  // namespace settings
}  // namespace zlutil

#include "service/settings_multiple-inl.h"
#include "service/settings_typed-inl.h"
