// The community-list reactor: lists, exact twins and entries reaching the
// engine as they change, entries waiting for their version, sets deleted when
// a list goes, and every change rebuilding the route-map clauses that copied
// the list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Harness.h"
#include "Tessel/AclListConfigSm.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using testing::HasSubstr;

std::string listLine(std::string const& op, std::string const& name) {
  return op + " [512 528 529=\"/policy/commlist " + name + "\"]" +
         (op == "addCommunityList" ? " 0:str=\"" + name + "\"\n" : " delete\ncommit\n");
}

std::string setDeletes(std::string const& set) {
  std::string out;
  for (char const* node : {"524 525", "526 527", "631 632"})
    out += "delCommunitySet [512 " + std::string(node) + "=\"/policy/commset " + set +
           "\"] delete\ncommit\n";
  return out;
}

// A standard entry of list L holding the single value `value`, permitted.
std::string entryLines(std::string const& list, Orb::U32 seqno, Orb::U32 value) {
  std::string const seq = std::to_string(seqno), set = "." + list + seq;
  std::string const cut = seqno <= 16 ? std::string("/commlist/entry ").substr(seqno) : seq + " ";
  std::string const key =
      " 530 531=\"" + cut + set + "\"] 0:str=\"" + set + "\" 5:u32=" + seq + " 1:u32=0 4:flag=true";
  return setDeletes(set) + "addCommunitySet [512 524 525=\"/policy/commset " + set +
         "\"] 0:str=\"" + set + "\" 2:u32s=[" + std::to_string(value) + "]\ncommit\n" +
         "addCommunityListEntry [512 528 529=\"/policy/commlist " + list + "\"" + key + "\n" +
         "addCommunityListEntryExact [512 528 529=\"/policy/commlist .exact." + list + "\"" + key +
         " 2:flag=true\n";
}

class CommunityListReactorTest : public TesselTest::RootTest {
 protected:
  CommunityListReactorTest() {
    giveAllInputs();
    sent();
  }
  Tessel::AclListConfigSm* sm() const {
    return static_cast<Tessel::AclListConfigSm*>(
        root->vrfStatusSm()->child(Tessel::VrfStatusSm::aclListChild));
  }
  /// Entry `seqno` of `list`, complete at version 1 when `complete`.
  void entryIs(Orb::Ptr<Acl::CommunityList> const& list, Orb::U32 seqno, Orb::U32 value,
               bool complete = true) {
    auto e = list->communityListEntryIs(seqno);
    e->communityValueIs({{0, 0, value}});
    if (complete) e->versionIs(1);
  }
  /// Sequence `seqno` of map `name` setting (adding) the communities of `lists`.
  void clauseIs(char const* name, Orb::U32 seqno, std::set<Orb::Name> lists) {
    auto map = routeMapConfig->routeMapIs(name);
    auto e = map->mapEntryIs(seqno);
    e->setFlagIs(MapEntry::SetFlags::communityAddReplace, true);
    e->communityAddReplaceIs(CommunitySet::create({Acl::commSetAdd_, true, std::move(lists), {}}));
    map->versionInc();
  }
};

TEST_F(CommunityListReactorTest, NewListThenEntriesEachWrittenAtTheirVersion) {
  auto list = aclListConfig->communityListIs("L");
  EXPECT_EQ(
      listLine("addCommunityList", "L") + listLine("addCommunityList", ".exact.L") + "commit\n",
      sent());
  entryIs(list, 10, 100, false);
  EXPECT_EQ("", sent()) << "an entry at version zero is incomplete";
  list->communityListEntry(10)->versionIs(1);
  entryIs(list, 20, 200);
  EXPECT_EQ(entryLines("L", 10, 100) + "commit\n" + entryLines("L", 20, 200) + "commit\n", sent());
  EXPECT_EQ(2u, sm()->orbCommunityList("L")->commSetName().size());
}

TEST_F(CommunityListReactorTest, ReplayWritesEveryListThenEveryEntryAndTearDownDeletesTheSets) {
  auto list = aclListConfig->communityListIs("L");
  entryIs(list, 10, 100);
  entryIs(list, 20, 200, false);
  sent();
  root->aclConfigIs(nullptr);
  std::string const torn = sent();
  EXPECT_EQ(2 * setDeletes(".L10").size(), torn.size()) << "both entries' sets, nothing else\n"
                                                        << torn;
  EXPECT_THAT(torn, HasSubstr(setDeletes(".L10")));
  EXPECT_THAT(torn, HasSubstr(setDeletes(".L20")));

  root->aclConfigIs(aclConfig);
  std::string const replay = sent();
  std::string const lists =
      listLine("addCommunityList", "L") + listLine("addCommunityList", ".exact.L") + "commit\n";
  EXPECT_NE(std::string::npos, replay.find(lists + entryLines("L", 10, 100) + "commit\n"))
      << replay;
  EXPECT_EQ(std::string::npos, replay.find(".L20\"] 0:str")) << "entry 20 is still incomplete";
}

// Entries present when a list reactor is made are written by their own
// reactors; the list deletes their sets when it goes, as it does for entries
// it saw come. An entry completed later is noted when it is written.
TEST_F(CommunityListReactorTest, RebuiltListDeletesTheSetsOfEveryEntryItWrote) {
  auto list = aclListConfig->communityListIs("L");
  entryIs(list, 10, 100);
  entryIs(list, 30, 300, false);
  root->aclConfigIs(nullptr);
  root->aclConfigIs(aclConfig);
  sent();
  EXPECT_EQ(1u, sm()->orbCommunityList("L")->commSetName().size()) << "30 is not written yet";
  list->communityListEntry(30)->versionIs(1);
  entryIs(list, 20, 200);
  sent();
  aclListConfig->communityListDel("L");
  std::string const gone = sent();
  for (char const* set : {".L10", ".L20", ".L30"})
    EXPECT_THAT(gone, HasSubstr(setDeletes(set))) << set;
}

TEST_F(CommunityListReactorTest, RemovingAnEntryThenTheListDeletesThemAndTheRemainingSets) {
  auto list = aclListConfig->communityListIs("L");
  entryIs(list, 10, 100);
  entryIs(list, 20, 200);
  sent();
  list->communityListEntryDel(10);
  EXPECT_EQ(setDeletes(".L10") +
                "delCommunityListEntry [512 528 529=\"/policy/commlist L\" 530 531=\"entry "
                ".L10\"] delete\n"
                "delCommunityListEntryExact [512 528 529=\"/policy/commlist .exact.L\" 530 "
                "531=\"entry .L10\"] delete\ncommit\n",
            sent());
  EXPECT_FALSE(sm()->orbCommunityList("L")->commSetName().contains(10));
  EXPECT_EQ(nullptr, sm()->orbCommunityList("L")->communityListEntry(10));

  aclListConfig->communityListDel("L");
  EXPECT_EQ(listLine("delCommunityList", "L") + listLine("delCommunityList", ".exact.L") +
                "commit\n" + setDeletes(".L20"),
            sent());
  EXPECT_EQ(nullptr, sm()->orbCommunityList("L"));
}

TEST_F(CommunityListReactorTest, ClauseMergesNamedListsInNameOrderSkippingUnconfiguredOnes) {
  auto a = aclListConfig->communityListIs("A");
  auto b = aclListConfig->communityListIs("B");
  entryIs(b, 5, 1);
  entryIs(a, 10, 2);
  a->communityListEntryIs(20)->permitIs(Acl::deny);
  sent();
  clauseIs("M", 1, {"C", "B", "A"});
  std::string const stream = sent();
  std::string const merged =
      "addCommunityList [512 528 529=\"/policy/commlist .clM1ar\"] 0:str=\".clM1ar\"\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clM1ar\" 530 531=\"entry .A10\"] "
      "0:str=\".A10\" 5:u32=10 1:u32=0 4:flag=true\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clM1ar\" 530 531=\"20 .A20\"] "
      "0:str=\".A20\" 5:u32=20 1:u32=0 4:flag=false\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clM1ar\" 530 "
      "531=\"list/entry .B5\"] 0:str=\".B5\" 5:u32=5 1:u32=0 4:flag=true\n"
      "setCommunity [" +
      TesselTest::seqPath("M", 1) + " 601] 12:str=\".clM1ar\" 11:flag=false\n";
  EXPECT_THAT(stream, HasSubstr(merged));
  EXPECT_THAT(trace.text, HasSubstr("merging: Ainto .clM1ar"));
  EXPECT_THAT(trace.text, HasSubstr("merging: Cinto .clM1ar"));

  // The unconfigured list arrives: the clause is rebuilt with nothing more.
  aclListConfig->communityListIs("C");
  EXPECT_THAT(sent(), HasSubstr(merged));
}

TEST_F(CommunityListReactorTest, EntryChangeRebuildsEveryClauseUsingTheListInIndexOrder) {
  auto a = aclListConfig->communityListIs("A");
  entryIs(a, 10, 100);
  clauseIs("N", 20, {"A"});
  clauseIs("M", 10, {"A"});
  clauseIs("P", 30, {"B"});
  sent();
  a->communityListEntry(10)->versionIs(2);
  std::string const stream = sent();
  ASSERT_EQ(0u, stream.find(entryLines("A", 10, 100))) << stream;
  // The refresh follows the index's own order, not the order of the maps.
  std::string order;
  for (auto const& [key, record] : root->commListUsers()->commListUser("A")->commSetClause())
    order += key.mapName().str();
  std::string applied;
  for (std::size_t at = stream.find("setCommunity [512 576=\""); at != std::string::npos;
       at = stream.find("setCommunity [512 576=\"", at + 1))
    applied += stream.substr(at + 23, 1);
  EXPECT_EQ(order, applied) << stream;
  EXPECT_EQ(2u, applied.size()) << "P uses another list";
  EXPECT_EQ(stream.size() - 7, stream.rfind("commit\n")) << "one commit ends the change";
}

}  // namespace
