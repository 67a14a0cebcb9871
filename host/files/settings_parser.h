// Turns the bytes of a settings file (docs/settings-file.md) into entries. The tree that comes out
// is nobody else's yet; the caller hands it on. One parser reads one file, on one thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "host/tree/node.h"

namespace zlutil::settings::host {

struct ParseRules {
  TreePtr tree;                   // the tree of the new entries
  int level = kFactory;           // of values that name no level
  bool isOnlyLevel = false;       // whether other levels are refused
  const Node* earlier = nullptr;  // the root of earlier files, with which kinds must agree, or null
};

class SettingsParser {
 public:
  // `shownName` names the file in failures.
  SettingsParser(const ParseRules& rules, const std::string& shownName);
  ~SettingsParser();

  // A place for up to `size` bytes of the file; borrowed until they are parsed.
  void* buffer(std::size_t size);

  // Parses the first `size` bytes in the buffer. Throws SaxParseException with line and column for
  // what the format does not allow, SaxUnknownException for anything else out of the XML parser.
  void parse(std::size_t size, bool isLast);

  // The root, once the last bytes have been parsed.
  NodePtr takeRoot();

 private:
  class Handler;
  const std::unique_ptr<Handler> handler_;
};

}  // namespace zlutil::settings::host
