#include "common/mem_block.h"

#include <new>
#include <ostream>

namespace urldb {

void MemBlock::initialize(unsigned blockSize) {
  used_ = 0;
  head_ = nullptr;
  blockSize_ = blockSize;
  total_ = 0;
}

std::unique_ptr<MemBlock::Block> MemBlock::allocBlock(unsigned size) {
  auto block = std::make_unique<Block>();
  block->data = std::make_unique<std::byte[]>(size);
  total_ += std::size_t{size} + 8;
  return block;
}

void* MemBlock::allocFromNewBlock(unsigned size) {
  if (size == 0) throw std::bad_alloc();
  const bool large = size > blockSize_;
  if (!large || head_ == nullptr) {
    std::unique_ptr<Block> block = allocBlock(blockSize_);
    block->next = head_;
    head_ = block.release();
    used_ = large ? 0 : size;
  }
  if (!large) return head_->data.get();

  // Behind the head, whose free space stays usable.
  std::unique_ptr<Block> block = allocBlock(size);
  block->next = head_->next;
  head_->next = block.release();
  return head_->next->data.get();
}

void MemBlock::freeBlocks() {
  while (head_ != nullptr) {
    const std::unique_ptr<Block> block(head_);
    head_ = block->next;
  }
}

std::size_t MemBlock::blockCount() const {
  std::size_t count = 0;
  for (const Block* block = head_; block != nullptr; block = block->next)
    ++count;
  return count;
}

std::ostream& operator<<(std::ostream& stream, const MemBlock& pool) {
  stream << "--- MemBlock ---\n"
         << "used: " << pool.used_ << '\n'
         << "blockSize: " << pool.blockSize_ << '\n'
         << "total: " << pool.total_ << '\n';
  for (const MemBlock::Block* block = pool.head_; block != nullptr;
       block = block->next) {
    stream << "block: " << static_cast<const void*>(block->data.get()) << '\n';
  }
  return stream;
}

}  // namespace urldb
