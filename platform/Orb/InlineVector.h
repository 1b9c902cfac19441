// Orb::InlineVector: a growable array of trivially copyable elements that
// keeps its first N elements inside the object, so the common small case
// never reaches the heap.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

#include "Orb/Types.h"

namespace Orb {

/// Elements are copied bytewise; the array is neither copyable nor movable,
/// because its data may point into itself.
template <class T, std::size_t N>
class InlineVector {
  static_assert(std::is_trivially_copyable_v<T>);
  static_assert(N > 0);

 public:
  // User-provided, so value-initialising an owner does not clear the inline storage.
  InlineVector() noexcept {}
  InlineVector(InlineVector const&) = delete;
  InlineVector& operator=(InlineVector const&) = delete;
  ~InlineVector() {
    if (data_ != inlineData()) ::operator delete(data_);
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  T const* data() const noexcept { return data_; }
  T* data() noexcept { return data_; }
  T const& operator[](std::size_t i) const noexcept { return data_[i]; }
  T& operator[](std::size_t i) noexcept { return data_[i]; }
  T const* begin() const noexcept { return data_; }
  T const* end() const noexcept { return data_ + size_; }

  void push_back(T const& v) {
    if (size_ == capacity_) grow(size_ + 1);
    data_[size_++] = v;
  }
  /// Appends `n` elements copied from `from`.
  void append(T const* from, std::size_t n) {
    if (n == 0) return;
    if (size_ + n > capacity_) grow(size_ + n);
    std::memcpy(static_cast<void*>(data_ + size_), from, n * sizeof(T));
    size_ += static_cast<U32>(n);
  }
  /// Drops the elements from `i` on.
  void truncate(std::size_t i) noexcept { size_ = static_cast<U32>(i); }
  /// Removes the element at `i`, keeping the order of the rest.
  void erase(std::size_t i) noexcept {
    std::memmove(static_cast<void*>(data_ + i), data_ + i + 1, (size_ - i - 1) * sizeof(T));
    --size_;
  }

 private:
  T* inlineData() noexcept { return reinterpret_cast<T*>(inline_); }
  void grow(std::size_t need) {
    std::size_t capacity = capacity_ * 2;
    if (capacity < need) capacity = need;
    T* data = static_cast<T*>(::operator new(capacity * sizeof(T)));
    std::memcpy(static_cast<void*>(data), data_, size_ * sizeof(T));
    if (data_ != inlineData()) ::operator delete(data_);
    data_ = data;
    capacity_ = static_cast<U32>(capacity);
  }

  T* data_ = inlineData();
  U32 size_ = 0;
  U32 capacity_ = N;
  alignas(T) unsigned char inline_[N * sizeof(T)];
};

}  // namespace Orb
