#ifndef URLDB_TESTS_FAILING_NEW_H_
#define URLDB_TESTS_FAILING_NEW_H_

#include <cstddef>
#include <cstdlib>
#include <new>

// Replaces operator new and delete of the test program, so it is to be included
// in one source of it only.

namespace urldb {

// While it lives, the n-th allocation with new (1 is the next one) and all
// after it throw std::bad_alloc. One at a time; allocations of gtest in its
// life count too, so expectations stand behind it.
class FailingNew {
 public:
  explicit FailingNew(long n) { left_ = n - 1; }
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew() { left_ = kUnlimited; }

  static bool mayAllocate() {
    if (left_ == kUnlimited) return true;
    if (left_ == 0) return false;
    --left_;
    return true;
  }

 private:
  static constexpr long kUnlimited = -1;
  static inline long left_ = kUnlimited;
};

}  // namespace urldb

[[gnu::noinline]] void* operator new(std::size_t size,
                                     const std::nothrow_t&) noexcept {
  if (!urldb::FailingNew::mayAllocate()) return nullptr;
  return std::malloc(size != 0 ? size : 1);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  operator delete(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}

#endif  // URLDB_TESTS_FAILING_NEW_H_
