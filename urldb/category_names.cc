#include "urldb/category_names.h"

#include <climits>
#include <cstddef>
#include <cstring>
#include <new>
#include <ostream>
#include <utility>

#include "common/error.h"
#include "url/euc_conv.h"

namespace urldb {
namespace {

constexpr int kSection = 3001;
constexpr unsigned kPoolBlock = 4096;
constexpr int32_t kLevel1Mask = 0x7FFF0000;
constexpr int32_t kIdMask = 0xFFFF;
constexpr std::size_t kMostNames = 32767;   // an ID has 15 bits
constexpr std::size_t kMostLevel1 = 32767;  // entries
constexpr std::size_t kMostLevel2 = 65536;  // words: a link has 16 bits

std::size_t firstNode(int32_t entry) {
  return static_cast<uint32_t>(entry) & 0xFFFF;
}

std::size_t nextNode(int32_t node) { return static_cast<uint32_t>(node) >> 16; }

// Room for one more entry, in steps of GAIN.
template <class T>
void growForOneMore(std::vector<T>* table) {
  if (table->size() == table->capacity())
    table->reserve(table->size() + CategoryNames::GAIN);
}

}  // namespace

CategoryNames::CategoryNames() try
    : pool_(std::make_unique<MemBlock>(kPoolBlock)), level2_(1) {
} catch (const std::bad_alloc&) {
  throw ErrException(ERR_NO_MEMORY, kSection);
}

int CategoryNames::addCateogry(const char* name) {
  if (name == nullptr || *name == '\0')
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "add()");
  if (names_.size() >= kMostNames) {
    throw ErrException(ERR_INVALID_STATUS, kSection, "CategoryID too LARGE!!!");
  }
  const std::size_t size = std::strlen(name) + 1;
  if (size > UINT_MAX) throw ErrException(ERR_NO_MEMORY, kSection);
  try {
    auto* const copy =
        static_cast<char*>(pool_->alloc(static_cast<unsigned>(size)));
    std::memcpy(copy, name, size);
    EUCConv().convert(copy, false, true);
    growForOneMore(&names_);
    names_.push_back(copy);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
  return static_cast<int>(names_.size());
}

const char* CategoryNames::getNames(int id) const {
  // An ID below 1 becomes a number above every size.
  const std::size_t index = static_cast<std::size_t>(id) - 1;
  if (index >= names_.size()) throw ErrException(ERR_NO_SUCH_ELEMENT, kSection);
  return names_[index];
}

int CategoryNames::searchLevel1(int key) const {
  std::size_t low = 0;
  std::size_t high = level1_.size();
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    const int32_t found = level1_[middle] & kLevel1Mask;
    if (found == key) return static_cast<int>(middle) + 1;
    if (found < key)
      low = middle + 1;
    else
      high = middle;
  }
  return -static_cast<int>(low);
}

void CategoryNames::setHierarchical(int cateIDs) {
  const int32_t key = cateIDs & kLevel1Mask;
  const int32_t id = cateIDs & kIdMask;
  try {
    int place = searchLevel1(key);
    if (place < 1) {
      if (level1_.size() >= kMostLevel1)
        throw ErrException(ERR_OVERFLOW, kSection, "too much Category(1)");
      growForOneMore(&level1_);
      level1_.insert(level1_.begin() - place, key);
      place = 1 - place;
    }
    if (id == 0) return;

    int32_t& entry = level1_[static_cast<std::size_t>(place - 1)];
    std::size_t last = 0;  // node of the chain
    for (std::size_t node = firstNode(entry); node != 0;
         node = nextNode(level2_[node])) {
      if ((level2_[node] & kIdMask) == id) return;
      last = node;
    }
    const std::size_t added = level2_.size();
    if (added >= kMostLevel2)
      throw ErrException(ERR_OVERFLOW, kSection, "too much Category(2)");
    growForOneMore(&level2_);
    level2_.push_back(id);
    const auto link = static_cast<uint32_t>(added);
    if (last == 0)
      entry |= static_cast<int32_t>(link);
    else
      level2_[last] |= static_cast<int32_t>(link << 16);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

void CategoryNames::clearHierarchical() {
  level1_.clear();
  level2_.assign(1, 0);  // node 0 may have been read as anything
}

void CategoryNames::outputNames(std::ostream& os) const {
  std::size_t id = 0;
  for (const char* const name : names_) os << ++id << ':' << name << '\n';
}

void CategoryNames::outputHierarchical(std::ostream& os) const {
  for (const CategoryBranch& branch : view().branches()) {
    if (branch.level2.empty()) continue;
    os << branch.level1;
    char separator = ':';
    for (const int id : branch.level2) {
      os << separator << id;
      separator = ',';
    }
    os << '\n';
  }
}

CategoryView CategoryNames::view() const { return {names_, level1_, level2_}; }

void CategoryNames::swap(CategoryNames& other) noexcept {
  pool_.swap(other.pool_);
  readText_.swap(other.readText_);
  names_.swap(other.names_);
  level1_.swap(other.level1_);
  level2_.swap(other.level2_);
}

}  // namespace urldb
