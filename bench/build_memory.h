#ifndef URLDB_BENCH_BUILD_MEMORY_H_
#define URLDB_BENCH_BUILD_MEMORY_H_

#include <cstddef>
#include <string>

namespace urldb {

struct BuildMemory {
  double peak;  // bytes
  double file;  // bytes
};

// Builds a database of the keys of readKeys(), in list order, and writes it to
// a file, in a process of its own. `peak` is by how much its resident memory
// rose at most: over what it was when all key texts were read and the freed
// memory given back, up to the end of the writing. So everything that the
// engine holds counts (trie, its index of free cells, TAIL, URL index,
// repository, the copies made for writing), and so do the fresh pages of the
// program itself and a table of 4 bytes a key that the benchmark keeps; the key
// texts do not. Call it while the process is small. Throws std::runtime_error.
BuildMemory measureBuildMemory(const std::string& lists, std::size_t mostKeys);

}  // namespace urldb

#endif  // URLDB_BENCH_BUILD_MEMORY_H_
