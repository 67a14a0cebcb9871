// Parses the bytes of a settings file (docs/settings-file.md) into entries of a new tree, which the
// caller then owns. One parser reads one file, on one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "host/tree/node.h"

namespace zlutil::settings::host {

struct ParseRules {
  TreePtr tree;                   // the tree of the new entries
  int level = kFactory;           // of values that name no level
  bool isOnlyLevel = false;       // whether other levels are refused
  const Node* earlier = nullptr;  // the root of earlier files, with which kinds must agree, or null
  // Called for each value, with the position of its element; both count from 1.
  std::function<void(const Key& key, std::uint64_t line, std::uint64_t column)> onValue;
  // Called for each key with a former path, which is below the root.
  std::function<void(const Key& key, const std::string& former)> onFormerPath;
  // Takes the messages, with position, of doubtful parts that are read all the same. Narrow texts.
  std::function<void(const std::string& message)> onDoubt;
  // Takes the messages of mistakes that parsing can go on after, which then are no failures.
  std::function<void(const std::string& message)> onMistake;
};

class SettingsParser {
 public:
  // `shownName` is the file's name in failures.
  SettingsParser(const ParseRules& rules, const std::string& shownName);
  ~SettingsParser();

  // Returns a buffer for the next `size` bytes of the file, borrowed until parse().
  void* buffer(std::size_t size);

  // Parses the first `size` bytes of the buffer. Throws SaxParseException, with line and column, if
  // the format does not allow them, and SaxUnknownException for other errors of the XML parser.
  void parse(std::size_t size, bool isLast);

  // Returns the root; call it after the last parse().
  NodePtr takeRoot();

 private:
  class Handler;
  const std::unique_ptr<Handler> handler_;
};

}  // namespace zlutil::settings::host
