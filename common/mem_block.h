#ifndef URLDB_COMMON_MEM_BLOCK_H_
#define URLDB_COMMON_MEM_BLOCK_H_

#include <cstddef>
#include <iosfwd>
#include <memory>

namespace urldb {

// A pool that hands out zero-filled pieces of memory and frees them all at
// once. Pieces are cut one after another from blocks of a fixed size; a piece
// that is larger than that has a block of its own.
class MemBlock {
 public:
  struct Block {
    std::unique_ptr<std::byte[]> data;
    Block* next = nullptr;
  };

  // An empty pool, which takes its first block when it is first asked.
  explicit MemBlock(unsigned blockSize) { initialize(blockSize); }
  MemBlock(const MemBlock&) = delete;
  MemBlock& operator=(const MemBlock&) = delete;
  ~MemBlock() { freeBlocks(); }

  // At least `n` bytes, all zero, aligned to 4 and not more: records that hold
  // pointers need a place inside them that is aligned for those. They live
  // until removeAll or the end of the pool. Null for n = 0. Throws
  // std::bad_alloc, also for an `n` that rounded up to a multiple of 4 is
  // beyond the range of unsigned.
  void* alloc(unsigned n) {
    if (n == 0) return nullptr;
    const unsigned size = ((n - 1) & ~3U) + 4;  // 0 when it wraps around
    if (head_ == nullptr || size - 1 >= blockSize_ - used_)
      return allocFromNewBlock(size);
    std::byte* const piece = head_->data.get() + used_;
    used_ += size;
    return piece;
  }

  // Frees every piece and starts again with the same block size.
  void removeAll() {
    freeBlocks();
    initialize(blockSize_);
  }

  // Becomes an empty pool without freeing the blocks, which belong to nobody
  // then.
  void initialize(unsigned blockSize);

  // A new block of `size` zero bytes, counted in total() but not part of the
  // pool. Throws std::bad_alloc and counts nothing when memory runs out.
  std::unique_ptr<Block> allocBlock(unsigned size);

  // Bytes handed out from the current block.
  unsigned used() const { return used_; }
  // Bytes obtained: the data of every block and 8 for its record.
  std::size_t total() const { return total_; }
  std::size_t blockCount() const;

  // Writes the counters and the data address of each block, the current first.
  friend std::ostream& operator<<(std::ostream& stream, const MemBlock& pool);

 private:
  void* allocFromNewBlock(unsigned size);
  void freeBlocks();

  unsigned used_;  // of the current block; at most blockSize_
  Block* head_;    // the current block, the others behind it; owned
  unsigned blockSize_;
  std::size_t total_;
};

}  // namespace urldb

#endif  // URLDB_COMMON_MEM_BLOCK_H_
