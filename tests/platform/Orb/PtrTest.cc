// Reference counting: who keeps an object alive, and when it goes.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Orb/Ptr.h"

namespace Orb {
namespace {

struct Counted : Object {
  int value = 7;
};

TEST(PtrCounting, ObjectGoesExactlyWhenItsLastReferenceOfAnyKindDoes) {
  long const start = Object::liveObjects();
  {
    Ptr<Counted> a = make<Counted>();
    Ptr<Counted> copy = a;
    Ptr<Object const> base = copy;
    Ptr<Counted> moved = std::move(copy);
    Ptr<Counted>& alias = moved;
    moved = alias;
    moved = std::move(alias);
    EXPECT_EQ(a->references(), 3u);
    a = make<Counted>();  // assigning over a reference releases only that one
    moved = nullptr;
    EXPECT_EQ(ptrCast<Counted const>(base)->value, 7);
    EXPECT_EQ(Object::liveObjects(), start + 2);
    base = nullptr;
    EXPECT_EQ(Object::liveObjects(), start + 1);
  }
  EXPECT_EQ(Object::liveObjects(), start);
}

TEST(PtrCounting, AtomicSwitchKeepsTheCountExactAcrossThreads) {
  long const start = Object::liveObjects();
  threadSafePtrsIs(true);
  {
    Ptr<Counted> shared = make<Counted>();
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
      threads.emplace_back([&shared] {
        for (int i = 0; i < 50000; ++i) {
          Ptr<Counted> a = shared;
          Ptr<Counted const> b = a;
          Ptr<Counted> c = std::move(a);
        }
      });
    }
    for (auto& t : threads)
      t.join();
    EXPECT_EQ(shared->references(), 1u);
  }
  threadSafePtrsIs(false);
  EXPECT_EQ(Object::liveObjects(), start);
}

}  // namespace
}  // namespace Orb
