#include "host/user_store/user_store_stamp.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "host/user_store/user_store_files.h"

namespace zlutil::settings::host {
namespace {

constexpr int kDigits = 19;
constexpr int kLine = 2 * (kDigits + 1);

}  // namespace

UserStoreStamp::UserStoreStamp(const std::string& file) : descriptor_(openOrMakeFile(file)) {}

void UserStoreStamp::note(std::int64_t revision) {
  char line[kLine + 1];
  const auto number = static_cast<long long>(revision);
  std::snprintf(line, sizeof line, "%0*lld %0*lld\n", kDigits, number, kDigits, number);
  // A failure is ignored; the header names its consequences.
  if (pwrite(descriptor_.get(), line, kLine, revision % kStampLines * kLine) != kLine) return;
}

std::int64_t UserStoreStamp::last() const {
  char text[kStampLines * kLine];
  const ssize_t size = pread(descriptor_.get(), text, sizeof text, 0);
  std::int64_t last = 0;
  for (const char* line = text; line + kLine <= text + size; line += kLine) {
    const std::string_view first(line, kDigits), second(line + kDigits + 1, kDigits);
    std::int64_t revision = 0;
    std::from_chars(first.data(), first.data() + kDigits, revision);
    if (first == second) last = std::max(last, revision);
  }
  return last;
}

void UserStoreStamp::clear() {
  // After a failure the same revisions are reported missing once more.
  if (ftruncate(descriptor_.get(), 0) != 0) return;
}

}  // namespace zlutil::settings::host
