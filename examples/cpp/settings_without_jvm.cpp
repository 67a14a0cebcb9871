// Uses the settings service in a C++ program without a JVM: loads a settings file, reads and sets
// values, has a validator refuse one, commits several as one transaction, and listens to the
// changes.
//
//   settings_without_jvm FILE     with examples/cpp/editor.xml as FILE, for instance
#include <cstdio>
#include <exception>

#include "service/console.h"
#include "service/events.h"
#include "service/failures.h"
#include "service/settings.h"
#include "service/z_settings.h"

namespace {

using zlutil::settings::CValidator;
using zlutil::settings::Settings;
using zlutil::settings::SettingsProblems;
using zlutil::settings::SettingsValueChangeEvent;
using zlutil::settings::ZSettings;

// A validator: returns none for a valid value, else the reason why it is refused.
boost::optional<std::string> checkZoom(const boost::shared_ptr<const Settings>&,
                                       const std::string& key, const boost::any& value) {
  if (boost::any_cast<double>(value) > 0) return boost::none;
  return key + " must be greater than 0";
}

void print(const SettingsProblems& problems) {
  if (problems.empty()) utPrintf("  no problems\n");
  for (const auto& [path, reason] : problems) {
    utPrintf("  %s: %s\n", path.c_str(), reason.c_str());
  }
}

void run(const std::string& file) {
  const boost::shared_ptr<Settings> root =
      Settings::importAsStandaloneObject(base::to_ustring(file));
  const boost::shared_ptr<Settings> editor = root->getChild("editor");

  // A listener on a node receives the changes of all keys below it until the connection is closed.
  const zlutil::eventmgr::ScopedConnection connection(
      root->addListener<SettingsValueChangeEvent>([](const SettingsValueChangeEvent& event) {
        utPrintf("  changed: %s\n", event.getObj()->getPath().c_str());
      }));

  utPrintf("The effective font size is %d.\n", root->get<int>("editor.fontSize"));
  utPrintf("Setting it for this user:\n");
  root->set("editor.fontSize", 14);
  utPrintf("The theme is %s.\n", editor->find<std::string>("theme").value_or("not set").c_str());

  utPrintf("Adding a key with a validator:\n");
  const boost::shared_ptr<Settings> zoom =
      ZSettings::createSettingsNode("zoom", true, true, CValidator(&checkZoom));
  zoom->attachTo(editor);
  editor->set("zoom", 1.5);
  try {
    editor->set("zoom", -1.0, "session");
  } catch (const IUserException& refusal) {
    utPrintf("  refused: %s\n", refusal.GetMessageTxt().c_str());
  }

  std::vector<std::pair<std::string, boost::any>> changes = {
      {editor->getChild("fontSize")->getPath(), 16}, {zoom->getPath(), 0.0}};
  utPrintf("Validating two changes:\n");
  print(root->multipleValidate(changes.begin(), changes.end()));
  changes[1].second = 2.0;
  utPrintf("Committing them, with the second one corrected:\n");
  print(root->multipleSet(changes.begin(), changes.end(), "user"));
  utPrintf("The effective font size is %d.\n", editor->get<int>("fontSize"));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 2;
  }
  try {
    run(argv[1]);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  return 0;
}
