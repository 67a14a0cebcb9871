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
// Offsets in the first page of a database.
constexpr std::size_t kDatabaseHeader = 100, kPageSizeAt = 16, kFormatAt = 18,
                      kChangeCounterAt = 24, kDatabaseSizeAt = 28;
constexpr char kRollbackFormat = 1;

std::uint32_t number(std::string_view bytes, std::size_t position, int size = 4) {
  std::uint32_t result = 0;
  for (int byte = 0; byte < size; ++byte) {
    result = result << 8 | static_cast<unsigned char>(bytes[position + byte]);
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
  for (std::size_t i = page.size() - 200; i > 0 && i < page.size(); i -= 200) {
    nonce += static_cast<unsigned char>(page[i]);
  }
  return nonce;
}

// Reads the pages of a journal, which come in segments with a header each.
class Journal {
 public:
  explicit Journal(std::string_view bytes) : bytes_(bytes) {
    while (isWhole_ && position_ + kHeader <= bytes_.size() &&
           bytes_.substr(position_, 8) == kMagic) {
      readSegment();
    }
  }

  bool isWhole() const {
    return isWhole_ && (!firstPage_ || number(*firstPage_, kDatabaseSizeAt) == databaseSize_);
  }
  std::uint32_t pageSize() const { return pageSize_; }
  // Returns the old first page of the database, or nothing if the transaction did not reach it.
  const std::optional<std::string_view>& firstPage() const { return firstPage_; }

 private:
  void readSegment() {
    std::uint32_t pages = number(bytes_, position_ + 8);
    databaseSize_ = number(bytes_, position_ + 16);
    const std::uint32_t nonce = number(bytes_, position_ + 12),
                        sector = number(bytes_, position_ + 20);
    pageSize_ = number(bytes_, position_ + 24);
    if (!isPageSize(pageSize_) || sector < kHeader || sector > kLargestPage ||
        (sector & (sector - 1)) != 0 || bytes_.size() - position_ < sector) {
      isWhole_ = false;
      return;
    }
    position_ += sector;
    const std::size_t record = 4 + pageSize_ + 4;
    if (pages == kToTheEnd)
      pages = static_cast<std::uint32_t>((bytes_.size() - position_) / record);
    for (; isWhole_ && pages > 0; --pages, position_ += record) readPage(record, nonce);
    position_ = (position_ + sector - 1) / sector * sector;
  }

  void readPage(std::size_t record, std::uint32_t nonce) {
    if (position_ + record > bytes_.size()) {
      isWhole_ = false;
      return;
    }
    const std::string_view page = bytes_.substr(position_ + 4, pageSize_);
    isWhole_ = number(bytes_, position_ + 4 + pageSize_) == checksum(nonce, page);
    if (number(bytes_, position_) == 1 && !firstPage_) firstPage_ = page;
  }

  const std::string_view bytes_;
  std::size_t position_ = 0;
  bool isWhole_ = true;
  std::uint32_t pageSize_ = 0, databaseSize_ = 0;
  std::optional<std::string_view> firstPage_;
};

// Every transaction increments the change counter in the first page, and writes that page last.
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
  // A complete transaction overwrites the header with zeros; one that has changed nothing has not
  // written it yet.
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
  return header.size() == kDatabaseHeader && header[kFormatAt] == kRollbackFormat;
}

}  // namespace zlutil::settings::host
