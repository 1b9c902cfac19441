// Notification delivery while the notifiees themselves change the list.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Orb/Entity.h"

namespace Orb {
namespace {

constexpr AttributeId kValue = 1;
constexpr AttributeId kMember = 2;

class Thing : public Entity {
 public:
  explicit Thing(Name name) : Entity(std::move(name)) {}
  void valueIs(U32 v) {
    value_ = v;
    notify(kValue);
  }
  void memberIs(Key const& key) { notify(kMember, key); }
  U32 value() const { return value_; }

 private:
  U32 value_ = 0;
};

std::string keyText(Key const& k) {
  std::ostringstream os;
  os << k;
  return os.str();
}

using Log = std::vector<std::string>;

// Logs "<tag>:<attribute>:<key>" and then runs its hook, if any.
class Recorder : public Notifiee {
 public:
  Recorder(Ptr<Entity const> notifier, std::string tag, Log* log, bool active = true)
      : Notifiee(std::move(notifier)), tag_(std::move(tag)), log_(log) {
    hasNotificationActiveIs(active);
  }
  void onAttribute(AttributeId attribute, Key const& key) override {
    log_->push_back(tag_ + ":" + std::to_string(attribute) + ":" + keyText(key));
    if (hook) hook();
  }
  std::function<void()> hook;

 private:
  std::string tag_;
  Log* log_;
};

class NotificationTest : public ::testing::Test {
 protected:
  Ptr<Thing> thing = make<Thing>(Name("t"));
  Log log;
};

TEST_F(NotificationTest, NotifieesStartInactiveAndHearOnlyWhileActive) {
  Recorder r(thing, "r", &log, false);
  EXPECT_FALSE(r.hasNotificationActive());
  EXPECT_EQ(r.notifier(), thing);
  thing->valueIs(1);
  EXPECT_EQ(log, Log{});
  r.hasNotificationActiveIs(true);
  thing->valueIs(2);
  r.hasNotificationActiveIs(false);
  thing->valueIs(3);
  EXPECT_EQ(log, Log{"r:1:-"});
}

TEST_F(NotificationTest, ActiveNotifieesHearInRegistrationOrder) {
  Recorder a(thing, "a", &log);
  Recorder quiet(thing, "quiet", &log, false);
  Recorder b(thing, "b", &log);
  thing->memberIs(Key(5u));
  EXPECT_EQ(log, (Log{"a:2:5", "b:2:5"}));
  EXPECT_EQ(thing->notifiees(), 3u);
}

TEST_F(NotificationTest, EntitySwitchSilencesEveryNotifiee) {
  Recorder a(thing, "a", &log);
  thing->hasNotificationActiveIs(false);
  thing->valueIs(1);
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(thing->value(), 1u);
  thing->hasNotificationActiveIs(true);
  thing->valueIs(2);
  EXPECT_EQ(log, Log{"a:1:-"});
}

TEST_F(NotificationTest, NotifieeDestroyedByAnEarlierOneIsSkipped) {
  Recorder a(thing, "a", &log);
  auto b = std::make_unique<Recorder>(thing, "b", &log);
  Recorder c(thing, "c", &log);
  a.hook = [&] { b.reset(); };
  thing->valueIs(1);
  EXPECT_EQ(log, (Log{"a:1:-", "c:1:-"}));
  EXPECT_EQ(thing->notifiees(), 2u);
  a.hook = nullptr;
  log.clear();
  thing->valueIs(2);
  EXPECT_EQ(log, (Log{"a:1:-", "c:1:-"}));
}

TEST_F(NotificationTest, NotifieeDestroyingItselfLetsTheRestHear) {
  auto a = std::make_unique<Recorder>(thing, "a", &log);
  Recorder b(thing, "b", &log);
  a->hook = [&] { a.reset(); };
  thing->valueIs(1);
  EXPECT_EQ(log, (Log{"a:1:-", "b:1:-"}));
  EXPECT_EQ(a, nullptr);
  EXPECT_EQ(thing->notifiees(), 1u);
}

TEST_F(NotificationTest, EntityOutlivesTheNotificationThatDropsItsLastReference) {
  long const before = Object::liveObjects();
  Thing* raw = thing.get();
  auto first = std::make_unique<Recorder>(thing, "first", &log);
  auto second = std::make_unique<Recorder>(thing, "second", &log);
  thing = nullptr;
  // The notifiees hold the only references, and the first destroys both.
  first->hook = [&] {
    second.reset();
    first.reset();
  };
  raw->valueIs(1);
  EXPECT_EQ(log, Log{"first:1:-"});
  EXPECT_EQ(Object::liveObjects(), before - 1);
}

TEST_F(NotificationTest, NotifieeRegisteredDuringANotificationWaitsForTheNext) {
  Recorder a(thing, "a", &log);
  std::unique_ptr<Recorder> late;
  a.hook = [&] {
    if (!late) late = std::make_unique<Recorder>(thing, "late", &log);
  };
  thing->valueIs(1);
  EXPECT_EQ(log, Log{"a:1:-"});
  thing->valueIs(2);
  EXPECT_EQ(log, (Log{"a:1:-", "a:1:-", "late:1:-"}));
}

TEST_F(NotificationTest, NestedNotificationReachesEveryoneAndTheListStaysConsistent) {
  Recorder a(thing, "a", &log);
  auto b = std::make_unique<Recorder>(thing, "b", &log);
  Recorder c(thing, "c", &log);
  bool nested = false;
  a.hook = [&] {
    if (nested) return;
    nested = true;
    thing->memberIs(Key(Name("x")));
  };
  // Destroyed during the inner notification, after it heard it.
  b->hook = [&] { b.reset(); };
  thing->valueIs(1);
  EXPECT_EQ(log, (Log{"a:1:-", "a:2:x", "b:2:x", "c:2:x", "c:1:-"}));
  EXPECT_EQ(thing->notifiees(), 2u);
  log.clear();
  thing->valueIs(2);
  EXPECT_EQ(log, (Log{"a:1:-", "c:1:-"}));
}

struct Pair {
  U32 a;
  U32 b;
};

TEST(NotificationKey, KeyHoldsNothingANumberANameOrAnotherType) {
  Key none;
  Key number(7u);
  Key name(Name("R"));
  Key literal("S");
  Key record = Key::of(Pair{1, 2});

  EXPECT_TRUE(none.isNone());
  EXPECT_TRUE(number.isU32());
  EXPECT_EQ(number.u32(), 7u);
  EXPECT_TRUE(name.isName());
  EXPECT_EQ(name.name(), Name("R"));
  EXPECT_TRUE(literal.isName());
  EXPECT_EQ(literal.name(), Name("S"));
  EXPECT_FALSE(record.isNone() || record.isU32() || record.isName());
  ASSERT_NE(record.as<Pair>(), nullptr);
  EXPECT_EQ(record.as<Pair>()->b, 2u);
  EXPECT_EQ(record.as<U32>(), nullptr);
  EXPECT_EQ(number.as<U32>(), nullptr);

  EXPECT_EQ(keyText(none), "-");
  EXPECT_EQ(keyText(number), "7");
  EXPECT_EQ(keyText(name), "R");
  EXPECT_EQ(keyText(record), "<key>");
}

}  // namespace
}  // namespace Orb
