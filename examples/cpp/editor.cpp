// Starts an editor, changes some of its settings, and ends; the next run finds the changes, and so
// does the one in Java (examples/java/editor).
#include <cstdio>
#include <exception>

#include "editor_settings.h"

namespace {

using Root = boost::shared_ptr<zlutil::settings::Settings>;

void show(const Root& root) {
  std::printf("font size %d, theme %s, recent files", editor::kFontSize.get(root),
              editor::kTheme.get(root).c_str());
  for (const std::string& file : editor::kRecent.get(root)) std::printf(" %s", file.c_str());
  std::printf("\n");
}

}  // namespace

int main() try {
  const Root root = zlutil::settings::Settings::getSettingsRoot(zlutil::contextmgr::BlessedZcrID);
  show(root);
  editor::kFontSize.set(root, editor::kFontSize.get(root) + 2);
  editor::kTheme.set(root, "DARK");
  editor::kRecent.set(root, {"notes.txt", "todo.txt"});
  try {
    editor::kFontSize.set(root, 100);
  } catch (const std::exception&) {
    std::printf("The font size 100 is refused\n");
  }
  show(root);
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
