#include "tests/bridge_contract/fake_host.h"

#include <dlfcn.h>

#include <boost/make_shared.hpp>
#include <boost/variant/get.hpp>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "service/console.h"
#include "service/validators.h"
#include "service/z_settings.h"

namespace test {

using zlutil::settings::SettingsValues;
using Range = boost::iterator_range<SettingsValues::const_iterator>;

FakeHost& fakeHost() {
  static auto& host = *new FakeHost;
  return host;
}

void FakeHost::called(const std::string& operation, const std::string& arguments) {
  calls.push_back(arguments.empty() ? operation : operation + " " + arguments);
  if (operation == failsAt) failure();
}

std::string shown(const boost::any& value) {
  if (const int* number = boost::any_cast<int>(&value)) return std::to_string(*number);
  if (const std::string* text = boost::any_cast<std::string>(&value)) return *text;
  return value.empty() ? "nothing" : "?";
}

namespace {

std::string shown(const Range& values) {
  std::string all;
  for (const auto& [entry, value] : values) {
    all += entry->getName() + "=" + test::shown(value) + " ";
  }
  return all;
}

// Fails at an operation that is too common to be noted.
void mayFail(const std::string& operation) {
  if (operation == fakeHost().failsAt) fakeHost().failure();
}

}  // namespace

boost::shared_ptr<FakeSettings> FakeSettings::make(const std::string& name, bool isKey,
                                                   const boost::shared_ptr<FakeSettings>& parent) {
  const auto made = boost::make_shared<FakeSettings>(name, isKey);
  made->self_ = made;
  made->parent_ = parent;
  if (parent) parent->children_.push_back(made);
  return made;
}

boost::any FakeSettings::getValue(const std::string& key, const std::string& level) const {
  fakeHost().called("getValue", key + " \"" + level + "\"");
  return fakeHost().value;
}

std::string FakeSettings::getName() const {
  mayFail("getName");
  return name_;
}

std::string FakeSettings::getPath() const {
  mayFail("getPath");
  return name_;
}

SettingsPtr FakeSettings::findDescendant(const std::vector<std::string>& names) const {
  std::string shownNames;
  for (const std::string& name : names) shownNames += "/" + name;
  fakeHost().called("findDescendant", shownNames);
  SettingsPtr found = self_.lock();
  for (const std::string& name : names) {
    if (found) found = static_cast<FakeSettings&>(*found).child(name);
  }
  return found;
}

void FakeSettings::unset(const std::string& key, const std::string& level) {
  fakeHost().called("unset", key + " \"" + level + "\"");
}

bool FakeSettings::isSet(const std::string& key, const std::string& level) const {
  fakeHost().called("isSet", key + " \"" + level + "\"");
  return level == fakeHost().setLevel;
}

boost::optional<int> FakeSettings::getKeyType(const std::string& key) const {
  fakeHost().called("getKeyType", key);
  return fakeHost().kind;
}

SettingsPtr FakeSettings::child(const std::string& name) const {
  for (const auto& weak : children_) {
    const boost::shared_ptr<FakeSettings> one = weak.lock();
    if (one && one->name_ == name) return one;
  }
  return {};
}

SettingsPtr FakeSettings::getChild(const std::string& name) const {
  fakeHost().called("getChild", name);
  return child(name);
}

std::vector<SettingsPtr> FakeSettings::getChildren() const {
  fakeHost().called("getChildren");
  std::vector<SettingsPtr> all;
  for (const auto& weak : children_) all.push_back(weak.lock());
  return all;
}

SettingsPtr FakeSettings::getParent() const {
  mayFail("getParent");
  return parent_;
}

bool FakeSettings::isKey() const {
  mayFail("isKey");
  return isKey_;
}

void FakeSettings::copySubtree(const SettingsPtr& source, const std::string& name) {
  fakeHost().called("copySubtree", "to " + name_ + " from " +
                                       (source ? source->getName() : "null") + " as " + name);
}

bool FakeSettings::canHaveListeners() const {
  mayFail("canHaveListeners");
  return takesListeners;
}

SettingsPtr FakeSettings::getSharedSelf() { return self_.lock(); }

SettingsProblems FakeSettings::setMultiple(const Range& values, const std::string& level, int) {
  fakeHost().called("setMultiple", shown(values) + "\"" + level + "\"");
  return fakeHost().problems;
}

SettingsProblems FakeSettings::validateMultiple(const Range& values, int) const {
  fakeHost().called("validateMultiple", shown(values));
  return fakeHost().problems;
}

zlutil::exchange::IDType FakeSettings::getID() const {
  return zlutil::exchange::IDType(reinterpret_cast<std::uint64_t>(this));
}

void FakeSettings::removeNode(const std::string& name) { fakeHost().called("removeNode", name); }

void FakeSettings::removeKey(const std::string& name) { fakeHost().called("removeKey", name); }

void FakeSettings::attachTo(const SettingsPtr& parent) {
  fakeHost().called("attachTo", name_ + " to " + parent->getName());
}

void FakeSettings::setAny(const std::string& key, const boost::any& value,
                          const std::string& level) {
  fakeHost().called("setAny", key + " " + test::shown(value) + " \"" + level + "\"");
}

}  // namespace test

using test::fakeHost;
using test::FakeSettings;

void utPrintf(const char* format, ...) {
  char line[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  fakeHost().printed.push_back(line);
}

// The environment may refuse a variable, as it does when there is no memory.
extern "C" int setenv(const char* name, const char* value, int overwrite) noexcept {
  if (fakeHost().ignoresSetenv) return -1;
  using Function = int (*)(const char*, const char*, int);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "setenv"));
  return real(name, value, overwrite);
}

namespace zlutil {
namespace settings {

boost::shared_ptr<Settings> Settings::getSettingsRoot(const contextmgr::ZcrID& context) {
  fakeHost().called("getSettingsRoot", std::to_string(context.value()));
  return fakeHost().root;
}

boost::shared_ptr<Settings> detail::NameToObjectTransformer::operator()(const std::string& path) {
  boost::shared_ptr<Settings> found = start_->findDescendant({path});
  if (!found) problems_.emplace_back(path, "absent");
  return found;
}

boost::shared_ptr<Settings> Settings::importAsStandaloneObject(const base::ustring& path) {
  fakeHost().called("importAsStandaloneObject", base::codecvt_ustring_to_string(path, "UTF-8"));
  return fakeHost().root;
}

boost::shared_ptr<Settings> ZSettings::createSettingsNode(const std::string& name, bool isKey,
                                                          bool mayHaveListeners,
                                                          const ValidatorChoice& validator) {
  std::string arguments = name + (isKey ? " key" : " node") + (mayHaveListeners ? " true" : "");
  if (const auto* java = boost::get<JValidator>(&validator)) {
    arguments += " " + java->first() + "," + java->second();
  }
  fakeHost().called("createSettingsNode", arguments);
  if (fakeHost().makesNothing) return {};
  return FakeSettings::make(name, isKey, nullptr);
}

std::string ZSettings::getFactoryDir(const contextmgr::ZcrID& context) {
  return "factory of " + std::to_string(context.value());
}

void JValidator::setJValProxy(const Proxy& proxy) {
  fakeHost().called("setJValProxy", proxy ? "" : "nothing");
}

void JValidator::clearFunctions() { fakeHost().called("clearFunctions"); }

}  // namespace settings
}  // namespace zlutil
