#include "bench/build_memory.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bench/benches.h"
#include "tests/temporary_folder.h"

namespace urldb {
namespace {

// A line of /proc/self/status, in bytes.
double statusBytes(const std::string& label) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(label + ":", 0) == 0)
      return 1024 * std::strtod(line.c_str() + label.size() + 1, nullptr);
  }
  throw std::runtime_error("no " + label + " in /proc/self/status");
}

double peakOfBuild(const std::string& lists, std::size_t mostKeys,
                   const std::string& file) {
  const KeySet set = readKeys(lists, mostKeys);
  malloc_trim(0);
  std::ofstream reset("/proc/self/clear_refs");
  reset << 5 << std::flush;  // the peak is what is resident now
  if (!reset) throw std::runtime_error("cannot reset the peak");
  reset.close();
  const double before = statusBytes("VmRSS");
  DatabasePeer peer(set);
  addAll(&peer, set.keys);
  peer.save(file);
  return statusBytes("VmHWM") - before;
}

}  // namespace

BuildMemory measureBuildMemory(const std::string& lists, std::size_t mostKeys) {
  const TemporaryFolder folder;
  const std::string file = folder.path("memory.db");
  const std::string answer = folder.path("peak");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork");
  if (child == 0) {
    int status = 1;
    try {
      const double peak = peakOfBuild(lists, mostKeys, file);
      std::ofstream(answer) << std::fixed << peak;
      status = 0;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "build in a process of its own: %s\n", error.what());
    }
    _exit(status);  // the folder is the parent's
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error("the memory of a build could not be measured");
  BuildMemory memory{};
  std::ifstream(answer) >> memory.peak;
  memory.file = static_cast<double>(std::filesystem::file_size(file));
  return memory;
}

}  // namespace urldb
