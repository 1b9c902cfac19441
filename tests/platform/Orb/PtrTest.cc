// Reference counting: who keeps an object alive, and when it goes.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Orb/Ptr.h"

namespace Orb {
namespace {

class Base : public Object {
 public:
  explicit Base(int* destroyed = nullptr) : destroyed_(destroyed) {}
  ~Base() override {
    if (destroyed_) ++*destroyed_;
  }

 private:
  int* destroyed_;
};

class Derived : public Base {
 public:
  using Base::Base;
  int value = 7;
};

TEST(PtrCounting, CopiesShareOneCountAndTheLastDropDeletes) {
  int destroyed = 0;
  Ptr<Base> a = make<Base>(&destroyed);
  EXPECT_EQ(a->references(), 1u);
  {
    Ptr<Base> b = a;
    Ptr<Base> c(b);
    EXPECT_EQ(a->references(), 3u);
    EXPECT_TRUE(b == a);
  }
  EXPECT_EQ(a->references(), 1u);
  EXPECT_EQ(destroyed, 0);
  a = nullptr;
  EXPECT_EQ(destroyed, 1);
  EXPECT_FALSE(a);
  EXPECT_TRUE(a == nullptr);
}

TEST(PtrCounting, MoveTransfersTheReferenceWithoutCounting) {
  int destroyed = 0;
  Ptr<Base> a = make<Base>(&destroyed);
  Base* raw = a.get();
  Ptr<Base> b = std::move(a);
  EXPECT_EQ(b.get(), raw);
  EXPECT_EQ(raw->references(), 1u);
  Ptr<Base> c;
  c = std::move(b);
  EXPECT_EQ(raw->references(), 1u);
  EXPECT_EQ(destroyed, 0);
  // Assigning over the last reference releases the object it held.
  c = make<Base>();
  EXPECT_EQ(destroyed, 1);
}

TEST(PtrCounting, SelfAssignmentKeepsTheObject) {
  int destroyed = 0;
  Ptr<Base> p = make<Base>(&destroyed);
  Ptr<Base>& alias = p;
  p = alias;
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(p->references(), 1u);
  p = std::move(alias);
  EXPECT_EQ(destroyed, 0);
  ASSERT_TRUE(p);
  EXPECT_EQ(p->references(), 1u);
}

TEST(PtrConversion, DerivedToBaseConstSharesTheCount) {
  int destroyed = 0;
  Ptr<Derived> d = make<Derived>(&destroyed);
  Ptr<Base const> b = d;
  EXPECT_EQ(d->references(), 2u);
  EXPECT_TRUE(b == d);
  d = nullptr;
  EXPECT_EQ(destroyed, 0);
  Ptr<Derived const> back = ptrCast<Derived const>(b);
  EXPECT_EQ(back->value, 7);
  EXPECT_EQ(b->references(), 2u);
  b = nullptr;
  back = nullptr;
  EXPECT_EQ(destroyed, 1);
}

TEST(LiveObjects, ReturnsToItsStartAfterAGroupIsDropped) {
  long const start = Object::liveObjects();
  {
    std::vector<Ptr<Base>> group;
    for (int i = 0; i < 100; ++i)
      group.push_back(make<Derived>());
    std::vector<Ptr<Base const>> sharers(group.begin(), group.end());
    EXPECT_EQ(Object::liveObjects(), start + 100);
    group.clear();
    EXPECT_EQ(Object::liveObjects(), start + 100);
  }
  EXPECT_EQ(Object::liveObjects(), start);
}

// Restores the process-wide switch even when an expectation fails midway.
class ThreadSafeScope {
 public:
  ThreadSafeScope() : was_(threadSafePtrs()) { threadSafePtrsIs(true); }
  ~ThreadSafeScope() { threadSafePtrsIs(was_); }

 private:
  bool was_;
};

TEST(AtomicCounting, ThreadsCopyingOneObjectLeaveTheCountExact) {
  long const start = Object::liveObjects();
  int destroyed = 0;
  {
    ThreadSafeScope atomic;
    EXPECT_TRUE(threadSafePtrs());
    Ptr<Base> shared = make<Base>(&destroyed);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
      threads.emplace_back([&shared] {
        for (int i = 0; i < 50000; ++i) {
          Ptr<Base> a = shared;
          Ptr<Base const> b = a;
          Ptr<Base> c = std::move(a);
        }
      });
    }
    for (auto& t : threads)
      t.join();
    EXPECT_EQ(shared->references(), 1u);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
  EXPECT_FALSE(threadSafePtrs());
  EXPECT_EQ(Object::liveObjects(), start);
}

}  // namespace
}  // namespace Orb
