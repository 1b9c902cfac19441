// Replacement global operator new and delete, every form, that count while an
// AllocCounter is on. The library's shared objects allocate through these too,
// as the program's definitions take the place of the standard library's.
#include "AllocCounter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace Bench {

namespace {

enum State : std::uint8_t { off, events, live };

// Relaxed loads and stores rather than read-modify-writes: no locked
// instruction on the allocation path of the code being measured.
std::atomic<std::uint8_t> state{off};
std::atomic<std::uint64_t> allocs{0};
std::atomic<std::uint64_t> frees{0};
std::atomic<std::uint64_t> bytes{0};
std::atomic<std::int64_t> liveBytes{0};
std::atomic<std::int64_t> peakBytes{0};

template <class T>
void add(std::atomic<T>& counter, T delta) {
  counter.store(counter.load(std::memory_order_relaxed) + delta, std::memory_order_relaxed);
}

void noteAlloc(void* p, std::size_t size) {
  std::uint8_t const s = state.load(std::memory_order_relaxed);
  if (s == off || !p) return;
  add(allocs, std::uint64_t{1});
  add(bytes, std::uint64_t{size});
  if (s != live) return;
  add(liveBytes, static_cast<std::int64_t>(malloc_usable_size(p)));
  std::int64_t const now = liveBytes.load(std::memory_order_relaxed);
  if (now > peakBytes.load(std::memory_order_relaxed))
    peakBytes.store(now, std::memory_order_relaxed);
}

void noteFree(void* p) {
  std::uint8_t const s = state.load(std::memory_order_relaxed);
  if (s == off || !p) return;
  add(frees, std::uint64_t{1});
  if (s == live) add(liveBytes, -static_cast<std::int64_t>(malloc_usable_size(p)));
}

void* allocate(std::size_t size) noexcept {
  void* p = std::malloc(size ? size : 1);
  noteAlloc(p, size);
  return p;
}

void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
  std::size_t const a = std::max(static_cast<std::size_t>(alignment), sizeof(void*));
  void* p = nullptr;
  if (posix_memalign(&p, a, size ? size : 1) != 0) p = nullptr;
  noteAlloc(p, size);
  return p;
}

void release(void* p) noexcept {
  noteFree(p);
  std::free(p);
}

void* orThrow(void* p) {
  if (!p) throw std::bad_alloc();
  return p;
}

}  // namespace

AllocCounter::AllocCounter(Mode mode) : mode_(mode) {
  allocs.store(0);
  frees.store(0);
  bytes.store(0);
  liveBytes.store(0);
  peakBytes.store(0);
  resume();
}

AllocCounter::~AllocCounter() {
  pause();
}

void AllocCounter::pause() {
  state.store(off);
}

void AllocCounter::resume() {
  state.store(mode_ == Mode::live ? live : events);
}

AllocStats AllocCounter::stats() const {
  return {allocs.load(), frees.load(), bytes.load(), liveBytes.load(), peakBytes.load()};
}

}  // namespace Bench

// clang-format off
void* operator new(std::size_t n) { return Bench::orThrow(Bench::allocate(n)); }
void* operator new[](std::size_t n) { return Bench::orThrow(Bench::allocate(n)); }
void* operator new(std::size_t n, std::nothrow_t const&) noexcept { return Bench::allocate(n); }
void* operator new[](std::size_t n, std::nothrow_t const&) noexcept { return Bench::allocate(n); }
void* operator new(std::size_t n, std::align_val_t a) { return Bench::orThrow(Bench::allocate(n, a)); }
void* operator new[](std::size_t n, std::align_val_t a) { return Bench::orThrow(Bench::allocate(n, a)); }
void* operator new(std::size_t n, std::align_val_t a, std::nothrow_t const&) noexcept { return Bench::allocate(n, a); }
void* operator new[](std::size_t n, std::align_val_t a, std::nothrow_t const&) noexcept { return Bench::allocate(n, a); }

void operator delete(void* p) noexcept { Bench::release(p); }
void operator delete[](void* p) noexcept { Bench::release(p); }
void operator delete(void* p, std::nothrow_t const&) noexcept { Bench::release(p); }
void operator delete[](void* p, std::nothrow_t const&) noexcept { Bench::release(p); }
void operator delete(void* p, std::size_t) noexcept { Bench::release(p); }
void operator delete[](void* p, std::size_t) noexcept { Bench::release(p); }
void operator delete(void* p, std::align_val_t) noexcept { Bench::release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { Bench::release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { Bench::release(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { Bench::release(p); }
void operator delete(void* p, std::align_val_t, std::nothrow_t const&) noexcept { Bench::release(p); }
void operator delete[](void* p, std::align_val_t, std::nothrow_t const&) noexcept { Bench::release(p); }
// clang-format on
