#include "host/tree/locks.h"

#include "service/failures.h"

namespace zlutil::settings {

using namespace KORVEN::settings::core;

namespace host {

std::optional<SettingLock> lockFor(const Entry& entry) {
  const Entry* const locked = entry.locked();
  if (!locked) return std::nullopt;
  const auto [lock, level] = locked->lock();
  return SettingLock{base::displayFromNarrow(locked->path()), levelName(level),
                     base::displayFromNarrow(lock->reason), base::displayFromNarrow(lock->source)};
}

std::string whyNotWritable(const Entry& entry, int level) {
  const std::string& reason = entry.tree().store(level).readOnlyReason();
  if (!reason.empty() || level >= entry.firstLevel()) return reason;
  const Entry* const locked = entry.locked();
  if (!locked) return "it was locked when it was removed";
  const Lock& lock = *locked->lock().first;
  std::string why = '"' + locked->path() + "\" is locked in " + lock.source;
  if (!lock.reason.empty()) why += ": " + lock.reason;
  if (why.back() == '.') why.pop_back();  // the message has a full stop
  return why;
}

std::optional<int> effectiveLevel(const Key& key) {
  for (int level = key.firstLevel(); level < kLevelCount; ++level) {
    if (!key.value(level).empty()) return level;
  }
  return std::nullopt;
}

}  // namespace host

namespace {

boost::shared_ptr<host::Entry> entryOf(const boost::shared_ptr<Settings>& given) {
  const auto entry = boost::dynamic_pointer_cast<host::Entry>(given);
  if (entry) entry->tree().look();
  return entry;
}

}  // namespace

std::optional<SettingLock> lockOf(const boost::shared_ptr<Settings>& given) {
  const auto entry = entryOf(given);
  if (!entry) return std::nullopt;
  host::ReadLock lock(entry->tree().lock());
  return host::lockFor(*entry);
}

bool isWritable(const boost::shared_ptr<Settings>& given, const std::string& levelText) {
  const int level = host::requireLevel(levelText);
  const auto entry = entryOf(given);
  if (!entry) return false;
  host::ReadLock lock(entry->tree().lock());
  return entry->isAttached() && host::whyNotWritable(*entry, level).empty();
}

std::string effectiveLevelOf(const boost::shared_ptr<Settings>& given) {
  const auto entry = entryOf(given);
  if (!entry) throw Failure<NoSuchKey>(std::string(), std::string());
  if (!entry->isKey()) throw Failure<NotAKeyName>(std::string(), entry->name());
  host::ReadLock lock(entry->tree().lock());
  const std::optional<int> level = host::effectiveLevel(static_cast<const host::Key&>(*entry));
  return level ? host::levelName(*level) : std::string();
}

}  // namespace zlutil::settings
