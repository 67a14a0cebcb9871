#include "service/console.h"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "base/text.h"

void utPrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? length : 0, '\0');
  if (length > 0) std::vsnprintf(&text[0], text.size() + 1, format, again);
  va_end(again);
  const std::string shown = base::displayFromNarrow(text);
  std::fwrite(shown.data(), 1, shown.size(), stdout);
  std::fflush(stdout);
}
