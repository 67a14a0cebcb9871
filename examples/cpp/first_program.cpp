// The first program of docs/cpp-application.md: reads and sets one value of the process's tree.
#include <cstdio>
#include <exception>

#include "service/settings.h"

int main() try {
  namespace settings = zlutil::settings;

  const auto root = settings::Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID);
  std::printf("Font size %d\n", root->get<int>("editor.fontSize"));
  root->set("editor.fontSize", 14);
  std::printf("Font size %d\n", root->get<int>("editor.fontSize"));
  const auto theme = root->find<std::string>("editor.theme", "user");
  std::printf("Theme of the user: %s\n", theme ? theme->c_str() : "none");
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
