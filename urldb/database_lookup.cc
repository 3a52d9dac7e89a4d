#include "urldb/database_lookup.h"

#include "common/error.h"
#include "urldb/database_view.h"

namespace urldb {

MatchMode matchModeOf(int modeWord) {
  switch (modeWord) {
    case static_cast<int>(MatchMode::kExact):
      return MatchMode::kExact;
    case static_cast<int>(MatchMode::kAnyByte):
      return MatchMode::kAnyByte;
    default:
      return MatchMode::kEdge;
  }
}

int* lookupKey(const URLDB& db, const char* key, MatchMode mode,
               KeyMatch* match) {
  if (match != nullptr) *match = {};
  const DoubleArray* const trie = viewOf(db).trie;
  if (trie == nullptr) return nullptr;
  if (key == nullptr || *key == '\0')
    throw ErrException(ERR_INVALID_ARGUMENT, 3004, "lookupKey()");
  const KeyMatch found = matchKey(*trie, key, mode);
  int* const list = db.searchRepository(found.id);
  if (match != nullptr) *match = found;
  return list;
}

}  // namespace urldb
