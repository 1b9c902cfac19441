// Community lists, entries and sets: the engine names the library makes, the
// words of each kind, the exact twins and which operations commit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Acl/CommunityList.h"
#include "Harness.h"

namespace {

using Acl::CommunityListEntry;
using Acl::CommunityValue;
using Routing::RouteMap::CommunitySet;
using Tessel::Cog;
using testing::HasSubstr;
using CommunityCommandsTest = TesselTest::CogTest;

class EntryTest : public CommunityCommandsTest {
 protected:
  Orb::Ptr<CommunityListEntry> entry(Orb::U32 seqno, Acl::CommunityListType type,
                                     Acl::MatchPermit permit = Acl::permit) {
    auto e = list->communityListEntryIs(seqno);
    e->listTypeIs(type);
    e->permitIs(permit);
    e->communityValueIs({{1, 2, 3}, {4, 5, 6}});
    e->regexIs("^65001:");
    return e;
  }
  Orb::Ptr<Acl::CommunityList> list = Acl::CommunityList::create("L");
};

std::string setDeletes(std::string const& name) {
  return "delCommunitySet [512 524 525=\"/policy/commset " + name + "\"] delete\ncommit\n" +
         "delCommunitySet [512 526 527=\"/policy/commset " + name + "\"] delete\ncommit\n" +
         "delCommunitySet [512 631 632=\"/policy/commset " + name + "\"] delete\ncommit\n";
}

TEST_F(EntryTest, EntryRewritesItsSetThenTheEntryAndItsExactTwinWithoutCommitting) {
  cog->doAddCommunityListEntry("L", *entry(10, Acl::extendedRegex));
  EXPECT_EQ(setDeletes(".L10") +
                "addCommunitySet [512 526 527=\"/policy/commset .L10\"] 0:str=\".L10\" "
                "4:str=\"^65001:\"\ncommit\n"
                "addCommunityListEntry [512 528 529=\"/policy/commlist L\" 530 531=\"entry .L10\"] "
                "0:str=\".L10\" 5:u32=10 1:u32=1 4:flag=true\n"
                "addCommunityListEntryExact [512 528 529=\"/policy/commlist .exact.L\" 530 "
                "531=\"entry .L10\"] 0:str=\".L10\" 5:u32=10 1:u32=1 4:flag=true 2:flag=true\n",
            sent());

  cog->doDelCommunityListEntry("L", 10);
  EXPECT_EQ(setDeletes(".L10") +
                "delCommunityListEntry [512 528 529=\"/policy/commlist L\" 530 531=\"entry "
                ".L10\"] delete\n"
                "delCommunityListEntryExact [512 528 529=\"/policy/commlist .exact.L\" 530 "
                "531=\"entry .L10\"] delete\n",
            sent());
}

TEST_F(EntryTest, ListTypeDecidesSetNodeWordsPerValueAndKindSent) {
  struct Row {
    Acl::CommunityListType type;
    std::string set;   // the addCommunitySet line's node and values
    std::string kind;  // value 1 of the entry, if any
  };
  Row const rows[] = {
      {Acl::standardValues, "524 525=\"/policy/commset .L10\"] 0:str=\".L10\" 2:u32s=[3,6]",
       " 1:u32=0"},
      {Acl::standardRegex, "524 525=\"/policy/commset .L10\"] 0:str=\".L10\" 4:str=\"^65001:\"",
       " 1:u32=0"},
      {Acl::extendedValues, "526 527=\"/policy/commset .L10\"] 0:str=\".L10\" 2:u32s=[2,3,5,6]",
       " 1:u32=1"},
      {Acl::largeValues, "631 632=\"/policy/commset .L10\"] 0:str=\".L10\" 2:u32s=[1,2,3,4,5,6]",
       " 1:u32=2"},
      {Acl::largeRegex, "631 632=\"/policy/commset .L10\"] 0:str=\".L10\" 4:str=\"^65001:\"",
       " 1:u32=2"},
      // Unknown types: a bare standard set and no kind at all.
      {Acl::CommunityListType(6), "524 525=\"/policy/commset .L10\"] 0:str=\".L10\"", ""},
  };
  for (Row const& row : rows) {
    // Deny is value 1 only; any other value permits.
    cog->doAddCommunityListEntry("L", *entry(10, row.type, Acl::MatchPermit(7)));
    std::string const values = " 0:str=\".L10\" 5:u32=10" + row.kind + " 4:flag=true";
    EXPECT_EQ(setDeletes(".L10") + "addCommunitySet [512 " + row.set + "\ncommit\n" +
                  "addCommunityListEntry [512 528 529=\"/policy/commlist L\" 530 "
                  "531=\"entry .L10\"]" +
                  values +
                  "\naddCommunityListEntryExact [512 528 529=\"/policy/commlist .exact.L\" "
                  "530 531=\"entry .L10\"]" +
                  values + " 2:flag=true\n",
              sent())
        << "list type " << row.type;
  }
  auto e = entry(10, Acl::standardValues, Acl::deny);
  e->communityValueIs({});
  cog->doAddListCommSet(".x", *e);
  EXPECT_EQ("addCommunitySet [512 524 525=\"/policy/commset .x\"] 0:str=\".x\" 2:u32s=[]\ncommit\n",
            sent())
      << "an entry without values sends an empty array";
}

// The entry key cuts the literal "/commlist/entry " by the sequence number;
// beyond its 16 characters the number itself leads the key.
TEST_F(EntryTest, EntryKeyIsTheSameForAddDeleteAndPrivateEntries) {
  struct Row {
    Orb::U32 seqno;
    std::string key;
  };
  Row const rows[] = {{0, "/commlist/entry .L0"},
                      {10, "entry .L10"},
                      {15, " .L15"},
                      {16, ".L16"},
                      {17, "17 .L17"},
                      {4294967295u, "4294967295 .L4294967295"}};
  for (Row const& row : rows) {
    std::string const key = "531=\"" + row.key + "\"]";
    cog->doAddCommunityListEntry("L", *entry(row.seqno, Acl::standardValues));
    cog->doDelCommunityListEntry("L", row.seqno);
    cog->doAddCommunitySetToList("L", row.seqno, Cog::getCommunitySetName("L", row.seqno),
                                 Acl::permit);
    std::string const stream = sent();
    std::size_t keys = 0;
    for (std::size_t at = stream.find(key); at != std::string::npos; at = stream.find(key, at + 1))
      ++keys;
    EXPECT_EQ(5u, keys) << "sequence " << row.seqno << "\n" << stream;
  }
}

TEST_F(CommunityCommandsTest, NamesJoinWithoutSeparatorSoSomeEntriesShareASet) {
  EXPECT_EQ(".a12", Cog::getCommunitySetName("a1", 2).str());
  EXPECT_EQ(".a12", Cog::getCommunitySetName("a", 12).str());
  EXPECT_EQ(".csM20ar", Cog::getInternalCommunitySetName("M", 20, Acl::commSetAdd_).str());
  EXPECT_EQ(".csM20ar", Cog::getInternalCommunitySetName("M", 20, Acl::CommSetFlag(9)).str());
  EXPECT_EQ(".clM20del", Cog::getInternalCommunityListName("M", 20, Acl::commSetDelete_).str());
  EXPECT_EQ(".clM20ar", Cog::getInternalCommunityListName("M", 20, Acl::commSetNone_).str());
}

TEST_F(CommunityCommandsTest, ListsAndPrivateEntriesDoNotCommitRemovalsDo) {
  cog->doAddCommunityList("L");
  cog->doAddCommunityList(".exact.L");
  cog->doAddCommunitySetToList(".clM20ar", 10, ".A10", Acl::deny);
  cog->doDelCommunityList("L");
  EXPECT_EQ(
      "addCommunityList [512 528 529=\"/policy/commlist L\"] 0:str=\"L\"\n"
      "addCommunityList [512 528 529=\"/policy/commlist .exact.L\"] 0:str=\".exact.L\"\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clM20ar\" 530 531=\"entry .A10\"] "
      "0:str=\".A10\" 5:u32=10 1:u32=0 4:flag=false\n"
      "delCommunityList [512 528 529=\"/policy/commlist L\"] delete\ncommit\n",
      sent());
}

TEST_F(CommunityCommandsTest, ClauseSetsSendTheirKindsWordsAndReportLinkBandwidth) {
  auto setOf = [](Acl::CommSetFlag flag, std::set<CommunityValue> values) {
    return CommunitySet::create({flag, false, {}, std::move(values)});
  };
  struct Row {
    Acl::CommSetFlag flag;
    Orb::U32 upper;  // the second word: type and subtype in its top half
    Acl::CommunityType type;
    bool linkBandwidth;
    std::string set;
  };
  Row const rows[] = {
      {Acl::commSetReplace_, 0x40040001, Acl::communityExtended, true,
       "526 527=\"/policy/commset .e\"] 0:str=\".e\" 2:u32s=[131073,7,1074003969,9]"},
      {Acl::commSetAdd_, 0x00040001, Acl::communityExtended, true,
       "526 527=\"/policy/commset .e\"] 0:str=\".e\" 2:u32s=[131073,7,262145,9]"},
      {Acl::commSetAdd_, 0x00020005, Acl::communityExtended, false,
       "526 527=\"/policy/commset .e\"] 0:str=\".e\" 2:u32s=[131073,7,131077,9]"},
      // Only extended sets carry link bandwidth; an empty set carries nothing.
      {Acl::commSetAdd_, 0x40040001, Acl::communityLarge, false,
       "631 632=\"/policy/commset .e\"] 0:str=\".e\" 2:u32s=[0,131073,7,0,1074003969,9]"},
      {Acl::commSetNone_, 0x40040001, Acl::communityExtended, false,
       "526 527=\"/policy/commset .e\"] 0:str=\".e\" 1:flag=true"},
  };
  for (Row const& row : rows) {
    auto set = setOf(row.flag, {{0, row.upper, 9}, {0, 0x00020001, 7}});
    EXPECT_EQ(row.linkBandwidth, cog->doAddSetCommSet(".e", set, row.type)) << row.upper;
    EXPECT_EQ("addCommunitySet [512 " + row.set + "\ncommit\n", sent()) << row.upper;
  }
}

TEST_F(CommunityCommandsTest, UnknownCommunityTypeIsAProgrammingError) {
  auto set = CommunitySet::create({});
  EXPECT_DEATH(
      TesselTest::withTraceOnStderr([&] { cog->doDelCommSet(".x", Acl::CommunityType(3)); }),
      "0 Error: unrecognized community type: 3\n.*Assertion failed: 0");
  EXPECT_DEATH(TesselTest::withTraceOnStderr(
                   [&] { cog->doAddSetCommSet(".x", set, Acl::CommunityType(7)); }),
               "0 Error: unrecognized community type: 7\n.*Assertion failed: 0");
}

}  // namespace
