// Writing a settings file, beside its floor: as many bytes written to a new file, which is flushed
// and renamed to the old one, and the directory flushed.
#include <benchmark/benchmark.h>
#include <fcntl.h>

#include <filesystem>

#include "bench/generated_settings.h"
#include "bench/temporary_directory.h"
#include "service/settings.h"
#include "service/settings_file.h"

namespace {

using zlutil::settings::Settings;
using zlutil::settings::SettingsFile;

void writeSettings(benchmark::State& state) {
  const bench::SettingsOnDisk source(static_cast<int>(state.range(0)));
  const auto tree = Settings::importAsStandaloneObject(base::to_ustring(source.path()));
  const bench::TemporaryDirectory directory;
  const auto file = base::to_ustring(directory.path() + "/settings.xml");
  for (auto _ : state) SettingsFile::write(tree, {"factory"}, file);
}

void flushed(int file) {
  if (file < 0 || fsync(file) != 0) throw std::runtime_error("cannot flush");
  close(file);
}

void floorWriteAndReplace(benchmark::State& state) {
  const std::string text = bench::generatedSettings(static_cast<int>(state.range(0)));
  const bench::TemporaryDirectory directory;
  const std::string name = directory.path() + "/settings.xml", fresh = directory.path() + "/new";
  for (auto _ : state) {
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      throw std::runtime_error("cannot write");
    }
    flushed(file);
    std::filesystem::rename(fresh, name);
    flushed(open(directory.path().c_str(), O_RDONLY | O_DIRECTORY));
  }
}

BENCHMARK(writeSettings)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(floorWriteAndReplace)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
