// Orb::Recycler: keeps freed blocks of one size for the next object of that
// size, for the short-lived objects made once per engine command.
#pragma once

#include <cstddef>
#include <new>

#include "Orb/Api.h"
#include "Orb/Object.h"

namespace Orb {

/// A free list of blocks of `blockSize` bytes, holding at most `keep` of them.
/// Only single-threaded counting uses it: with thread-safe pointers an object
/// may be freed on another thread, so blocks go straight to the heap. Under
/// AddressSanitizer it is off, so reuse after free is still reported.
/// Instances are meant to be `constinit` statics.
class ROTOR_API Recycler {
 public:
  constexpr Recycler(std::size_t blockSize, std::size_t keep) noexcept
      : blockSize_(blockSize < sizeof(Free) ? sizeof(Free) : blockSize), keep_(keep) {}
  Recycler(Recycler const&) = delete;
  Recycler& operator=(Recycler const&) = delete;
  // Never destroyed (instances are constinit statics): an object released
  // during exit may still hand its block back.

  /// A block of `size` bytes: a kept one when `size` is the block size.
  void* take(std::size_t size) {
    if (enabled() && size == blockSize_ && head_ != nullptr) return pop();
    return ::operator new(size);
  }
  /// Takes back a block that `take(size)` gave out.
  void give(void* block, std::size_t size) noexcept {
    if (enabled() && size == blockSize_ && kept_ < keep_) {
      head_ = new (block) Free{head_};
      ++kept_;
      return;
    }
    ::operator delete(block);
  }
  /// Blocks kept for reuse now.
  std::size_t kept() const noexcept { return kept_; }

 private:
  struct Free {
    Free* next;
  };
  static bool enabled() noexcept {
#if defined(__SANITIZE_ADDRESS__)
    return false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    return false;
#else
    return !threadSafePtrs();
#endif
#else
    return !threadSafePtrs();
#endif
  }
  void* pop() noexcept {
    Free* block = head_;
    head_ = block->next;
    --kept_;
    block->~Free();
    return block;
  }

  std::size_t blockSize_;
  std::size_t keep_;
  Free* head_ = nullptr;
  std::size_t kept_ = 0;
};

}  // namespace Orb
