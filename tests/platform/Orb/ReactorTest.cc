// Reactor conventions: the notification switch and the zombie mark pass down
// to every part, and element reactors are retired exactly once.
#include <gtest/gtest.h>

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

struct Source : Entity {
  Source() : Entity(Name("source")) {}
  void memberIs(U32 k) const { notify(kMember, Key(k)); }
  void valueIs() const { notify(kValue); }
};

struct Elem : Reactor {
  Elem(Ptr<Source const> const& source, U32 k, Log* l) : key(k), log(l), watcher(this, source) {}

  struct Watcher : ReactorNotifiee<Elem> {
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(AttributeId attribute, Key const&) override {
      if (attribute == kValue) owner()->say("value");
    }
  };

  void say(std::string const& what) { log->push_back("elem " + std::to_string(key) + ": " + what); }
  void handleDel() override {
    say("del");
    if (onDel) onDel();
  }

  U32 key;
  Log* log;
  Watcher watcher;
  std::function<void()> onDel;
};

// Keeps one element per member the source announces; a second announcement
// of the same member removes it.
struct Owner : Reactor {
  Owner(Ptr<Source const> s, Log* l) : source(std::move(s)), log(l), notifiee(this, source) {}

  struct SourceReactor : ReactorNotifiee<Owner> {
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(AttributeId attribute, Key const& key) override {
      Owner* o = owner();
      if (attribute == kValue) {
        o->log->push_back("owner: value");
      } else if (o->elems.find(key.u32())) {
        o->elems.del(key.u32());
      } else {
        o->elems.insert(key.u32(), make<Elem>(o->source, key.u32(), o->log));
      }
    }
  };

  void handleDel() override {
    log->push_back("owner: del");
    for (auto const& kv : elems)
      elementZombieSeenInHandleDel |= kv.second->isZombie();
  }

  Ptr<Source const> source;
  Log* log;
  SourceReactor notifiee;
  ReactorColl<U32, Elem> elems{this};
  bool elementZombieSeenInHandleDel = false;
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
  Log delsInCollectionOrder(Log out = {}) const {
    for (U32 k : owner->elems.keys())
      out.push_back("elem " + std::to_string(k) + ": del");
    return out;
  }

  Log log;
  Ptr<Source> source = make<Source>();
  Ptr<Owner> owner = make<Owner>(source, &log);
  long baseline = 0;
};

TEST_F(ReactorTest, NotificationSwitchReachesNestedNotifieesAndElements) {
  addMembers({1, 2});
  source->valueIs();
  owner->hasNotificationActiveIs(false);
  source->valueIs();
  source->memberIs(4);
  owner->hasNotificationActiveIs(true);
  source->valueIs();
  EXPECT_EQ(log, (Log{"owner: value", "elem 1: value", "elem 2: value", "owner: value",
                      "elem 1: value", "elem 2: value"}));
  EXPECT_EQ(owner->elems.size(), 2u);
}

TEST_F(ReactorTest, ZombieMarkRunsHandleDelOnceBeforeThePartsAndSilencesHandlers) {
  addMembers({1, 2, 3, 4, 5});
  Log expected = delsInCollectionOrder({"owner: del"});
  owner->orbDoZombieReactors(true);
  owner->orbDoZombieReactors(true);
  EXPECT_FALSE(owner->elementZombieSeenInHandleDel);
  source->valueIs();
  source->memberIs(9);
  source->memberIs(1);
  EXPECT_EQ(log, expected);
  EXPECT_EQ(owner->elems.size(), 5u);

  // handleDel is tied to the first mark, not to the current one.
  owner->orbDoZombieReactors(false);
  owner->orbDoZombieReactors(true);
  EXPECT_EQ(log, expected);

  owner = nullptr;
  EXPECT_EQ(Object::liveObjects(), baseline - 1);
  EXPECT_EQ(source->notifiees(), 0u);
}

TEST_F(ReactorTest, EveryWayOfRemovingAnElementRetiresIt) {
  addMembers({1, 2, 3, 4});
  std::vector<Ptr<Elem>> gone{owner->elems.find(1), owner->elems.find(2), owner->elems.find(3)};
  source->memberIs(1);
  owner->elems.insert(2, make<Elem>(source, 2, &log));
  owner->elems.delUnless([](U32 k) { return k != 3; });
  EXPECT_EQ(log, (Log{"elem 1: del", "elem 2: del", "elem 3: del"}));
  for (auto const& e : gone)
    EXPECT_TRUE(e->isZombie() && !e->hasNotificationActive() && !e->watcher.hasNotificationActive())
        << e->key;
  Elem* fresh = owner->elems.find(2);
  ASSERT_NE(fresh, nullptr);
  EXPECT_TRUE(fresh->hasNotificationActive() && !fresh->isZombie());

  Log dels = delsInCollectionOrder(log);
  owner->elems.delAll();
  EXPECT_EQ(log, dels);
  gone.clear();
  EXPECT_EQ(Object::liveObjects(), baseline);
}

TEST_F(ReactorTest, ElementRemovingItselfWhileBeingMarkedIsSafe) {
  addMembers({1, 2, 3});
  Log expected = delsInCollectionOrder({"owner: del"});
  for (auto const& kv : owner->elems) {
    Elem* e = kv.second.get();
    e->onDel = [this, e] { owner->elems.del(e->key); };
  }
  owner->orbDoZombieReactors(true);
  EXPECT_EQ(log, expected);
  EXPECT_EQ(owner->elems.size(), 0u);
  EXPECT_EQ(Object::liveObjects(), baseline);
}

TEST_F(ReactorTest, LastReleaseRetiresTheReactorAndItsElementsBeforeDestruction) {
  addMembers({1, 2, 3});
  Log expected = delsInCollectionOrder({"owner: del"});
  owner = nullptr;
  EXPECT_EQ(log, expected);
  EXPECT_EQ(Object::liveObjects(), baseline - 1);
  EXPECT_EQ(source->notifiees(), 0u);
}

TEST_F(ReactorTest, ElementHeldElsewhereIsRetiredWhenItsCollectionGoes) {
  addMembers({1, 2});
  Ptr<Elem> held = owner->elems.find(2);
  owner = nullptr;
  EXPECT_TRUE(held->isZombie());
  EXPECT_FALSE(held->hasNotificationActive() || held->watcher.hasNotificationActive());
  source->valueIs();
  EXPECT_EQ(log, (Log{"owner: del", "elem 1: del", "elem 2: del"}));
}

TEST_F(ReactorTest, HandlerKeepingAReferenceDuringLastReleaseDelaysDestruction) {
  Ptr<Elem> lone = make<Elem>(source, 7, &log);
  Ptr<Elem> kept;
  Elem* raw = lone.get();
  raw->onDel = [&kept, raw] { kept = raw; };
  lone = nullptr;
  ASSERT_EQ(kept.get(), raw);
  EXPECT_TRUE(raw->isZombie());
  EXPECT_EQ(log, (Log{"elem 7: del"}));
  raw->onDel = nullptr;
  kept = nullptr;
  EXPECT_EQ(log, (Log{"elem 7: del"}));
  owner = nullptr;
  EXPECT_EQ(Object::liveObjects(), baseline - 1);
}

TEST_F(ReactorTest, SlotRetiresWhatItLetsGoExceptWhatIsTaken) {
  std::vector<Ptr<Elem>> elems;
  for (U32 k : {1, 2, 3}) {
    elems.push_back(make<Elem>(source, k, &log));
    elems.back()->hasNotificationActiveIs(true);
  }
  {
    ReactorSlot<Elem> slot;
    slot = elems[0];
    slot = elems[0];
    EXPECT_EQ(log, Log{}) << "storing the same reactor again keeps it";
    slot = elems[1];
    Ptr<Elem> taken = slot.take();
    EXPECT_FALSE(slot);
    EXPECT_TRUE(!taken->isZombie() && !taken->watcher.hasNotificationActive());
    slot = elems[2];
  }
  EXPECT_EQ(log, (Log{"elem 1: del", "elem 3: del"}));
  for (std::size_t i : {0u, 2u})
    EXPECT_TRUE(elems[i]->isZombie() && !elems[i]->watcher.hasNotificationActive()) << i;
  elems.clear();
  EXPECT_EQ(log, (Log{"elem 1: del", "elem 3: del", "elem 2: del"})) << "taken: marked at release";
}

}  // namespace
}  // namespace Orb
