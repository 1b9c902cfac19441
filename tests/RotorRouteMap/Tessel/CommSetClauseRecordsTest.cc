// The community clause records: order, hash, identity of sets, notification
// of the user index, and the text forms with their parse errors.
#include <gmock/gmock.h>
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
using Strings = std::vector<std::string>;
using testing::StartsWith;

Orb::Ptr<CommunitySet const> set(std::set<Orb::Name> lists) {
  return CommunitySet::create({commSetAdd_, true, std::move(lists), {}});
}

using RecordsTest = TesselTest::EngineTest;

TEST_F(RecordsTest, KeyOrderIsNameThenUnsignedSequenceThenSignedFlag) {
  Acl::CommSetFlag const negative = Acl::CommSetFlag(0x80000000u);
  std::vector<MapEntryCommSetClause> keys = {
      {"M", 10, commSetAdd_}, {"M", 0x80000000u, commSetAdd_}, {"A", 99, commSetAdd_},
      {"M", 9, commSetAdd_},  {"M", 1, commSetAdd_},           {"M", 9, negative}};
  std::vector<MapEntryCommSetClause> const sorted = {
      {"A", 99, commSetAdd_}, {"M", 1, commSetAdd_},  {"M", 9, negative},
      {"M", 9, commSetAdd_},  {"M", 10, commSetAdd_}, {"M", 0x80000000u, commSetAdd_}};
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(sorted, keys);
}

TEST_F(RecordsTest, FlagSeparatesKeysHashMixesFieldsAndSeedRecordsCompareSetIdentity) {
  MapEntryCommSetClause add("M", 10, commSetAdd_), del("M", 10, commSetDelete_);
  EXPECT_NE(add, del);
  EXPECT_NE(add.hash(0), del.hash(0));
  EXPECT_NE(add.hash(0), MapEntryCommSetClause("M", 11, commSetAdd_).hash(0));
  EXPECT_EQ(add.hash(0), MapEntryCommSetClause("M", 10, commSetAdd_).hash(0));
  EXPECT_NE(add.hash(0), add.hash(1)) << "the seed is mixed in";
  EXPECT_TRUE(!MapEntryCommSetClause());

  auto s1 = set({"A"}), s2 = set({"A"});
  EXPECT_EQ(CommSetClauseInMapEntry(add, s1), CommSetClauseInMapEntry(add, s1));
  EXPECT_NE(CommSetClauseInMapEntry(add, s1), CommSetClauseInMapEntry(add, s2))
      << "equal content, other object";
}

TEST_F(RecordsTest, EqualRecordIsSilentAndOtherSetReplacesAndNotifies) {
  auto coll = Tessel::commSetClauseMapEntryCollFactory("A");
  TesselTest::Notifications seen(coll);
  auto s1 = set({"A"}), s2 = set({"A"});
  MapEntryCommSetClause key("M", 10, commSetAdd_);
  coll->commSetClauseIs({key, s1});
  coll->commSetClauseIs({key, s1});
  EXPECT_EQ(1u, seen.keys.size());
  coll->commSetClauseIs({key, s2});
  EXPECT_EQ(1u, s1->references()) << "replacing released the old set";
  EXPECT_EQ(s2, coll->commSetClause(key)->commSet());
  coll->commSetClauseIs({{"M", 10, commSetDelete_}, s2});
  coll->commSetClauseDel({"N", 1, commSetAdd_});  // absent: silent
  EXPECT_EQ(3u, seen.keys.size());
  coll->commSetClauseDelAll();
  EXPECT_EQ(5u, seen.keys.size());
  EXPECT_EQ(1u, s2->references());
}

TEST_F(RecordsTest, CommListUserCollectionsComeAndGoWithNotifications) {
  auto users = Tessel::CommListUsers::create("comm-list-users");
  TesselTest::Notifications seen(users);
  auto b = users->commListUserIs("B");
  auto a = users->commListUserIs("A");
  EXPECT_EQ(a, users->commListUserIs("A")) << "existing: same collection, no notification";
  EXPECT_EQ(users.get(), a->parent());
  EXPECT_FALSE(users->commListUserDel("Z"));
  EXPECT_EQ(a, users->commListUserDel("A"));
  EXPECT_EQ(nullptr, a->parent());
  users->commListUserDelAll();
  EXPECT_TRUE(users->commListUser().empty());
  EXPECT_EQ((Strings{"B", "A", "A", "B"}), seen.keys);
}

TEST_F(RecordsTest, CommListUserDelByIteratorWorksWhileWalking) {
  auto users = Tessel::CommListUsers::create("comm-list-users");
  std::vector<Orb::Ptr<Tessel::CommSetClauseMapEntryColl>> colls{users->commListUserIs("B"),
                                                                 users->commListUserIs("A")};
  TesselTest::Notifications seen(users);
  EXPECT_FALSE(users->commListUserDel(users->commListUser().end()));
  for (auto it = users->commListUser().begin(); it != users->commListUser().end();) {
    auto const at = it++;
    Orb::Ptr<Tessel::CommSetClauseMapEntryColl> const expected = at->second;
    EXPECT_EQ(expected, users->commListUserDel(at));
  }
  EXPECT_TRUE(users->commListUser().empty());
  for (auto const& coll : colls)
    EXPECT_EQ(nullptr, coll->parent());
  EXPECT_EQ((Strings{"A", "B"}), seen.keys);
}

TEST_F(RecordsTest, TextFormsReadBack) {
  MapEntryCommSetClause key("map \"x\"\x01", 4294967295u, commSetDelete_);
  std::string text = Tessel::valueToStrep(key);
  EXPECT_EQ(
      "Value('Tessel::MapEntryCommSetClause', ** {'mapName': \"map \\\"x\\\"\\x01\", "
      "'mapSeqno': 4294967295, 'flag': commSetDelete})",
      text);
  EXPECT_EQ(key, MapEntryCommSetClause(text));
  EXPECT_EQ(text, testing::PrintToString(key)) << "failure messages print the text form";
  EXPECT_THROW(MapEntryCommSetClause(text + " "), Orb::RangeError);
  EXPECT_TRUE(!MapEntryCommSetClause(Tessel::valueToStrep(MapEntryCommSetClause())));

  for (auto const& commSet : {set({"A"}), Orb::Ptr<CommunitySet const>()}) {
    CommSetClauseInMapEntry record(key, commSet);
    EXPECT_EQ(record, CommSetClauseInMapEntry(Tessel::valueToStrep(record)));
    EXPECT_EQ(Tessel::valueToStrep(record), testing::PrintToString(record));
  }
}

TEST_F(RecordsTest, TextErrorsNameTheFieldAtFault) {
  // The message of reading the record text with `from` replaced by `to`.
  auto errorFor = [](std::string const& from, std::string const& to) -> std::string {
    std::string text =
        Tessel::valueToStrep(CommSetClauseInMapEntry({"M", 10, commSetAdd_}, nullptr));
    text.replace(text.rfind(from), from.size(), to);
    try {
      CommSetClauseInMapEntry parsed(text);
    } catch (Orb::RangeError const& e) {
      return e.what();
    }
    return "read without error";
  };
  EXPECT_THAT(errorFor("10", "x"), StartsWith("mapEntryClause: mapSeqno: "));
  EXPECT_THAT(errorFor("\"M\"", "M"), StartsWith("mapEntryClause: mapName: "));
  EXPECT_THAT(errorFor("commSetAdd", "sideways"), StartsWith("mapEntryClause: flag: "));
  EXPECT_THAT(errorFor("0x0", "0x1234"), StartsWith("commSet: "));
  EXPECT_NE("read without error", errorFor("})", "}) trailing"));
}

}  // namespace
