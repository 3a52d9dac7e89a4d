#include "urldb/urldb.h"

#include <climits>
#include <ctime>
#include <new>
#include <utility>

#include "common/error.h"
#include "urldb/database_view.h"
#include "urldb/packed_date.h"

namespace urldb {
namespace {

constexpr int kSection = 3004;
constexpr int kTrieGain = 10240;
constexpr int kTrieMode = 3;  // keys in upper case, full-width forms folded
constexpr std::time_t kFreshSeconds = 2678400;  // 31 days

}  // namespace

URLDB::URLDB()
    : freshDate_(packDate(localDate(std::time(nullptr) + kFreshSeconds))) {}

URLDB::~URLDB() = default;

void URLDB::initialize() { *this = URLDB(); }

void URLDB::close() { initialize(); }

int URLDB::openFile(const char* file, CategoryNames* names, int queueSize,
                    bool read) {
  try {
    URLDB fresh;
    if (names != nullptr) {
      fresh.names_ = names;
      fresh.freeList_ = std::make_unique<RingQueue<int>>(queueSize);
    } else {
      fresh.ownNames_ = std::make_unique<CategoryNames>();
      fresh.names_ = fresh.ownNames_.get();
      fresh.bFinalized_ = true;
    }
    fresh.trie_ = std::make_unique<DoubleArray>(kTrieGain, kTrieMode);
    if (file != nullptr) fresh.fileName_ = file;
    const int version =
        read ? fresh.readFile(file, fresh.names_, fresh.trie_.get(),
                              fresh.freeList_.get())
             : 0;
    *this = std::move(fresh);
    return version;
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

bool URLDB::isFreshed() const {
  return isFreshOn(localDate(std::time(nullptr)), unpackDate(freshDate_));
}

int URLDB::add(const char* url, int cateIDs) {
  if (bFinalized_)
    throw ErrException(ERR_INVALID_STATUS, kSection, "URLDB has finalized");
  if (url == nullptr || *url == '\0' || cateIDs == 0)
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "add()");
  if (trie_ == nullptr)
    throw ErrException(ERR_INVALID_STATUS, kSection, "no database is open");
  names_->getNames(cateIDs & 0xFFFF);
  names_->getNames(cateIDs >> 16);
  if (urlID_ == INT_MAX) throw ErrException(ERR_OVERFLOW, kSection, "URL ID");
  reserveForNewList();

  int id = trie_->add(url, urlID_);
  if (id == 0) {
    id = trie_->search(url);
    if (id == 0)
      throw ErrException(ERR_INVALID_STATUS, kSection, "url not found");
    if (id != urlID_)
      throw ErrException(ERR_INVALID_STATUS, kSection, "wrong ID");
    ++urlID_;
  } else if (id < 1 || id >= urlID_) {
    // Only in a file that no builder wrote.
    throw ErrException(ERR_INVALID_DATA, kSection, "URL ID %d", id);
  }
  return addRepository(id, cateIDs);
}

int* URLDB::listOf(const char* url, const char* caller,
                   int (DoubleArray::*find)(const char*) const) const {
  if (trie_ == nullptr) return nullptr;
  if (url == nullptr || *url == '\0')
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "%s", caller);
  return searchRepository((trie_.get()->*find)(url));
}

int* URLDB::search(const char* url) const {
  return listOf(url, "search()", &DoubleArray::search);
}

int* URLDB::searchMaxPrefix(const char* url) const {
  return listOf(url, "searchMaxPrefix()", &DoubleArray::searchMaxPrefix);
}

DatabaseView viewOf(const URLDB& db) {
  DatabaseView view{};
  view.fileName = db.fileName_.c_str();
  view.version = db.version_;
  view.timeStamp = db.timeStamp_.data();
  view.freshDate = db.freshDate_;
  view.urlID = db.urlID_;
  view.numIdxURLID = static_cast<int>(db.urlIndex_.size());
  view.numRepCateIDs = static_cast<int>(db.repository_.size());
  view.writeRepCateIDs = db.writeRepCateIDs_;
  view.maxCategoryChain = db.maxCategoryChain_;
  view.finalized = db.bFinalized_;
  view.freePositions = db.freeList_ == nullptr ? 0 : db.freeList_->getSize();
  view.names = db.names_;
  view.trie = db.trie_.get();
  view.urlIndex = {db.urlIndex_.data(), db.urlIndex_.size()};
  view.repository = {db.repository_.data(), db.repository_.size()};
  return view;
}

}  // namespace urldb
