// The check before a write, and the report.

#include <cstddef>
#include <new>
#include <ostream>
#include <vector>

#include "common/error.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {
constexpr int kSection = 3004;
}  // namespace

int URLDB::checkList(int urlID, std::vector<int32_t>* checked) const {
  const std::size_t start = listStart(urlID);
  std::size_t end = start;  // behind what is new
  int32_t length = 0;       // from `end` on
  for (bool more = true; more; ++end) {
    if (end < checked->size() && (*checked)[end] != 0) {
      length = (*checked)[end];
      break;
    }
    more = (valueAt(end) & LINK_MASK) != 0;
  }
  for (std::size_t position = end; position-- > start;) {
    const int32_t value = repository_[position] & ~LINK_MASK;
    if (names_ == nullptr)
      throw ErrException(ERR_INVALID_STATUS, kSection, "no database is open");
    names_->getNames(value & 0xFFFF);
    names_->getNames(value >> 16);
    (*checked)[position] = ++length;
  }
  return (*checked)[start];
}

void URLDB::checkData() {
  int64_t remaining = writeRepCateIDs_;
  try {
    // Lists that share positions, which no builder makes, are looked at only
    // once this way, so that the check stays linear.
    std::vector<int32_t> checked(repository_.size());
    for (int id = urlID_ - 1; id >= 1; --id) {
      if (indexEntry(id) == 0) continue;  // an ID that a load has skipped
      remaining -= checkList(id, &checked);
    }
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
  if (freeList_ == nullptr) return;
  if (remaining - 1 != freeList_->getSize())
    throw ErrException(ERR_INVALID_DATA, kSection, "in checkData(free)");
  const GrowableArray<int32_t> positions = reverseFreeList();
  for (std::size_t i = positions.size(); i-- > 0;) {
    if (repository_[static_cast<std::size_t>(positions[i])] != CLEAR_PATTERN)
      throw ErrException(ERR_INVALID_DATA, kSection, "in checkData(pattern)");
  }
}

std::ostream& operator<<(std::ostream& os, const URLDB& db) {
  os << "----------- URLDB Information -----------\n"
     << "           Version = " << db.version_ << '\n'
     << " URL Database File = " << db.fileName_ << '\n'
     << "        bFinalized = " << db.bFinalized_ << '\n'
     << "         TimeStamp = " << db.timeStamp_.data() << '\n'
     << "       numIdxURLID = " << db.urlIndex_.size() << '\n'
     << "             urlID = " << db.urlID_ << '\n'
     << "     numRepCateIDs = " << db.repository_.size() << '\n'
     << "   writeRepCateIDs = " << db.writeRepCateIDs_ << '\n'
     << "  maxCategoryChain = " << db.maxCategoryChain_ << '\n';
  if (db.freeList_ != nullptr)
    os << "  freeList.getSize = " << db.freeList_->getSize() << '\n';
  return os << "-----------------------------------------\n";
}

}  // namespace urldb
