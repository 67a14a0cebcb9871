// Any bytes that a cluster answers, an administrator writes or a copy has either become changes of
// a tree or are refused; nothing crashes, hangs or leaks. The first byte chooses the reader.
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "host/shared_store/key_layout.h"
#include "host/shared_store/line_splitter.h"
#include "host/shared_store/local_copy.h"
#include "host/shared_store/setting_document.h"
#include "host/shared_store/write_plan.h"

namespace {

using namespace zlutil::settings::host;

constexpr char kAddress[] = "https://a:1,https://b:1/p";

KeyReader& reader() {
  static KeyReader instance("/p/", [](const std::string&, const std::string&) {});
  return instance;
}

void readItem(const KeyValue& item, bool isDeletion) {
  if (isDeletion) {
    reader().readDeletion(item);
  } else {
    reader().read(item, item.created == item.modified);
  }
}

void readWatch(const std::string& text) {
  LineSplitter lines(1 << 16);
  lines.feed(text);
  lines.finish();
  for (const std::string& line : lines.take()) {
    const auto answer = parseWatch(line);
    if (!answer) continue;
    for (const WatchEvent& event : answer->events) readItem(event.item, event.isDeletion);
  }
}

void readAnswer(const std::string& text) {
  parseError(text);
  parseToken(text);
  if (const auto answer = parseTxn(text)) {
    for (const KeyValue& item : answer->found) readItem(item, false);
  }
  if (const auto answer = parseRange(text)) {
    for (const KeyValue& item : answer->found) readItem(item, false);
  }
}

// A document that is read and written again is the same document.
void readDocument(const std::string& text) {
  std::string reason;
  const auto document = parseDocument(text, reason);
  if (!document) return;
  changesOf("a.b", *document);
  const std::string written = textOf(*document, {"u", "t", "m"});
  const auto again = parseDocument(written, reason);
  if (!again || textOf(*again, {"u", "t", "m"}) != written) std::abort();
}

void readAddress(const std::string& text) {
  try {
    parseClusterAddress(text);
  } catch (const std::invalid_argument&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  static const ClusterAddress address = parseClusterAddress(kAddress);
  std::string reason;
  reader().clear();
  switch (data[0] % 5) {
    case 0:
      readWatch(text);
      break;
    case 1:
      readAnswer(text);
      break;
    case 2:
      readDocument(text);
      break;
    case 3:
      readAddress(text);
      break;
    default:
      parseCopy(text, address, reason);
  }
  return 0;
}
