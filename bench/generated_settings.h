// Settings files of a given size for the benchmarks: nodes of 100 keys each, of several types,
// about 43 bytes of text per key.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <string>

namespace bench {

inline constexpr int kKeysPerNode = 100;

inline std::string nodeName(int node) { return "node" + std::to_string(node); }
inline std::string keyName(int key) { return "k" + std::to_string(key); }

inline std::string generatedSettings(int keys) {
  std::string text = "<settings version=\"1\">\n";
  for (int key = 0; key < keys; ++key) {
    if (key % kKeysPerNode == 0) text += "<node name=\"" + nodeName(key / kKeysPerNode) + "\">\n";
    text += "<key name=\"" + keyName(key % kKeysPerNode) + "\" type=\"";
    const std::string number = std::to_string(key);
    switch (key % 4) {
      case 0:
      case 1:
        text += "int\"><value>" + number;
        break;
      case 2:
        text += "string\"><value>v" + number;
        break;
      default:
        text += "double\"><value>" + number + ".5";
    }
    text += "</value></key>\n";
    if (key % kKeysPerNode == kKeysPerNode - 1 || key == keys - 1) text += "</node>\n";
  }
  return text + "</settings>\n";
}

// A generated file on disk, removed at the end.
class SettingsOnDisk {
 public:
  explicit SettingsOnDisk(int keys) {
    const int file = mkstemp(&path_[0]);
    if (file < 0) throw std::runtime_error("cannot make " + path_);
    close(file);
    std::ofstream(path_, std::ios::binary) << generatedSettings(keys);
  }
  ~SettingsOnDisk() { unlink(path_.c_str()); }
  SettingsOnDisk(const SettingsOnDisk&) = delete;
  SettingsOnDisk& operator=(const SettingsOnDisk&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_ = "/tmp/settings-bench.XXXXXX";
};

}  // namespace bench
