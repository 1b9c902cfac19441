// The allocation counter: every form of operator new and delete is counted,
// only while counting is on, and the live mode follows the heap's net growth.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>

#include "AllocCounter.h"

namespace {

using Bench::AllocCounter;

// Keeps the compiler from pairing up and dropping an allocation and its free.
void* volatile escape;

void* kept(void* p) {
  escape = p;
  return p;
}

TEST(AllocCounter, CountsEveryFormOfNewAndDelete) {
  constexpr std::align_val_t wide{64};
  AllocCounter counter;
  ::operator delete(kept(::operator new(10)));
  ::operator delete[](kept(::operator new[](20)));
  ::operator delete(kept(::operator new(30, std::nothrow)), std::nothrow);
  ::operator delete[](kept(::operator new[](40, std::nothrow)), std::nothrow);
  ::operator delete (kept(::operator new(50)), std::size_t{50});
  ::operator delete[](kept(::operator new[](60)), std::size_t{60});
  void* aligned = kept(::operator new(70, wide));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % 64, 0u);
  ::operator delete(aligned, wide);
  ::operator delete[](kept(::operator new[](80, wide)), wide);
  ::operator delete(kept(::operator new(90, wide, std::nothrow)), wide, std::nothrow);
  ::operator delete[](kept(::operator new[](100, wide, std::nothrow)), wide, std::nothrow);
  ::operator delete (kept(::operator new(110, wide)), std::size_t{110}, wide);
  ::operator delete[](kept(::operator new[](120, wide)), std::size_t{120}, wide);
  Bench::AllocStats const s = counter.stats();
  EXPECT_EQ(s.allocs, 12u);
  EXPECT_EQ(s.frees, 12u);
  EXPECT_EQ(s.bytes, 780u);
}

TEST(AllocCounter, CountsOnlyWhileOnAndKeepsCountsOverAPause) {
  void* before = kept(::operator new(8));
  AllocCounter counter;
  ::operator delete(kept(::operator new(16)));
  counter.pause();
  ::operator delete(kept(::operator new(32)));
  ::operator delete(before);
  counter.resume();
  ::operator delete(kept(::operator new(64)));
  Bench::AllocStats const s = counter.stats();
  EXPECT_EQ(s.allocs, 2u);
  EXPECT_EQ(s.frees, 2u);
  EXPECT_EQ(s.bytes, 80u);
  EXPECT_EQ(s.live, 0) << "events mode asks the allocator nothing";
}

TEST(AllocCounter, LiveModeFollowsTheHeapsNetGrowthAndItsPeak) {
  void* older = kept(::operator new(4000));
  AllocCounter counter(AllocCounter::Mode::live);
  void* big = kept(::operator new(10000));
  ::operator delete(big);
  void* held = kept(::operator new(1000));
  Bench::AllocStats s = counter.stats();
  EXPECT_GE(s.live, 1000);
  EXPECT_LT(s.live, 2000);
  EXPECT_GE(s.peak, 10000);
  // A block from before the counting lowers the growth when freed.
  ::operator delete(older);
  s = counter.stats();
  EXPECT_LT(s.live, 0);
  EXPECT_GE(s.peak, 10000);
  ::operator delete(held);
}

TEST(AllocCounter, ANewCounterStartsFromZero) {
  {
    AllocCounter first;
    ::operator delete(kept(::operator new(8)));
  }
  AllocCounter second;
  Bench::AllocStats const s = second.stats();
  EXPECT_EQ(s.allocs, 0u);
  EXPECT_EQ(s.bytes, 0u);
}

}  // namespace
