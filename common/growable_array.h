#ifndef URLDB_COMMON_GROWABLE_ARRAY_H_
#define URLDB_COMMON_GROWABLE_ARRAY_H_

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace urldb {

// An owned array of plain values that grows by many small steps. size() is the
// capacity that the owner has asked for; behind it lies a reserve of an eighth,
// so that a million small steps copy each element only a few times. Memory
// comes from realloc, which moves the pages of a large array instead of copying
// them.
template <class T>
class GrowableArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  GrowableArray() = default;
  // `size` elements, every byte of them `fill`. Throws std::bad_alloc.
  explicit GrowableArray(std::size_t size, unsigned char fill = 0) {
    resize(size, fill);
  }
  GrowableArray(GrowableArray&& other) noexcept { swap(other); }
  GrowableArray& operator=(GrowableArray&& other) noexcept {
    GrowableArray taken(std::move(other));
    swap(taken);
    return *this;
  }
  GrowableArray(const GrowableArray&) = delete;
  GrowableArray& operator=(const GrowableArray&) = delete;
  ~GrowableArray() { std::free(data_); }

  // Sets the size. Elements beyond the former size have every byte `fill`. On
  // std::bad_alloc the array is unchanged.
  void resize(std::size_t size, unsigned char fill = 0) {
    const std::size_t former = size_;
    resizeForOverwrite(size);
    if (size > former) {
      std::memset(data_ + former, fill, (size - former) * sizeof(T));
    }
  }

  // The same, but leaves new elements uninitialised: the caller writes them
  // all.
  void resizeForOverwrite(std::size_t size) {
    reserve(size);
    size_ = size;
  }

  // Makes room for `size` elements without changing size(): until then no
  // resize can fail. On std::bad_alloc the array is unchanged.
  void reserve(std::size_t size) {
    if (size <= reserved_) return;
    constexpr std::size_t kMost =
        std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T);
    if (size > kMost) throw std::bad_alloc();
    // The first allocation is exact: most arrays that are read from a file
    // never grow.
    std::size_t wanted = data_ == nullptr ? size : size + size / 8;
    if (wanted > kMost) wanted = size;
    void* moved = std::realloc(data_, wanted * sizeof(T));
    if (moved == nullptr) throw std::bad_alloc();
    data_ = static_cast<T*>(moved);
    reserved_ = wanted;
  }

  T* data() { return data_; }
  const T* data() const { return data_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  // Any integer type serves as index: cell numbers and positions are ints.
  template <class Index>
  T& operator[](Index i) {
    return data_[i];
  }
  template <class Index>
  const T& operator[](Index i) const {
    return data_[i];
  }

  void swap(GrowableArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(reserved_, other.reserved_);
  }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t reserved_ = 0;  // elements allocated, at least size_
};

}  // namespace urldb

#endif  // URLDB_COMMON_GROWABLE_ARRAY_H_
