// Settings files for the benchmarks: nodes of 100 keys each, of several types, with about 43 bytes
// of text for each key.
#pragma once

#include <fstream>
#include <string>

#include "bench/names.h"
#include "bench/temporary_directory.h"

namespace bench {

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

// A generated settings file on the disk; the destructor removes it.
class SettingsOnDisk {
 public:
  explicit SettingsOnDisk(int keys) {
    std::ofstream(path_, std::ios::binary) << generatedSettings(keys);
  }

  const std::string& path() const { return path_; }

 private:
  const TemporaryDirectory directory_;
  const std::string path_ = directory_.path() + "/generated.xml";
};

}  // namespace bench
