// Writing a settings file, beside its floor: as many bytes written to a new file, flushed to the
// disk, put in the old one's place, and the directory flushed.
#include <benchmark/benchmark.h>
#include <fcntl.h>

#include <cstdlib>
#include <filesystem>

#include "bench/generated_settings.h"
#include "service/settings.h"
#include "service/settings_file.h"

namespace {

using zlutil::settings::Settings;
using zlutil::settings::SettingsFile;

// A directory on a disk, as far as there is one.
class Directory {
 public:
  Directory() {
    if (!mkdtemp(&path_[0])) throw std::runtime_error("cannot make " + path_);
  }
  ~Directory() { std::filesystem::remove_all(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  std::string file(const char* name) const { return path_ + "/" + name; }

 private:
  std::string path_ = "/var/tmp/settings-bench.XXXXXX";
};

void writeSettings(benchmark::State& state) {
  const bench::SettingsOnDisk source(static_cast<int>(state.range(0)));
  const auto tree = Settings::importAsStandaloneObject(base::to_ustring(source.path()));
  const Directory directory;
  const auto file = base::to_ustring(directory.file("settings.xml"));
  for (auto _ : state) SettingsFile::write(tree, {"factory"}, file);
}

void flushed(int file) {
  if (file < 0 || fsync(file) != 0) throw std::runtime_error("cannot flush");
  close(file);
}

void floorWriteAndReplace(benchmark::State& state) {
  const std::string text = bench::generatedSettings(static_cast<int>(state.range(0)));
  const Directory directory;
  const std::string name = directory.file("settings.xml"), fresh = directory.file("new");
  for (auto _ : state) {
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      throw std::runtime_error("cannot write");
    }
    flushed(file);
    std::filesystem::rename(fresh, name);
    flushed(open(directory.file("").c_str(), O_RDONLY | O_DIRECTORY));
  }
}

BENCHMARK(writeSettings)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(floorWriteAndReplace)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
