// A settings service that does as a test tells it, under the natives: the entries of a tree, and
// the static functions that make trees. This program defines those functions, and its definitions
// come before those of libsettingshost; so only events, levels and the Java layer of that library
// take part. One thread at a time.
#pragma once

#include <boost/weak_ptr.hpp>
#include <functional>
#include <string>
#include <vector>

#include "service/settings.h"

namespace test {

using zlutil::settings::Settings;
using zlutil::settings::SettingsProblems;
using SettingsPtr = boost::shared_ptr<Settings>;

struct FakeHost {
  // The operation that calls `failure`, which throws as the test wants.
  std::string failsAt;
  std::function<void()> failure;

  // The operations that were called, with their arguments.
  std::vector<std::string> calls;
  std::vector<std::string> printed;

  // The result of getSettingsRoot and importAsStandaloneObject.
  SettingsPtr root;
  // Makes createSettingsNode return null.
  bool makesNothing = false;
  // The results of the operations of entries.
  boost::any value;
  boost::optional<int> kind;
  std::string setLevel;  // the only level that isSet answers true for
  SettingsProblems problems;
  bool ignoresSetenv = false;

  void called(const std::string& operation, const std::string& arguments = "");
};

FakeHost& fakeHost();

// An entry that notes its calls in the fake host.
class FakeSettings : public Settings {
 public:
  FakeSettings(const std::string& name, bool isKey) : name_(name), isKey_(isKey) {}
  static boost::shared_ptr<FakeSettings> make(const std::string& name, bool isKey,
                                              const boost::shared_ptr<FakeSettings>& parent);

  boost::any getValue(const std::string& key, const std::string& level) const override;
  std::string getName() const override;
  std::string getPath() const override;
  SettingsPtr findDescendant(const std::vector<std::string>& names) const override;
  void unset(const std::string& key, const std::string& level) override;
  bool isSet(const std::string& key, const std::string& level) const override;
  boost::optional<int> getKeyType(const std::string& key) const override;
  SettingsPtr getChild(const std::string& name) const override;
  std::vector<SettingsPtr> getChildren() const override;
  SettingsPtr getParent() const override;
  bool isKey() const override;
  void copySubtree(const SettingsPtr& source, const std::string& name) override;
  zlutil::contextmgr::ZcrID getZcrID() const override { return zlutil::contextmgr::ZcrID(77); }
  bool canHaveListeners() const override;
  SettingsPtr getSharedSelf() override;
  SettingsProblems setMultiple(
      const boost::iterator_range<zlutil::settings::SettingsValues::const_iterator>& values,
      const std::string& level, int reserved) override;
  SettingsProblems validateMultiple(
      const boost::iterator_range<zlutil::settings::SettingsValues::const_iterator>& values,
      int reserved) const override;
  zlutil::exchange::IDType getID() const override;
  void removeNode(const std::string& name) override;
  void removeKey(const std::string& name) override;
  void attachTo(const SettingsPtr& parent) override;
  bool isRoot() const override { return !parent_; }
  void setAny(const std::string& key, const boost::any& value, const std::string& level) override;

  bool takesListeners = true;

 private:
  SettingsPtr child(const std::string& name) const;

  const std::string name_;
  const bool isKey_;
  boost::weak_ptr<FakeSettings> self_;
  boost::shared_ptr<FakeSettings> parent_;
  std::vector<boost::weak_ptr<FakeSettings>> children_;
};

// Returns a value as calls show it.
std::string shown(const boost::any& value);

}  // namespace test
