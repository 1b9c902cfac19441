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

struct Thing : Entity {
  Thing() : Entity(Name("t")) {}
  using Entity::notify;
};

using Log = std::vector<std::string>;

// Logs "<tag>:<attribute>:<key>" and then runs its hook, if any.
struct Recorder : Notifiee {
  Recorder(Ptr<Entity const> n, std::string t, Log* l, bool active = true)
      : Notifiee(std::move(n)), tag(std::move(t)), log(l) {
    // Left alone when false: notifiees must start switched off.
    if (active) hasNotificationActiveIs(true);
  }
  void onAttribute(AttributeId attribute, Key const& key) override {
    std::ostringstream os;
    os << tag << ":" << attribute << ":" << key;
    log->push_back(os.str());
    if (hook) hook();
  }
  std::string tag;
  Log* log;
  std::function<void()> hook;
};

class NotificationTest : public ::testing::Test {
 protected:
  Ptr<Thing> thing = make<Thing>();
  Log log;
};

TEST_F(NotificationTest, OnlyActiveNotifieesOfAnActiveEntityHearInRegistrationOrder) {
  Recorder a(thing, "a", &log);
  Recorder quiet(thing, "quiet", &log, false);
  Recorder b(thing, "b", &log);
  thing->notify(kMember, Key(5u));
  EXPECT_EQ(log, (Log{"a:2:5", "b:2:5"}));

  thing->hasNotificationActiveIs(false);
  thing->notify(kValue);
  EXPECT_EQ(log, (Log{"a:2:5", "b:2:5"}));
}

TEST_F(NotificationTest, LeaversAreSkippedAtOnceAndJoinersWaitForTheNextNotification) {
  Recorder a(thing, "a", &log);
  auto b = std::make_unique<Recorder>(thing, "b", &log);
  auto c = std::make_unique<Recorder>(thing, "c", &log);
  Recorder d(thing, "d", &log);
  std::unique_ptr<Recorder> late;
  a.hook = [&] {
    b.reset();
    if (!late) late = std::make_unique<Recorder>(thing, "late", &log);
  };
  c->hook = [&] { c.reset(); };
  thing->notify(kValue);
  EXPECT_EQ(log, (Log{"a:1:-", "c:1:-", "d:1:-"}));
  EXPECT_EQ(thing->notifiees(), 3u);

  log.clear();
  thing->notify(kValue);
  EXPECT_EQ(log, (Log{"a:1:-", "d:1:-", "late:1:-"}));
}

TEST_F(NotificationTest, ListIsCompactedOnlyWhenTheOutermostNotificationEnds) {
  Recorder a(thing, "a", &log);
  auto b = std::make_unique<Recorder>(thing, "b", &log);
  Recorder c(thing, "c", &log);
  bool nested = false;
  a.hook = [&] {
    if (!std::exchange(nested, true)) thing->notify(kMember, Key(Name("x")));
  };
  b->hook = [&] { b.reset(); };
  thing->notify(kValue);
  EXPECT_EQ(log, (Log{"a:1:-", "a:2:x", "b:2:x", "c:2:x", "c:1:-"}));
  EXPECT_EQ(thing->notifiees(), 2u);
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
  raw->notify(kValue);
  EXPECT_EQ(log, Log{"first:1:-"});
  EXPECT_EQ(Object::liveObjects(), before - 1);
}

}  // namespace
}  // namespace Orb
