// The community clause records: order, hash, identity of sets, notification
// of the user index, and the text forms with their parse errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Harness.h"
#include "Tessel/CommListUsers.h"
#include "TesselUtil/CommSetClauseText.h"

namespace {

using Acl::commSetAdd_;
using Acl::commSetDelete_;
using Routing::RouteMap::CommunitySet;
using Tessel::CommSetClauseInMapEntry;
using Tessel::MapEntryCommSetClause;

Orb::Ptr<CommunitySet const> set(std::set<Orb::Name> lists) {
  return CommunitySet::create({commSetAdd_, true, std::move(lists), {}});
}

/// Records (attribute, key text) of one entity's notifications.
class KeyRecorder final : public Orb::Notifiee {
 public:
  explicit KeyRecorder(Orb::Ptr<Orb::Entity const> e) : Notifiee(std::move(e)) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId, Orb::Key const& key) override {
    if (auto const* k = key.as<MapEntryCommSetClause>()) {
      seen.push_back(Tessel::valueToStrep(*k));
    } else {
      seen.push_back(key.isName() ? key.name().str() : "?");
    }
  }
  std::vector<std::string> seen;
};

TEST(CommSetClauseOrder, NameThenUnsignedSequenceThenSignedFlag) {
  std::vector<MapEntryCommSetClause> keys = {
      {"M", 10, commSetAdd_}, {"M", 0x80000000u, commSetAdd_},
      {"A", 99, commSetAdd_}, {"M", 9, commSetAdd_},
      {"M", 1, commSetAdd_},  {"M", 9, Acl::CommSetFlag(0x80000000u)},
  };
  std::sort(keys.begin(), keys.end());
  std::vector<std::string> order;
  for (auto const& k : keys)
    order.push_back(k.mapName().str() + "/" + std::to_string(k.mapSeqno()) + "/" +
                    std::to_string(Orb::S32(k.flag())));
  EXPECT_EQ((std::vector<std::string>{"A/99/3", "M/1/3", "M/9/-2147483648", "M/9/3", "M/10/3",
                                      "M/2147483648/3"}),
            order);
}

TEST(CommSetClauseKey, FlagSeparatesKeysAndHashFollowsAllFields) {
  MapEntryCommSetClause add("M", 10, commSetAdd_), del("M", 10, commSetDelete_);
  EXPECT_NE(add, del);
  EXPECT_NE(add.hash(0), del.hash(0));
  EXPECT_EQ(add.hash(0), MapEntryCommSetClause("M", 10, commSetAdd_).hash(0));
  EXPECT_NE(add.hash(0), add.hash(1)) << "the seed takes part";
  EXPECT_TRUE(!MapEntryCommSetClause());
  EXPECT_FALSE(!add);
}

TEST(CommSetClauseRecord, EqualityIsKeyAndSetIdentity) {
  auto s1 = set({"A"}), s2 = set({"A"});
  CommSetClauseInMapEntry r1({"M", 10, commSetAdd_}, s1);
  EXPECT_EQ(r1, CommSetClauseInMapEntry({"M", 10, commSetAdd_}, s1));
  EXPECT_NE(r1, CommSetClauseInMapEntry({"M", 10, commSetAdd_}, s2))
      << "equal content, other object";
  EXPECT_TRUE(!CommSetClauseInMapEntry());
}

TEST(CommSetClauseColl, EqualRecordIsSilentAndOtherSetReplacesAndNotifies) {
  long live = Orb::Object::liveObjects();
  {
    auto coll = Tessel::commSetClauseMapEntryCollFactory("A");
    KeyRecorder rec(coll);
    auto s1 = set({"A"}), s2 = set({"A"});
    MapEntryCommSetClause key("M", 10, commSetAdd_);
    coll->commSetClauseIs({key, s1});
    coll->commSetClauseIs({key, s1});
    EXPECT_EQ(1u, rec.seen.size());
    EXPECT_EQ(2u, s1->references()) << "the record holds one reference";
    coll->commSetClauseIs({key, s2});
    EXPECT_EQ(2u, rec.seen.size());
    EXPECT_EQ(1u, s1->references()) << "replacing released the old set";
    EXPECT_EQ(s2, coll->commSetClause(key)->commSet());
    coll->commSetClauseIs({{"M", 10, commSetDelete_}, s2});
    EXPECT_EQ(2u, coll->commSetClause().size());
    coll->commSetClauseDel({"N", 1, commSetAdd_});  // absent: silent
    EXPECT_EQ(3u, rec.seen.size());
    coll->commSetClauseDelAll();
    EXPECT_EQ(5u, rec.seen.size());
    EXPECT_EQ(1u, s2->references());
  }
  EXPECT_EQ(live, Orb::Object::liveObjects());
}

TEST(CommSetClauseColl, WalksInHashOrderNotInsertionOrder) {
  auto coll = Tessel::commSetClauseMapEntryCollFactory("A");
  std::vector<MapEntryCommSetClause> keys;
  for (Orb::U32 seq = 10; seq <= 100; seq += 10)
    keys.emplace_back("M", seq, commSetAdd_);
  for (auto it = keys.rbegin(); it != keys.rend(); ++it)
    coll->commSetClauseIs({*it, nullptr});
  std::vector<MapEntryCommSetClause> walked;
  for (auto const& kv : coll->commSetClause())
    walked.push_back(kv.first);
  std::sort(keys.begin(), keys.end(),
            [](auto const& a, auto const& b) { return a.hash(0) < b.hash(0); });
  EXPECT_EQ(keys, walked);
}

TEST(CommListUsersIndex, CollectionsComeAndGoWithNotifications) {
  auto users = Tessel::CommListUsers::create("comm-list-users");
  KeyRecorder rec(users);
  auto b = users->commListUserIs("B");
  auto a = users->commListUserIs("A");
  EXPECT_EQ(a, users->commListUserIs("A")) << "existing: same collection, no notification";
  EXPECT_EQ((std::vector<std::string>{"B", "A"}), rec.seen);
  EXPECT_EQ(users.get(), a->parent());
  std::vector<std::string> names;
  for (auto const& kv : users->commListUser())
    names.push_back(kv.first.str());
  EXPECT_EQ((std::vector<std::string>{"A", "B"}), names) << "walked in name order";

  EXPECT_FALSE(users->commListUserDel("Z"));
  EXPECT_EQ(a, users->commListUserDel("A"));
  EXPECT_EQ(nullptr, a->parent());
  users->commListUserDelAll();
  EXPECT_TRUE(users->commListUser().empty());
  EXPECT_EQ((std::vector<std::string>{"B", "A", "A", "B"}), rec.seen);
}

TEST(CommSetClauseText, KeyAndRecordRoundTrip) {
  MapEntryCommSetClause key("map \"x\"\x01", 4294967295u, commSetDelete_);
  std::string text = Tessel::valueToStrep(key);
  EXPECT_EQ(
      "Value('Tessel::MapEntryCommSetClause', ** {'mapName': \"map \\\"x\\\"\\x01\", "
      "'mapSeqno': 4294967295, 'flag': commSetDelete})",
      text);
  EXPECT_EQ(key, MapEntryCommSetClause(text));

  auto s = set({"A"});
  CommSetClauseInMapEntry record(key, s);
  std::string recordText = Tessel::valueToStrep(record);
  EXPECT_EQ(record, CommSetClauseInMapEntry(recordText));
  EXPECT_EQ(CommSetClauseInMapEntry(key, nullptr),
            CommSetClauseInMapEntry(Tessel::valueToStrep(CommSetClauseInMapEntry(key, nullptr))));
}

TEST(CommSetClauseText, DefaultKeyReadsBackAsDefault) {
  MapEntryCommSetClause parsed(Tessel::valueToStrep(MapEntryCommSetClause()));
  EXPECT_TRUE(!parsed);
}

std::string parseError(std::string const& text) {
  try {
    CommSetClauseInMapEntry parsed(text);
  } catch (Orb::RangeError const& e) {
    return e.what();
  }
  return "no error";
}

TEST(CommSetClauseText, ErrorsNameTheFieldAtFault) {
  std::string good = Tessel::valueToStrep(CommSetClauseInMapEntry({"M", 10, commSetAdd_}, nullptr));
  auto replace = [&](std::string const& from, std::string const& to) {
    std::string t = good;
    t.replace(t.find(from), from.size(), to);
    return t;
  };
  EXPECT_EQ(0u, parseError(replace("10", "x")).find("mapEntryClause: mapSeqno: "));
  EXPECT_EQ(0u, parseError(replace("\"M\"", "M")).find("mapEntryClause: mapName: "));
  EXPECT_EQ(0u, parseError(replace("commSetAdd", "sideways")).find("mapEntryClause: flag: "));
  EXPECT_EQ(0u, parseError(replace("0x0", "0x1234")).find("commSet: "));
  EXPECT_EQ(
      0u,
      parseError(replace("Value('Tessel::CommSetClauseInMapEntry'", "Value('X'")).find("expected"));
  EXPECT_NE("no error", parseError(good + " trailing"));
}

}  // namespace
