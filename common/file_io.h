#ifndef URLDB_COMMON_FILE_IO_H_
#define URLDB_COMMON_FILE_IO_H_

#include <cstddef>
#include <cstdint>

#include "common/growable_array.h"

namespace urldb {

// Whole transfers on a descriptor, and arrays of big-endian 32-bit integers, as
// the sections of a database file need them. Partial transfers are continued
// and interrupted calls repeated; a transfer of nothing and a failed one are
// errors. Every error carries the `section` of the caller.

// Reads exactly `size` bytes. Throws code 4 when the descriptor ends before
// that.
void readFully(int fd, void* buffer, std::size_t size, int section);

// Writes exactly `size` bytes. Throws code 5 when they cannot all be written.
void writeFully(int fd, const void* buffer, std::size_t size, int section);

// Reads one big-endian integer, as readFully.
int32_t readInteger(int fd, int section);

// Writes one big-endian integer, as writeFully.
void writeInteger(int fd, int32_t value, int section);

// Reads `count` integers or bytes into a new array. A negative count is
// code 25. A count that the rest of a regular file cannot hold is the short
// read it would become, code 4, found before anything is allocated; from a pipe
// the array grows with what has really arrived. Throws code 1 when memory runs
// out.
GrowableArray<int32_t> readIntegers(int fd, int64_t count, int section);
GrowableArray<unsigned char> readBytes(int fd, int64_t count, int section);

// Writes `count` integers in big-endian order. They are swapped in place and
// swapped back on every way out, so `array` must not be read by others
// meanwhile.
void writeIntegers(int fd, int32_t* array, std::size_t count, int section);

}  // namespace urldb

#endif  // URLDB_COMMON_FILE_IO_H_
