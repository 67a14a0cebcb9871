// The copy of the level on this machine, for the time without the network: a file in the user's
// directory, which all processes of the user write. It has
//
//   a line of JSON: the format's version, the cluster's identity, its members, the prefix and the
//   revision that the copy has
//   a line for each key, in their order: its revision, the key below the prefix, its value in
//   base64
//   a last line: "end", the number of keys and a checksum of all before
//
// Its name has a checksum of the members and the prefix, so that each cluster has a file of its
// own. The file's time is that at which the copy was last known to be current. One thread.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "host/shared_store/cluster_options.h"
#include "host/shared_store/etcd_messages.h"

namespace zlutil::settings::host {

struct CopiedContent {
  AnswerHeader header;
  std::vector<KeyValue> items;
};

// Parses the text of a copy. Returns nothing, with `reason`, if it is torn or that of another
// cluster or prefix. The keys are whole.
std::optional<CopiedContent> parseCopy(std::string_view text, const ClusterAddress& address,
                                       std::string& reason);

class LocalCopy {
 public:
  // No copy is kept if the directory is "".
  LocalCopy(const std::string& directory, const ClusterAddress& address);

  // Returns the copy; nothing if there is none. Reports one that is ignored.
  std::optional<CopiedContent> read() const;
  // Returns how old the copy is, as text.
  std::string age() const;

  // From now on the copy is to have this content, and then the changes that are noted.
  void replace(const AnswerHeader& header, const std::vector<KeyValue>& items);
  void note(const AnswerHeader& header, const std::vector<WatchEvent>& events);
  // Writes the noted changes, unless that was done a moment ago. Reports the first failure.
  void writeIfDue(std::chrono::steady_clock::time_point now);
  // Writes them now.
  void writeNoted();
  // Returns whether replace() is needed, because the file is not the one that the changes are of.
  bool needsContent() const { return needsContent_; }

 private:
  struct Noted {
    std::int64_t modified;
    std::optional<std::string> value;  // none if the key is gone
  };

  void write(const std::string& text) const;
  void writeAll(const std::vector<KeyValue>& items) const;
  void touchIfDue(std::chrono::steady_clock::time_point now);
  void reportOnce(const std::exception& failure);
  std::string_view keyBelow(std::string_view key) const;
  void merge();
  std::string headerLine() const;

  const ClusterAddress address_;
  const std::string file_;              // "" if there is none
  AnswerHeader header_;                 // of the content with the noted changes
  std::int64_t written_ = 0;            // the revision from which on changes are noted
  std::map<std::string, Noted> noted_;  // by the key below the prefix
  std::chrono::steady_clock::time_point nextWrite_, nextTouch_;
  bool isCurrent_ = false;  // the file has had the content, and then the changes up to noted_
  bool needsContent_ = false;
  bool hasFailed_ = false;
};

}  // namespace zlutil::settings::host
