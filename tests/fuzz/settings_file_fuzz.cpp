// Any bytes given as a settings file either become a tree, which then comes back the same when it
// is written and read again, or are refused with a place; nothing crashes, hangs or leaks.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/files/settings_parser.h"
#include "host/files/settings_writer.h"
#include "service/failures.h"

namespace {

using namespace zlutil::settings::host;
using KORVEN::settings::core::SaxParseException;
using zlutil::settings::Failure;

// Small pieces, so that everything is also seen cut in two.
constexpr std::size_t kPiece = 64;

NodePtr parse(const char* data, std::size_t size) {
  ParseRules rules;
  rules.tree = Tree::makeStandalone();
  SettingsParser parser(rules, "fuzz");
  while (size > 0) {
    const std::size_t piece = std::min(size, kPiece);
    std::memcpy(parser.buffer(piece), data, piece);
    parser.parse(piece, false);
    data += piece;
    size -= piece;
  }
  parser.buffer(1);
  parser.parse(0, true);
  return parser.takeRoot();
}

std::string write(const Node& root) {
  ReadLock lock(root.tree().lock());
  return settingsText(root, LevelSet().set());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NodePtr root;
  try {
    root = parse(reinterpret_cast<const char*>(data), size);
  } catch (const Failure<SaxParseException>&) {
    return 0;
  }
  const std::string text = write(*root);
  if (write(*parse(text.data(), text.size())) != text) {
    std::fprintf(stderr, "not the same when read again:\n%s", text.c_str());
    std::abort();
  }
  return 0;
}
