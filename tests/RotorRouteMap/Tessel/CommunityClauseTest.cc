// Community clauses of route maps: private lists built from a clause's own
// values, the extended and large sets, the index of list users and how a
// route-map reactor cleans a sequence's community objects up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Harness.h"
#include "Tessel/RouteMapConfigSm.h"

namespace {

using Acl::CommSetFlag;
using Routing::RouteMap::CommListSet;
using Routing::RouteMap::CommunitySet;
using Tessel::MapEntryCommSetClause;
using testing::HasSubstr;
using testing::Not;

Orb::Ptr<CommunitySet const> valuesSet(CommSetFlag flag, std::set<Acl::CommunityValue> values) {
  return CommunitySet::create({flag, false, {}, std::move(values)});
}

Orb::Ptr<CommunitySet const> listsSet(CommSetFlag flag, std::set<Orb::Name> lists) {
  return CommunitySet::create({flag, true, std::move(lists), {}});
}

std::string seqSet(std::string const& map, Orb::U32 seqno) {
  // Appended rather than "[" + ...: GCC 12 warns falsely on a literal plus a
  // temporary string in optimised builds.
  std::string out = "[";
  out += TesselTest::seqPath(map, seqno);
  out += " 601]";
  return out;
}

// Deleting the private list and set of a variant, as doSetCommunity starts.
std::string privateDeletes(std::string const& variant) {
  return "delCommunityList [512 528 529=\"/policy/commlist .cl" + variant +
         "\"] delete\ncommit\n"
         "delCommunitySet [512 524 525=\"/policy/commset .cs" +
         variant + "\"] delete\ncommit\n";
}

class ClauseTest : public TesselTest::RootTest {
 protected:
  Orb::Ptr<Tessel::Cog> cog = Tessel::cogFactory("default");
  Tessel::CommListUsers& users() { return *root->commListUsers(); }
  /// The clauses recorded under `list`, in the index's order, as "map seqno flag".
  std::vector<std::string> usersOf(char const* list) {
    std::vector<std::string> out;
    if (auto coll = users().commListUser(list)) {
      for (auto const& [key, record] : coll->commSetClause())
        out.push_back(key.mapName().str() + " " + std::to_string(key.mapSeqno()) + " " +
                      std::to_string(key.flag()));
    }
    return out;
  }
};

TEST_F(ClauseTest, ClauseValuesBecomeAPrivateListWithOneDenyEntryAtTen) {
  cog->doSetCommunity("M", 20, valuesSet(Acl::commSetAdd_, {{0, 0, 200}, {0, 0, 100}}));
  EXPECT_EQ(privateDeletes("M20ar") +
                "addCommunitySet [512 524 525=\"/policy/commset .csM20ar\"] 0:str=\".csM20ar\" "
                "2:u32s=[100,200]\ncommit\n"
                "addCommunityList [512 528 529=\"/policy/commlist .clM20ar\"] 0:str=\".clM20ar\"\n"
                "addCommunityListEntry [512 528 529=\"/policy/commlist .clM20ar\" 530 "
                "531=\"entry .csM20ar\"] 0:str=\".csM20ar\" 5:u32=10 1:u32=0 4:flag=false\n"
                "setCommunity " +
                seqSet("M", 20) + " 12:str=\".clM20ar\" 11:flag=false\n",
            sent());
  EXPECT_THAT(trace.text, HasSubstr("\n7  Set  Private  clName=.clM20ar to routemap=M"));
  EXPECT_THAT(trace.text, HasSubstr("\n7 deleting clName=.clM20ar, csName=.csM20ar"));

  // Replacing sends true; deleting uses the "del" variant and names it alone.
  cog->doApplyCommListToRouteMap("M", 20, ".clM20ar", Acl::commSetReplace_);
  cog->doSetCommunity("M", 20, valuesSet(Acl::commSetDelete_, {{0, 0, 7}}));
  EXPECT_EQ("setCommunity " + seqSet("M", 20) + " 12:str=\".clM20ar\" 11:flag=true\n" +
                privateDeletes("M20del") +
                "addCommunitySet [512 524 525=\"/policy/commset .csM20del\"] "
                "0:str=\".csM20del\" 2:u32s=[7]\ncommit\n"
                "addCommunityList [512 528 529=\"/policy/commlist .clM20del\"] "
                "0:str=\".clM20del\"\n"
                "addCommunityListEntry [512 528 529=\"/policy/commlist .clM20del\" 530 "
                "531=\"entry .csM20del\"] 0:str=\".csM20del\" 5:u32=10 1:u32=0 4:flag=false\n"
                "setCommunity " +
                seqSet("M", 20) + " 14:str=\".clM20del\"\n",
            sent());
}

TEST_F(ClauseTest, ClauseIsRecordedUnderEachListWithDeleteAndEverythingElseTracked) {
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetReplace_, {"B", "A"}));
  cog->addRmClauseToCommListUsers("M", 30, listsSet(Acl::commSetNone_, {"A"}));
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetDelete_, {"B"}));
  cog->addRmClauseToCommListUsers("M", 40, valuesSet(Acl::commSetAdd_, {{0, 0, 1}}));
  EXPECT_EQ("", sent());
  EXPECT_THAT(usersOf("A"), testing::UnorderedElementsAre("M 20 3", "M 30 3"));
  EXPECT_THAT(usersOf("B"), testing::UnorderedElementsAre("M 20 3", "M 20 1"));
  EXPECT_EQ(2u, users().commListUser().size());
  EXPECT_THAT(trace.text, HasSubstr("\n8 merging: Ainto .clM20ar\n8 merging: Binto .clM20ar"));
}

TEST_F(ClauseTest, ForgettingASequenceDropsListsNoLongerUsed) {
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetAdd_, {"A", "B"}));
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetDelete_, {"A"}));
  cog->addRmClauseToCommListUsers("N", 20, listsSet(Acl::commSetAdd_, {"B"}));
  cog->delRmFromCommListUsers("M", 20);
  EXPECT_EQ(nullptr, users().commListUser("A"));
  EXPECT_THAT(usersOf("B"), testing::ElementsAre("N 20 3"));
  EXPECT_THAT(trace.text, HasSubstr("\n7  community-list is not longer used by any route-map:A "
                                    "removing from the tracking structure"));
  EXPECT_THAT(trace.text, Not(HasSubstr("route-map:B")));
  EXPECT_EQ("", sent());

  root->commListUsersDel();
  cog->delRmFromCommListUsers("N", 20);
  EXPECT_THAT(trace.text, HasSubstr("\n7  commListUsers is empty. Tessel SMs are getting deleted "
                                    "in a test. Return early"));
}

// Commands still go out without a root or its user index; only the
// bookkeeping of list users is skipped.
TEST_F(ClauseTest, WithoutAUserIndexClausesAreRecordedNowhere) {
  root->commListUsersDel();
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetAdd_, {"A"}));
  Tessel::rmRoot = nullptr;
  cog->addRmClauseToCommListUsers("M", 30, listsSet(Acl::commSetAdd_, {"A"}));
  cog->refreshCommListUsersOf("A");
  cog->delRmFromCommListUsers("M", 20);
  cog->doApplyCommListToRouteMap("M", 20, ".clM20ar", Acl::commSetAdd_);
  EXPECT_EQ("setCommunity " + seqSet("M", 20) + " 12:str=\".clM20ar\" 11:flag=false\n", sent());
  root->commListUsersIs("comm-list-users");
  EXPECT_EQ(0u, users().commListUser().size());
}

// The refresh order is the records' hash order, so the hash is pinned: the
// name's hash as a name key hashes, then the sequence, then the flag.
TEST_F(ClauseTest, RecordHashMixesTheNameKeyHashThenSequenceThenFlag) {
  Orb::HashValue const nameHash = Orb::Hasher<Orb::Name>{}(Orb::Name("M"));
  EXPECT_EQ(Orb::hashFinish(Orb::hashMix(Orb::hashMix(Orb::hashMix(7, nameHash), 20), 3)),
            MapEntryCommSetClause("M", 20, Acl::commSetAdd_).hash(7));
}

TEST_F(ClauseTest, RefreshRebuildsEveryUserInTheIndexOrder) {
  char const* maps[] = {"M", "N", "P", "Q", "R"};
  for (char const* map : maps)
    cog->addRmClauseToCommListUsers(map, 5, listsSet(Acl::commSetAdd_, {"A"}));
  cog->addRmClauseToCommListUsers("Z", 5, listsSet(Acl::commSetAdd_, {"B"}));
  cog->refreshCommListUsersOf("A");
  std::string const stream = sent();
  std::vector<std::string> applied;
  for (std::size_t at = stream.find("setCommunity [512 576=\""); at != std::string::npos;
       at = stream.find("setCommunity [512 576=\"", at + 1)) {
    applied.push_back(stream.substr(at + 23, 1) + " 5 3");
  }
  EXPECT_EQ(usersOf("A"), applied) << stream;

  // Each user is rebuilt whole: its private list goes first.
  std::string const firstUser = usersOf("A").front().substr(0, 1);
  EXPECT_EQ(0u, stream.find(privateDeletes(firstUser + "5ar") +
                            "addCommunityList [512 528 529=\"/policy/commlist .cl" + firstUser +
                            "5ar\"] 0:str=\".cl" + firstUser + "5ar\"\n"))
      << stream;

  cog->refreshCommListUsersOf("C");
  EXPECT_EQ("", sent()) << "a list nobody uses refreshes nothing";
}

TEST_F(ClauseTest, ExtendedAndLargeSetsSpellAddAndReplaceTheirOwnWay) {
  Acl::CommunityValue const lbw{0, 0x40040001, 0x47000000}, rt{0, 0x00020001, 7};
  struct Row {
    bool large;
    CommSetFlag flag;
    Acl::CommunityValue value;
    std::string applied;
  };
  Row const rows[] = {
      {false, Acl::commSetReplace_, rt, "13:str=\".eM20\" 24:u8=2"},
      {false, Acl::commSetAdd_, rt, "13:str=\".eM20\" 24:flag=false"},
      // A link-bandwidth set is always added, even by a replacing clause.
      {false, Acl::commSetReplace_, lbw, "13:str=\".eM20\" 24:flag=false"},
      {false, Acl::commSetDelete_, rt, "15:str=\".eM20\""},
      {false, Acl::commSetDelete_, lbw, "15:str=\".eM20\" 24:flag=false"},
      {true, Acl::commSetReplace_, rt, "36:str=\".lM20\" 38:u8=4"},
      {true, Acl::commSetAdd_, rt, "36:str=\".lM20\" 38:flag=false"},
      {true, Acl::commSetNone_, rt, "36:str=\".lM20\" 38:u8=4"},
      {true, Acl::commSetDelete_, lbw, "37:str=\".lM20\""},
  };
  for (Row const& row : rows) {
    auto set = valuesSet(row.flag, {row.value});
    if (row.large) {
      cog->doSetLargeCommunity("M", 20, set);
    } else {
      cog->doSetExtCommunity("M", 20, set);
    }
    std::string const stream = sent();
    std::string const last = stream.substr(stream.rfind("commit\n") + 7);
    EXPECT_EQ(std::string(row.large ? "setLargeCommunity " : "setExtCommunity ") + seqSet("M", 20) +
                  " " + row.applied + "\n",
              last)
        << stream;
  }
  cog->doSetLargeCommunity("M", 20, valuesSet(Acl::commSetNone_, {}));
  EXPECT_EQ(
      "delCommunitySet [512 631 632=\"/policy/commset .lM20\"] delete\ncommit\n"
      "addCommunitySet [512 631 632=\"/policy/commset .lM20\"] 0:str=\".lM20\" 1:flag=true\n"
      "commit\n"
      "setLargeCommunity " +
          seqSet("M", 20) + " 36:str=\".lM20\" 38:u8=4\n",
      sent());
}

TEST_F(ClauseTest, ExactMatchNamesTheTwinsAndInstancesKeyOnTheLowCount) {
  CommListSet lists;
  lists.nameIs("B");
  lists.nameIs("A");
  cog->doAddMatchCommunity("M", 20, lists, false, true, Acl::communityStandard);
  cog->doAddMatchCommunity("M", 20, lists, true, false, Acl::communityExtended);
  cog->doAddMatchCommunity("M", 20, lists, false, false, Acl::communityLarge);
  cog->doAddMatchCommInst("M", 20, 2, 8, true);
  std::string const seq = TesselTest::seqPath("M", 20);
  EXPECT_EQ("commList [" + seq +
                " 585=\".exact.A .exact.B\"] 13:str=\".exact.A .exact.B\"\n"
                "extCommList [" +
                seq + " 629=\"A B\"] 0:flag=true 14:str=\"A B\"\n" + "largeCommList [" + seq +
                " 634=\"A B\"] 35:str=\"A B\"\n" + "CommInstances [" + seq +
                " 625=2] 0:flag=true 31:u32=2 32:u32=8\n",
            sent());
  EXPECT_DEATH(cog->doAddMatchCommunity("M", 20, CommListSet(), false, true, Acl::communityLarge),
               "Assertion failed: !comm.empty\\(\\)");
  EXPECT_DEATH(TesselTest::withTraceOnStderr([&] {
                 cog->doAddMatchCommunity("M", 20, lists, false, false, Acl::CommunityType(3));
               }),
               "0 Error: unrecognized community type: 3");
}

// ---- The route-map reactor's clean-up

class ReactorCleanUpTest : public ClauseTest {
 protected:
  ReactorCleanUpTest() {
    giveAllInputs();
    map = routeMapConfig->routeMapIs("R");
    for (Orb::U32 seqno : {10, 20}) {
      auto e = map->mapEntryIs(seqno);
      e->setFlagIs(Routing::RouteMap::MapEntry::SetFlags::communityAddReplace, true);
      e->communityAddReplaceIs(listsSet(Acl::commSetAdd_, {"A"}));
    }
    map->versionInc();
    sent();
  }
  Tessel::RouteMapConfigSm* sm() const { return root->vrfStatusSm()->routeMapConfigSm(); }
  Orb::Ptr<Routing::RouteMap::Map> map;
};

std::string cleanUp(Orb::U32 seqno) {
  std::string const seq = std::to_string(seqno);
  return privateDeletes("R" + seq + "ar") + privateDeletes("R" + seq + "del") +
         "delCommunitySet [512 526 527=\"/policy/commset .eR" + seq + "\"] delete\ncommit\n" +
         "delCommunitySet [512 631 632=\"/policy/commset .lR" + seq + "\"] delete\ncommit\n";
}

TEST_F(ReactorCleanUpTest, RemovedSequenceIsDeletedThenItsCommunityObjectsAndItsUses) {
  EXPECT_THAT(usersOf("A"), testing::UnorderedElementsAre("R 10 3", "R 20 3"));
  map->mapEntryDel(10);
  EXPECT_EQ("deleteRouteMap [" + TesselTest::seqPath("R", 10) + "] delete\ncommit\n" + cleanUp(10),
            sent());
  EXPECT_THAT(usersOf("A"), testing::ElementsAre("R 20 3"));
  EXPECT_FALSE(sm()->orbRouteMap("R")->commSetName().contains(10));

  map->mapEntryDel(20);
  EXPECT_EQ("deleteRouteMap [512 576=\"R\"] delete\ncommit\n" + cleanUp(20), sent());
  EXPECT_EQ(nullptr, users().commListUser("A")) << "the last user took the list's entry along";
}

TEST_F(ReactorCleanUpTest, ResendCleansUpTheSequencesSeenSinceTheLastOne) {
  map->mapEntryIs(30);
  map->versionInc();
  std::string const stream = sent();
  EXPECT_EQ(0u, stream.find(cleanUp(30) + "deleteRouteMap [512 576=\"R\"] delete\ncommit\n"))
      << stream;
  EXPECT_TRUE(sm()->orbRouteMap("R")->commSetName().empty());
  EXPECT_THAT(usersOf("A"), testing::UnorderedElementsAre("R 10 3", "R 20 3"))
      << "the insert records the users again";
}

// From the second version on, the map's reactor notes no sequence it has not
// seen come, so the literal clean-up forgets nothing; the index still drops a
// clause switched to another list or turned off, or a change of the old list
// would apply it to the sequence again. A version with nothing stale forgets
// nothing and traces nothing more.
TEST_F(ReactorCleanUpTest, ClauseSwitchedAwayFromAListIsNoLongerItsUser) {
  map->versionInc();
  trace.text.clear();
  map->versionInc();
  EXPECT_THAT(trace.text, Not(HasSubstr("delStaleRmFromCommListUsers")));
  map->mapEntry(10)->communityAddReplaceIs(listsSet(Acl::commSetAdd_, {"B"}));
  map->mapEntry(20)->setFlagIs(Routing::RouteMap::MapEntry::SetFlags::communityAddReplace, false);
  map->versionInc();
  EXPECT_EQ(nullptr, users().commListUser("A"));
  EXPECT_THAT(usersOf("B"), testing::ElementsAre("R 10 3"));
  EXPECT_THAT(trace.text, HasSubstr("\n7  community-list is not longer used by any route-map:A "
                                    "removing from the tracking structure"));
  sent();
  aclListConfig->communityListIs("A");
  EXPECT_THAT(sent(), Not(HasSubstr("setCommunity")));
  aclListConfig->communityListIs("B");
  EXPECT_THAT(sent(), HasSubstr("setCommunity " + seqSet("R", 10)));
}

// Neither a removed map nor a removed peer filter has a clause the engine
// could rebuild.
TEST_F(ReactorCleanUpTest, RemovedMapAndPeerFilterAreNoUsersAnyMore) {
  auto filter = peerFilterConfig->peerFilterIs("F");
  auto e = filter->mapEntryIs(10);
  e->setFlagIs(Routing::RouteMap::MapEntry::SetFlags::communityDelete, true);
  e->communityDeleteIs(listsSet(Acl::commSetDelete_, {"A"}));
  filter->versionInc();
  EXPECT_THAT(usersOf("A"),
              testing::UnorderedElementsAre("R 10 3", "R 20 3", ".PEER_FILTER.F 10 1"));
  routeMapConfig->routeMapDel("R");
  EXPECT_THAT(usersOf("A"), testing::ElementsAre(".PEER_FILTER.F 10 1"));
  peerFilterConfig->peerFilterDel("F");
  EXPECT_EQ(nullptr, users().commListUser("A"));
  sent();
  aclListConfig->communityListIs("A");
  EXPECT_THAT(sent(), Not(HasSubstr("setCommunity")));
}

// A new machine records the clauses there are, not those of the machine
// before it: a sequence and a map removed, a clause changed while an input
// was away.
TEST_F(ReactorCleanUpTest, RebuiltMachineRecordsOnlyTheClausesThereNow) {
  auto other = routeMapConfig->routeMapIs("S");
  auto e = other->mapEntryIs(10);
  e->setFlagIs(Routing::RouteMap::MapEntry::SetFlags::communityAddReplace, true);
  e->communityAddReplaceIs(listsSet(Acl::commSetAdd_, {"C"}));
  other->versionInc();
  root->aclConfigIs(nullptr);
  map->mapEntryDel(20);
  map->mapEntry(10)->communityAddReplaceIs(listsSet(Acl::commSetAdd_, {"B"}));
  routeMapConfig->routeMapDel("S");
  root->aclConfigIs(aclConfig);
  EXPECT_EQ(nullptr, users().commListUser("A"));
  EXPECT_EQ(nullptr, users().commListUser("C"));
  EXPECT_THAT(usersOf("B"), testing::ElementsAre("R 10 3"));
  EXPECT_EQ(1u, users().clauseLists().size());
  sent();
  aclListConfig->communityListIs("C");
  EXPECT_THAT(sent(), Not(HasSubstr("setCommunity")));
}

// Forgetting a sequence looks only at the lists it stands under, and leaves
// the way back from clauses to lists as the collections have it.
TEST_F(ClauseTest, IndexKnowsTheListsOfEachClause) {
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetAdd_, {"B", "A"}));
  cog->addRmClauseToCommListUsers("M", 20, listsSet(Acl::commSetDelete_, {"C"}));
  cog->addRmClauseToCommListUsers("N", 5, listsSet(Acl::commSetAdd_, {"A"}));
  auto const* lists = users().listsOf(MapEntryCommSetClause("M", 20, Acl::commSetAdd_));
  ASSERT_NE(nullptr, lists);
  EXPECT_EQ((std::vector<Orb::Name>{"A", "B"}), *lists);
  EXPECT_EQ("M", users().firstClauseOf("M")->first.mapName());
  EXPECT_EQ("N", users().firstClauseOf("Mz")->first.mapName());
  users().commListUserDel("B");
  EXPECT_EQ((std::vector<Orb::Name>{"A"}),
            *users().listsOf(MapEntryCommSetClause("M", 20, Acl::commSetAdd_)));
  cog->delRmFromCommListUsers("M", 20);
  EXPECT_THAT(usersOf("A"), testing::ElementsAre("N 5 3"));
  EXPECT_EQ(nullptr, users().commListUser("C"));
  EXPECT_EQ(1u, users().clauseLists().size());
  users().commListUserDelAll();
  EXPECT_TRUE(users().clauseLists().empty());
}

}  // namespace
