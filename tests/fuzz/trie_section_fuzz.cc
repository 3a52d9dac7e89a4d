#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "common/error.h"
#include "tests/trie_exercise.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"

// The input is the section of a trie in a file. It is either refused, and then
// the trie holds what it did, or it can be used in every way; one that is sound
// survives a rewrite with the same keys (trie_exercise.h).

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  using namespace urldb;
  const std::string_view section(reinterpret_cast<const char*>(data), size);
  DoubleArray trie(16, 0);
  trie.add("kept", 4711);
  try {
    readSection(&trie, section);
  } catch (const ErrException& error) {
    switch (error.getErrCode()) {
      case ERR_CANT_READ_FILE:
      case ERR_INVALID_DATA:
      case ERR_INVALID_FILE:
      case ERR_INVALID_VERSION:
        break;
      default:
        fail(error.getMessage());
    }
    if (keysOf(trie) != Keys({{"kept", 4711}})) fail("a refusal changed it");
    return 0;
  }
  const std::string wrong = TrieExercise(&trie).run();
  if (!wrong.empty()) fail(wrong.c_str());
  return 0;
}
