#include "host/user_store/rollback_journal.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace zlutil::settings::host {
namespace {

constexpr std::string_view kMagic("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
constexpr std::size_t kHeader = 28;
constexpr std::uint32_t kToTheEnd = 0xFFFFFFFF;
constexpr std::uint32_t kSmallestPage = 512, kLargestPage = 65536;
// Of a database's first page.
constexpr std::size_t kDatabaseHeader = 100, kPageSizeAt = 16, kFormatAt = 18,
                      kChangeCounterAt = 24, kDatabaseSizeAt = 28;
constexpr char kWithoutLog = 1;

std::uint32_t number(std::string_view bytes, std::size_t at, int size = 4) {
  std::uint32_t result = 0;
  for (int byte = 0; byte < size; ++byte) {
    result = result << 8 | static_cast<unsigned char>(bytes[at + byte]);
  }
  return result;
}

std::string read(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string readHeader(const std::string& database) {
  std::ifstream stream(database, std::ios::binary);
  std::string header(kDatabaseHeader, '\0');
  stream.read(header.data(), kDatabaseHeader);
  header.resize(static_cast<std::size_t>(stream.gcount()));
  return header;
}

bool isPageSize(std::uint32_t size) {
  return size >= kSmallestPage && size <= kLargestPage && (size & (size - 1)) == 0;
}

std::uint32_t checksum(std::uint32_t nonce, std::string_view page) {
  for (std::size_t at = page.size() - 200; at > 0 && at < page.size(); at -= 200) {
    nonce += static_cast<unsigned char>(page[at]);
  }
  return nonce;
}

// Reads the pages that a journal has, which stand in segments with a header each.
class Journal {
 public:
  explicit Journal(std::string_view bytes) : bytes_(bytes) {
    while (isWhole_ && at_ + kHeader <= bytes_.size() && bytes_.substr(at_, 8) == kMagic) {
      readSegment();
    }
  }

  bool isWhole() const {
    return isWhole_ && (!firstPage_ || number(*firstPage_, kDatabaseSizeAt) == databaseSize_);
  }
  std::uint32_t pageSize() const { return pageSize_; }
  // The database's first page as it was; nothing when the transaction had not come to it.
  const std::optional<std::string_view>& firstPage() const { return firstPage_; }

 private:
  void readSegment() {
    std::uint32_t pages = number(bytes_, at_ + 8);
    databaseSize_ = number(bytes_, at_ + 16);
    const std::uint32_t nonce = number(bytes_, at_ + 12), sector = number(bytes_, at_ + 20);
    pageSize_ = number(bytes_, at_ + 24);
    if (!isPageSize(pageSize_) || sector < kHeader || sector > kLargestPage ||
        (sector & (sector - 1)) != 0 || bytes_.size() - at_ < sector) {
      isWhole_ = false;
      return;
    }
    at_ += sector;
    const std::size_t record = 4 + pageSize_ + 4;
    if (pages == kToTheEnd) pages = static_cast<std::uint32_t>((bytes_.size() - at_) / record);
    for (; isWhole_ && pages > 0; --pages, at_ += record) readPage(record, nonce);
    at_ = (at_ + sector - 1) / sector * sector;
  }

  void readPage(std::size_t record, std::uint32_t nonce) {
    if (at_ + record > bytes_.size()) {
      isWhole_ = false;
      return;
    }
    const std::string_view page = bytes_.substr(at_ + 4, pageSize_);
    isWhole_ = number(bytes_, at_ + 4 + pageSize_) == checksum(nonce, page);
    if (number(bytes_, at_) == 1 && !firstPage_) firstPage_ = page;
  }

  const std::string_view bytes_;
  std::size_t at_ = 0;
  bool isWhole_ = true;
  std::uint32_t pageSize_ = 0, databaseSize_ = 0;
  std::optional<std::string_view> firstPage_;
};

// Every transaction that changes a database counts on in its first page, and writes that page last.
bool belongs(const Journal& journal, std::string_view header) {
  if (!journal.firstPage() || header.size() < kDatabaseHeader) return true;
  const std::uint32_t size = number(header, kPageSizeAt, 2);
  if ((size == 1 ? kLargestPage : size) != journal.pageSize()) return false;
  const std::uint32_t before = number(*journal.firstPage(), kChangeCounterAt);
  const std::uint32_t now = number(header, kChangeCounterAt);
  return now == before || now == before + 1;
}

}  // namespace

JournalState stateOfJournal(const std::string& journalFile, const std::string& database) {
  const std::string bytes = read(journalFile);
  // A complete transaction overwrites the beginning with zeros; one that has changed nothing yet
  // has not written it.
  const std::string_view begin = std::string_view(bytes).substr(0, kMagic.size());
  if (begin.find_first_not_of('\0') == std::string_view::npos) return JournalState::kEmpty;
  if (bytes.size() < kHeader || begin != kMagic) return JournalState::kDamaged;
  const Journal journal(bytes);
  if (!journal.isWhole()) return JournalState::kDamaged;
  return belongs(journal, readHeader(database)) ? JournalState::kWhole : JournalState::kForeign;
}

bool isForeignLog(const std::string& log, const std::string& database) {
  std::error_code error;
  const auto size = std::filesystem::file_size(log, error);
  if (error || size == 0) return false;
  const std::string header = readHeader(database);
  return header.size() == kDatabaseHeader && header[kFormatAt] == kWithoutLog;
}

}  // namespace zlutil::settings::host
