#ifndef URLDB_TESTS_TRIE_SECTION_H_
#define URLDB_TESTS_TRIE_SECTION_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/file_descriptor.h"
#include "common/file_io.h"
#include "tests/tiny_database.h"
#include "urldb/double_array.h"
#include "urldb/key_enumerator.h"

namespace urldb {

// A descriptor at the begin of a file in memory that holds `bytes`.
inline FileDescriptor memoryFile(std::string_view bytes = {}) {
  FileDescriptor file(memfd_create("section", MFD_CLOEXEC));
  if (!file.valid()) throw std::runtime_error("memfd_create");
  writeFully(file.get(), bytes.data(), bytes.size(), 0);
  lseek(file.get(), 0, SEEK_SET);
  return file;
}

// All bytes of a file, whose position stays.
inline std::string bytesOf(int fd) {
  std::string bytes;
  char block[4096];
  for (ssize_t n = 0; (n = pread(fd, block, sizeof block,
                                 static_cast<off_t>(bytes.size()))) > 0;) {
    bytes.append(block, static_cast<std::size_t>(n));
  }
  return bytes;
}

// The section that the trie writes.
inline std::string sectionOf(DoubleArray& trie) {
  const FileDescriptor file = memoryFile();
  trie.writeFile(file.get());
  return bytesOf(file.get());
}

inline void readSection(DoubleArray* trie, std::string_view section) {
  trie->readFile(memoryFile(section).get());
}

using Keys = std::map<std::string, int>;

// Every key of the trie as it enumerates them.
inline Keys keysOf(const DoubleArray& trie) {
  Keys keys;
  for (KeyEnumerator all(trie); all.next();) keys[all.key()] = all.id();
  return keys;
}

// A section in its fields, so that a test can damage one of them.
struct TrieSection {
  std::string magic = "_DYNAMIC_AC_";
  int32_t marker = 1;
  int32_t version = 4;
  int32_t status = 0x21;
  int32_t convMode = 0;
  int32_t size = 1;  // DA_SIZE
  int32_t emptyHead = 1;
  int32_t emptyTail = 1;
  int32_t posTail = 1;
  std::vector<int32_t> base = {1, 1};
  std::vector<int32_t> check = {0, -2};
  std::string tail = std::string(2, '\0');  // identifiers in big-endian order

  // That of an empty trie.
  TrieSection() = default;

  // That of `trie`, compacted.
  static TrieSection of(DoubleArray& trie) {
    TrieSection section;
    const std::string bytes = sectionOf(trie);
    const TrieView view = trie.view();
    section.convMode = view.convMode;
    section.size = view.size;
    section.emptyHead = view.emptyHead;
    section.emptyTail = view.emptyTail;
    section.posTail = view.posTail;
    section.base.assign(view.base, view.base + view.size + 1);
    section.check.assign(view.check, view.check + view.size + 1);
    section.tail =
        bytes.substr(bytes.size() - static_cast<std::size_t>(view.posTail) - 1);
    return section;
  }

  std::string bytes() const {
    std::string bytes = magic + words({marker, version, status, convMode, size,
                                       emptyHead, emptyTail, posTail});
    for (const int32_t v : base) bytes += word(v);
    for (const int32_t v : check) bytes += word(v);
    return bytes + tail;
  }
};

}  // namespace urldb

#endif  // URLDB_TESTS_TRIE_SECTION_H_
