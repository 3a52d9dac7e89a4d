#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/benches.h"
#include "common/file_descriptor.h"
#include "urldb/double_array.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr int kIterations = 10;

using Words = std::unique_ptr<uint32_t[]>;

Words readAndSwap(const std::string& path) {
  const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!fd.valid() || ::fstat(fd.get(), &status) != 0)
    throw std::runtime_error("cannot open " + path);
  const auto size = static_cast<std::size_t>(status.st_size);
  const std::size_t count = size / sizeof(uint32_t);
  Words words(new uint32_t[count + 1]);  // left uninitialised
  if (::read(fd.get(), words.get(), size) != status.st_size)
    throw std::runtime_error("cannot read " + path);
  for (std::size_t i = 0; i < count; ++i)
    words[i] = __builtin_bswap32(words[i]);
  benchmark::ClobberMemory();
  return words;
}

// `open` makes the file ready; releasing what it gives is out of the time.
template <class Open>
void registerOpen(const std::string& file, const char* contender, Open open) {
  const std::string name = "BM_Open/" + file + '/' + contender;
  benchmark::RegisterBenchmark(name.c_str(), [open](benchmark::State& state) {
    for (auto unused : state) {
      auto opened = open();
      state.PauseTiming();
      opened.reset();
      state.ResumeTiming();
    }
  })->Iterations(kIterations);
}

}  // namespace

void registerOpenBenches(const std::string& triePath,
                         const std::string& databasePath) {
  const auto baseline = [](const std::string& path) {
    return [path] { return readAndSwap(path); };
  };
  registerOpen("trie", "read_and_swap", baseline(triePath));
  registerOpen("trie", "double_array", [triePath] {
    auto trie = std::make_unique<DoubleArray>(10240, 3);
    trie->readFile(triePath.c_str());
    return trie;
  });
  registerOpen("database", "read_and_swap", baseline(databasePath));
  registerOpen("database", "urldb", [databasePath] {
    auto db = std::make_unique<URLDB>();
    if (db->openFile(databasePath.c_str(), nullptr, 0, true) < 0)
      throw std::runtime_error("cannot open " + databasePath);
    return db;
  });
}

}  // namespace urldb
