// The program that is built against each form in which the libraries are delivered. Its output must
// be that of story.txt.
//
//   story FILE     a settings file with the key editor.fontSize
#include <cstdio>
#include <exception>

#include "service/events.h"
#include "service/settings.h"

using zlutil::settings::Settings;
using zlutil::settings::SettingsValueChangeEvent;

int main(int, char** arguments) try {
  const auto root = Settings::importAsStandaloneObject(base::to_ustring(arguments[1]));
  const zlutil::eventmgr::ScopedConnection connection(
      root->addListener<SettingsValueChangeEvent>([](const SettingsValueChangeEvent& event) {
        std::printf("changed: %s\n", event.getObj()->getName().c_str());
      }));
  std::printf("font size %d\n", root->get<int>("editor.fontSize"));
  root->set("editor.fontSize", 14);
  std::printf("font size %d\n", root->get<int>("editor.fontSize"));
  root->set("editor.fontSize", "big");
} catch (const std::exception& refused) {
  std::printf("refused: %s\n", refused.what());
}
