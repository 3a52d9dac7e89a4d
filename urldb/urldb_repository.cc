// The URL index and the lists of category values.

#include <climits>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

#include "common/error.h"
#include "common/file_io.h"
#include "urldb/database_view.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr int kSection = 3004;

constexpr int32_t withLink(int32_t value) { return value | URLDB::LINK_MASK; }
constexpr int32_t withoutLink(int32_t value) {
  return value & ~URLDB::LINK_MASK;
}
constexpr bool hasLink(int32_t value) {
  return (value & URLDB::LINK_MASK) != 0;
}

}  // namespace

int32_t URLDB::indexEntry(int urlID) const {
  const auto id = static_cast<std::size_t>(urlID);
  return id < urlIndex_.size() ? urlIndex_[id] : 0;
}

std::size_t URLDB::listStart(int urlID) const {
  const auto start = static_cast<std::size_t>(indexEntry(urlID));
  // A negative entry is above every size, too.
  if (start >= repository_.size())
    throw ErrException(ERR_INVALID_DATA, kSection, "list of URL ID %d", urlID);
  return start;
}

int32_t URLDB::valueAt(std::size_t position) const {
  if (position >= repository_.size() ||
      repository_[position] == CLEAR_PATTERN) {
    throw ErrException(ERR_INVALID_STATUS, kSection, "value is clear(%d)",
                       static_cast<int>(position));
  }
  return repository_[position];
}

int URLDB::listLength(std::size_t start) const {
  std::size_t last = start;
  while (hasLink(valueAt(last))) ++last;
  return static_cast<int>(last - start) + 1;
}

int* URLDB::searchRepository(int urlID) const {
  if (urlID == 0) return nullptr;
  if (urlID < 0 || static_cast<std::size_t>(urlID) >= urlIndex_.size())
    throw ErrException(ERR_INVALID_DATA, kSection, "URL ID %d", urlID);
  const std::size_t start = listStart(urlID);
  const int count = listLength(start);
  const int32_t* const from = repository_.data() + start;
  try {
    auto list = std::make_unique<int[]>(static_cast<std::size_t>(count) + 1);
    list[0] = count;
    for (int i = 0; i < count; ++i)
      list[static_cast<std::size_t>(i) + 1] = withoutLink(from[i]);
    return list.release();  // the caller frees it with delete[]
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

void URLDB::allocRepCateIDs(int needed) {
  if (needed < 0 || static_cast<std::size_t>(needed) < repository_.size())
    return;
  if (needed > INT_MAX - GAIN)
    throw ErrException(ERR_OVERFLOW, kSection, "repository");
  try {
    repository_.resize(static_cast<std::size_t>(needed) + GAIN, 0xFF);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

void URLDB::reserveForNewList() {
  if (writeRepCateIDs_ > INT_MAX - GAIN - 1)
    throw ErrException(ERR_OVERFLOW, kSection, "repository");
  try {
    if (static_cast<std::size_t>(urlID_) >= urlIndex_.size())
      urlIndex_.reserve(urlIndex_.size() + GAIN);
    const auto needed = static_cast<std::size_t>(writeRepCateIDs_) + 1;
    if (needed >= repository_.size()) repository_.reserve(needed + GAIN);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

int URLDB::addRepository(int urlID, int cateIDs) {
  if (urlID == 0 || cateIDs == 0)
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "addRepository()");
  const auto id = static_cast<std::size_t>(urlID);
  // A negative ID is above every size, too.
  if (id >= urlIndex_.size() + GAIN)
    throw ErrException(ERR_INVALID_DATA, kSection, "URL ID %d", urlID);
  if (id >= urlIndex_.size()) {
    try {
      urlIndex_.resize(urlIndex_.size() + GAIN);
    } catch (const std::bad_alloc&) {
      throw ErrException(ERR_NO_MEMORY, kSection);
    }
  }

  if (urlIndex_[id] == 0) {
    allocRepCateIDs(writeRepCateIDs_ + 1);
    int32_t position = writeRepCateIDs_;
    if (freeList_ != nullptr && freeList_->getSize() >= 1) {
      const int* const freed = freeList_->get();
      if (freed == nullptr)
        throw ErrException(ERR_INVALID_STATUS, kSection, "queue error");
      position = *freed;
    } else {
      ++writeRepCateIDs_;
    }
    repository_[static_cast<std::size_t>(position)] = withoutLink(cateIDs);
    urlIndex_[id] = position;
    modified_ = true;
    return urlID;
  }

  std::size_t from = listStart(urlID);
  const int count = listLength(from);
  for (int i = count; i-- > 0;) {
    const auto value = repository_[from + static_cast<std::size_t>(i)];
    if (withoutLink(value) == cateIDs) return 0;
  }
  // The list moves to the end, where it can grow; single positions are reused
  // for lists of one value only, because a list stays contiguous.
  if (freeList_ == nullptr)
    throw ErrException(ERR_INVALID_STATUS, kSection, "queue error");
  if (count >= freeList_->getCapacity() - freeList_->getSize())
    throw ErrException(ERR_OVERFLOW,
                       6);  // as put() would, but with nothing lost
  if (count > INT_MAX - GAIN - 1 - writeRepCateIDs_)
    throw ErrException(ERR_OVERFLOW, kSection, "repository");
  allocRepCateIDs(count + writeRepCateIDs_ + 1);

  auto to = static_cast<std::size_t>(writeRepCateIDs_);
  urlIndex_[id] = writeRepCateIDs_;
  for (int i = 0; i < count; ++i, ++from, ++to) {
    repository_[to] = withLink(repository_[from]);
    repository_[from] = CLEAR_PATTERN;
    freeList_->put(static_cast<int>(from));
  }
  repository_[to] = withoutLink(cateIDs);
  writeRepCateIDs_ += count + 1;
  if (maxCategoryChain_ < count + 1) maxCategoryChain_ = count + 1;
  modified_ = true;
  return urlID;
}

GrowableArray<int32_t> URLDB::reverseFreeList() {
  if (freeList_ == nullptr) return {};
  const auto count = static_cast<std::size_t>(freeList_->getSize());
  try {
    GrowableArray<int32_t> positions(count);
    for (std::size_t i = 0; i < count; ++i) positions[i] = *freeList_->get();
    for (std::size_t i = count; i-- > 0;) freeList_->put(positions[i]);
    return positions;
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

std::vector<int32_t> freePositionsOf(const URLDB& db) {
  std::vector<int32_t> positions;
  if (db.freeList_ == nullptr) return positions;
  RingQueue<int>& queue = *db.freeList_;
  positions.reserve(static_cast<std::size_t>(queue.getSize()));
  // Once around: every position is taken and put back in its place.
  for (int left = queue.getSize(); left > 0; --left) {
    const int position = *queue.get();
    queue.put(position);
    positions.push_back(position);
  }
  return positions;
}

void URLDB::writeURL2CateIDs(int fd) {
  // Counts and entries as they lie in the file; an index that is shorter than
  // the IDs given out goes on with 0, a repository without storage with free
  // entries.
  const auto urls = static_cast<std::size_t>(urlID_) + 1;
  const auto entries = static_cast<std::size_t>(writeRepCateIDs_);
  if (urls > INT_MAX) throw ErrException(ERR_OVERFLOW, kSection, "URL ID");
  int32_t counts[4] = {static_cast<int32_t>(urls), writeRepCateIDs_,
                       freeList_ == nullptr ? 0 : freeList_->getSize(),
                       maxCategoryChain_};
  writeIntegers(fd, counts, 4, kSection);

  const auto writePadded = [fd](GrowableArray<int32_t>& array,
                                std::size_t count, int32_t padding) {
    const std::size_t held = count < array.size() ? count : array.size();
    writeIntegers(fd, array.data(), held, kSection);
    for (std::size_t i = held; i < count; ++i)
      writeInteger(fd, padding, kSection);
  };
  writePadded(urlIndex_, urls, 0);
  writePadded(repository_, entries, CLEAR_PATTERN);

  if (bFinalized_) return;
  GrowableArray<int32_t> positions = reverseFreeList();
  writeIntegers(fd, positions.data(), positions.size(), kSection);
}

void URLDB::readURL2CateIDs(int fd, RingQueue<int>* freeList) {
  const GrowableArray<int32_t> counts = readIntegers(fd, 4, kSection);
  const int32_t urls = counts[0];
  const int32_t entries = counts[1];
  const int32_t freed = counts[2];
  if (urls < 1 || entries < 1 || freed < 0 || counts[3] < 0)
    throw ErrException(ERR_INVALID_DATA, kSection, "count in the repository");
  GrowableArray<int32_t> urlIndex = readIntegers(fd, urls, kSection);
  GrowableArray<int32_t> repository = readIntegers(fd, entries, kSection);

  if (freeList != nullptr) {
    GrowableArray<int32_t> positions = readIntegers(fd, freed, kSection);
    for (std::size_t i = 0; i < positions.size(); ++i) {
      if (positions[i] < 1 || positions[i] >= entries) {
        throw ErrException(ERR_INVALID_DATA, kSection, "free position %d",
                           positions[i]);
      }
    }
    if (freed >= freeList->getCapacity() - freeList->getSize())
      throw ErrException(ERR_OVERFLOW,
                         6);  // as put() would, but with nothing lost
    for (std::size_t i = 0; i < positions.size(); ++i)
      freeList->put(positions[i]);
  }

  urlIndex_.swap(urlIndex);
  urlID_ = urls;
  repository_.swap(repository);
  writeRepCateIDs_ = entries;
  maxCategoryChain_ = counts[3];
}

}  // namespace urldb
