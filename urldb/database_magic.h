#ifndef URLDB_URLDB_DATABASE_MAGIC_H_
#define URLDB_URLDB_DATABASE_MAGIC_H_

#include <cstddef>

namespace urldb {

// The characters with which every database file begins, without a NUL.
inline constexpr char kDatabaseMagic[] = "_URL_DATABASE_";
inline constexpr std::size_t kDatabaseMagicSize = sizeof kDatabaseMagic - 1;

}  // namespace urldb

#endif  // URLDB_URLDB_DATABASE_MAGIC_H_
