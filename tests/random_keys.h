#ifndef URLDB_TESTS_RANDOM_KEYS_H_
#define URLDB_TESTS_RANDOM_KEYS_H_

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace urldb {

// Seeded random numbers and keys, the same on every run.
class RandomKeys {
 public:
  explicit RandomKeys(unsigned seed) : engine_(seed) {}

  // 0 to `n` - 1.
  int below(int n) {
    return static_cast<int>(engine_() % static_cast<unsigned>(n));
  }

  // 0 to `longest` bytes out of `alphabet`.
  std::string key(std::string_view alphabet, int longest) {
    std::string text;
    for (int n = below(longest + 1); n > 0; --n) {
      text += alphabet[static_cast<std::size_t>(
          below(static_cast<int>(alphabet.size())))];
    }
    return text;
  }

 private:
  std::mt19937 engine_;
};

// All bytes that a key may hold: 1 to 255 but for the terminal byte.
inline std::string everyKeyByte() {
  std::string bytes;
  for (int c = 1; c < 256; ++c) {
    if (c != 127) bytes += static_cast<char>(c);
  }
  return bytes;
}

}  // namespace urldb

#endif  // URLDB_TESTS_RANDOM_KEYS_H_
