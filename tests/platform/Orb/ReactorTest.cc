// Reactor conventions: the notification switch and the zombie mark pass down
// to every part, and element reactors are retired exactly once.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Orb/Reactor.h"

namespace Orb {
namespace {

constexpr AttributeId kMember = 1;
constexpr AttributeId kValue = 2;

using Log = std::vector<std::string>;

class Source : public Entity {
 public:
  Source() : Entity(Name("source")) {}
  void memberIs(U32 k) const { notify(kMember, Key(k)); }
  void valueIs() const { notify(kValue); }
};

class Elem : public Reactor {
 public:
  Elem(Ptr<Source const> const& source, U32 key, Log* log)
      : key_(key), log_(log), watcher_(this, source) {}

  class Watcher : public ReactorNotifiee<Elem> {
   public:
    using ReactorNotifiee::ReactorNotifiee;

   protected:
    void onOwnerAttribute(AttributeId attribute, Key const&) override {
      if (attribute == kValue) owner()->say("value");
    }
  };

  U32 key() const { return key_; }
  Watcher const& watcher() const { return watcher_; }
  void say(std::string const& what) {
    log_->push_back("elem " + std::to_string(key_) + ": " + what);
  }
  std::function<void()> onDel;

 protected:
  void handleDel() override {
    say("del");
    if (onDel) onDel();
  }

 private:
  U32 key_;
  Log* log_;
  Watcher watcher_;
};

// Keeps one element per member the source announces; a second announcement
// of the same member removes it.
class Owner : public Reactor {
 public:
  Owner(Ptr<Source const> source, Log* log)
      : source_(std::move(source)), log_(log), notifiee_(this, source_), elems(this) {}

  class SourceReactor : public ReactorNotifiee<Owner> {
   public:
    using ReactorNotifiee::ReactorNotifiee;

   protected:
    void onOwnerAttribute(AttributeId attribute, Key const& key) override {
      if (attribute == kMember) {
        owner()->memberToggle(key.u32());
      } else {
        owner()->log_->push_back("owner: value");
      }
    }
  };

  void memberToggle(U32 k) {
    if (elems.find(k)) {
      elems.del(k);
    } else {
      elems.insert(k, make<Elem>(source_, k, log_));
    }
  }
  SourceReactor const& notifiee() const { return notifiee_; }

  Ptr<Source const> source_;
  Log* log_;
  SourceReactor notifiee_;
  ReactorColl<U32, Elem> elems;
  bool elementZombieSeenInHandleDel = false;

 protected:
  void handleDel() override {
    log_->push_back("owner: del");
    for (auto const& kv : elems)
      elementZombieSeenInHandleDel |= kv.second->isZombie();
  }
};

class ReactorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    baseline = Object::liveObjects();
    owner->hasNotificationActiveIs(true);
  }
  void addMembers(std::vector<U32> const& keys) {
    for (U32 k : keys)
      source->memberIs(k);
  }
  Log delsInCollectionOrder() const {
    Log out;
    for (U32 k : owner->elems.keys())
      out.push_back("elem " + std::to_string(k) + ": del");
    return out;
  }

  Log log;
  Ptr<Source> source = make<Source>();
  Ptr<Owner> owner = make<Owner>(source, &log);
  long baseline = 0;
};

TEST_F(ReactorTest, ElementsCreatedDuringANotificationHearFromTheNextOne) {
  addMembers({1, 2});
  ASSERT_EQ(owner->elems.size(), 2u);
  EXPECT_EQ(log, Log{});
  source->valueIs();
  EXPECT_EQ(log, (Log{"owner: value", "elem 1: value", "elem 2: value"}));
}

TEST_F(ReactorTest, NotificationSwitchReachesNestedNotifieesAndElements) {
  addMembers({1, 2, 3});
  auto everyone = [&](bool on) {
    bool all =
        owner->hasNotificationActive() == on && owner->notifiee().hasNotificationActive() == on;
    for (auto const& kv : owner->elems) {
      all = all && kv.second->hasNotificationActive() == on &&
            kv.second->watcher().hasNotificationActive() == on;
    }
    return all;
  };
  EXPECT_TRUE(everyone(true));
  owner->hasNotificationActiveIs(false);
  EXPECT_TRUE(everyone(false));
  source->valueIs();
  source->memberIs(4);
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(owner->elems.size(), 3u);
  owner->hasNotificationActiveIs(true);
  EXPECT_TRUE(everyone(true));
}

TEST_F(ReactorTest, ZombieMarkRunsHandleDelOncePerReactorEvenWhenRepeated) {
  addMembers({1, 2, 3, 4, 5});
  Log expected{"owner: del"};
  for (auto const& line : delsInCollectionOrder())
    expected.push_back(line);
  owner->orbDoZombieReactors(true);
  owner->orbDoZombieReactors(true);
  EXPECT_EQ(log, expected);
  EXPECT_TRUE(owner->isZombie());
  for (auto const& kv : owner->elems)
    EXPECT_TRUE(kv.second->isZombie()) << kv.first;

  // Unmarking passes down too, and marking again does not repeat handleDel.
  owner->orbDoZombieReactors(false);
  for (auto const& kv : owner->elems)
    EXPECT_FALSE(kv.second->isZombie()) << kv.first;
  owner->orbDoZombieReactors(true);
  EXPECT_EQ(log, expected);
}

TEST_F(ReactorTest, HandleDelRunsBeforeThePartsAreMarked) {
  addMembers({1, 2});
  owner->orbDoZombieReactors(true);
  EXPECT_FALSE(owner->elementZombieSeenInHandleDel);
}

TEST_F(ReactorTest, HandlersDoNotRunOnAZombie) {
  addMembers({1, 2});
  owner->orbDoZombieReactors(true);
  log.clear();
  source->valueIs();
  source->memberIs(9);
  source->memberIs(1);
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(owner->elems.keys(), (std::vector<U32>{1, 2}));
}

TEST_F(ReactorTest, RemovedElementIsSwitchedOffMarkedAndReleased) {
  addMembers({1, 2});
  Ptr<Elem> held = owner->elems.find(1);
  ASSERT_TRUE(held);
  long const withElements = Object::liveObjects();
  source->memberIs(1);
  EXPECT_EQ(owner->elems.find(1), nullptr);
  EXPECT_TRUE(held->isZombie());
  EXPECT_FALSE(held->hasNotificationActive());
  EXPECT_FALSE(held->watcher().hasNotificationActive());
  EXPECT_EQ(log, Log{"elem 1: del"});
  EXPECT_EQ(Object::liveObjects(), withElements);

  source->memberIs(2);
  EXPECT_EQ(Object::liveObjects(), withElements - 1);
  held = nullptr;
  EXPECT_EQ(Object::liveObjects(), baseline);

  log.clear();
  source->valueIs();
  EXPECT_EQ(log, Log{"owner: value"});
}

TEST_F(ReactorTest, DelUnlessAndDelAllRetireInCollectionOrder) {
  addMembers({1, 2, 3, 4, 5, 6});
  Log oddDels;
  for (U32 k : owner->elems.keys()) {
    if (k % 2 == 1) oddDels.push_back("elem " + std::to_string(k) + ": del");
  }
  owner->elems.delUnless([](U32 k) { return k % 2 == 0; });
  EXPECT_EQ(log, oddDels);
  auto kept = owner->elems.keys();
  std::sort(kept.begin(), kept.end());
  EXPECT_EQ(kept, (std::vector<U32>{2, 4, 6}));
  EXPECT_EQ(Object::liveObjects(), baseline + 3);

  log.clear();
  Log evenDels = delsInCollectionOrder();
  owner->elems.delAll();
  EXPECT_EQ(log, evenDels);
  EXPECT_EQ(owner->elems.size(), 0u);
  EXPECT_EQ(Object::liveObjects(), baseline);
}

TEST_F(ReactorTest, InsertingOverAnElementRetiresThePreviousOne) {
  Ptr<Elem> first = make<Elem>(source, 1, &log);
  Ptr<Elem> second = make<Elem>(source, 1, &log);
  owner->elems.insert(1, first);
  EXPECT_TRUE(first->hasNotificationActive());
  owner->elems.insert(1, second);
  EXPECT_TRUE(first->isZombie());
  EXPECT_FALSE(first->hasNotificationActive());
  EXPECT_FALSE(second->isZombie());
  EXPECT_TRUE(second->hasNotificationActive());
  EXPECT_EQ(owner->elems.find(1), second.get());
  EXPECT_EQ(log, Log{"elem 1: del"});
}

TEST_F(ReactorTest, ElementRemovingItselfWhileBeingMarkedIsSafe) {
  addMembers({1, 2, 3});
  for (auto const& kv : owner->elems) {
    Elem* e = kv.second.get();
    e->onDel = [this, e] { owner->elems.del(e->key()); };
  }
  long const withElements = Object::liveObjects();
  owner->orbDoZombieReactors(true);
  EXPECT_EQ(owner->elems.size(), 0u);
  EXPECT_EQ(Object::liveObjects(), withElements - 3);
  EXPECT_EQ(log.size(), 4u);
}

TEST_F(ReactorTest, RetiredOwnerLeavesNothingBehind) {
  addMembers({1, 2, 3});
  owner->hasNotificationActiveIs(false);
  owner->orbDoZombieReactors(true);
  owner = nullptr;
  EXPECT_EQ(Object::liveObjects(), baseline - 1);
  EXPECT_EQ(source->notifiees(), 0u);
}

}  // namespace
}  // namespace Orb
