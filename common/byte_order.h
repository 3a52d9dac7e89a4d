#ifndef URLDB_COMMON_BYTE_ORDER_H_
#define URLDB_COMMON_BYTE_ORDER_H_

namespace urldb {

// Files hold 32-bit integers in big-endian order, memory in little-endian
// order; the swap between the two is its own inverse.

// `v` with its four bytes in reverse order.
constexpr unsigned convEndian(unsigned v) {
  return v << 24 | (v & 0xFF00) << 8 | (v >> 8 & 0xFF00) | v >> 24;
}

// Reverses the bytes of each of `count` 32-bit integers in place. `array` needs
// no alignment and may be null when there are none.
void convEndian(void* array, unsigned count);

}  // namespace urldb

#endif  // URLDB_COMMON_BYTE_ORDER_H_
