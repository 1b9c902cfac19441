// Translation of a whole route map (the order of its set clauses and the
// conversions of configured values), the transaction commands, and the
// values and VRFs the translator refuses.
#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <string>
#include <utility>

#include "Harness.h"
#include "Orb/TypeRegistry.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using SetFlags = MapEntry::SetFlags;
using Tessel::Cog;
using TesselTest::seqLines;
using TesselTest::setCmd;

Orb::Ptr<CommunitySet const> commSet(Acl::CommSetFlag flag) {
  return CommunitySet::create({flag, false, {}, {}});
}

class RouteMapTest : public TesselTest::CogTest {
 protected:
  /// Sends "R" and returns what reached the engine.
  std::string inserted() {
    cog->doInsertRouteMap(map, "R");
    return sent();
  }

  Orb::Ptr<Routing::RouteMap::Config> config = Routing::RouteMap::Config::create("rm");
  Orb::Ptr<Routing::RouteMap::Map> map = config->routeMapIs("R");
};

// Signed fields are floored at 0 and unsigned ones pass whole.
TEST_F(RouteMapTest, EverySetFlagIsSentInTheFixedStepOrder) {
  if constexpr (std::endian::native != std::endian::little) {
    GTEST_SKIP() << "the packed AS numbers below are little-endian";
  }
  Orb::Ptr<MapEntry> e = map->mapEntryIs(10);
  e->setFlagsIs(SetFlags{0xffffffff});
  e->permitIs(Acl::deny);
  Routing::RouteMap::MatchRule rule;
  rule.option = Routing::RouteMap::MatchOption(100);
  rule.intValue = 7;
  e->matchRuleIs(rule);
  e->subRouteMapIs("S");
  MapEntry::AsPath prepend;
  prepend.set(1, 258);
  prepend.set(0, 1);
  e->asPathPrependIs(prepend);
  MapEntry::AsPath replace;
  replace.set(0, 3);
  e->asPathReplaceIs(replace);
  e->setValue33Is(4000000000u);
  e->ipv6NextHopIs(Kiwi::Ip6Addr::fromString("2001:db8::1"));
  e->setValue19Is(-5);
  e->setValue26Is(-7);
  e->levelIs(2);
  e->metricIs(-1);
  e->metricTypeIs(2);
  e->originIs(Acl::originIncomplete);
  e->setValue2Is(0x80000000);
  e->communityAddReplaceIs(commSet(Acl::commSetAdd_));
  e->communityDeleteIs(commSet(Acl::commSetDelete_));
  e->extCommunityIs(commSet(Acl::commSetReplace_));
  e->largeCommunityIs(commSet(Acl::commSetReplace_));
  e->extCommLbwFlagIs(Acl::lbwValue);
  e->extCommLbwValueIs(1.5f);
  e->setValue3Is(-1);
  e->setValue25Is(0xffffffff);
  e->nextHopPeerAddrIs(true);
  e->nextHopUnchangedIs(true);
  e->ipv6NextHopUnchangedIs(true);
  e->setValue35Is(-35);

  EXPECT_EQ(
      "routeMap [512 576=\"R\"] 0:str=\"R\"\n"
      "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=false\n"
      "matchIntValue [512 576=\"R\" 577 578=10 581=7] 2:u32=7\n"
      "subRouteMap [512 576=\"R\" 577 578=10 622=\"S\"] 1:str=\"S\"\n"
      "setStrValue [512 576=\"R\" 577 578=10 601] "
      "18:str=\"\\x01\\x00\\x00\\x00\\x02\\x01\\x00\\x00\"\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 33:u32=4000000000\n"
      "setStrValue [512 576=\"R\" 577 578=10 601] 34:str=\"\\x03\\x00\\x00\\x00\"\n"
      "setNextHop [512 576=\"R\" 577 578=10 601] 8:ip6=2001:db8::1\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 19:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 26:u32=0\n"
      "setU8Value [512 576=\"R\" 577 578=10 601] 0:u8=2\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 1:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 17:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 10:u32=4\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 6:u32=2\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 2:u32=2147483648\n"
      // Steps l and m: each variant's private list is rebuilt, then applied.
      "delCommunityList [512 528 529=\"/policy/commlist .clR10ar\"] delete\n"
      "commit\n"
      "delCommunitySet [512 524 525=\"/policy/commset .csR10ar\"] delete\n"
      "commit\n"
      "addCommunitySet [512 524 525=\"/policy/commset .csR10ar\"] 0:str=\".csR10ar\" 2:u32s=[]\n"
      "commit\n"
      "addCommunityList [512 528 529=\"/policy/commlist .clR10ar\"] 0:str=\".clR10ar\"\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clR10ar\" 530 531=\"entry "
      ".csR10ar\"] 0:str=\".csR10ar\" 5:u32=10 1:u32=0 4:flag=false\n"
      "setCommunity [512 576=\"R\" 577 578=10 601] 12:str=\".clR10ar\" 11:flag=false\n"
      "delCommunityList [512 528 529=\"/policy/commlist .clR10del\"] delete\n"
      "commit\n"
      "delCommunitySet [512 524 525=\"/policy/commset .csR10del\"] delete\n"
      "commit\n"
      "addCommunitySet [512 524 525=\"/policy/commset .csR10del\"] 0:str=\".csR10del\" "
      "2:u32s=[]\n"
      "commit\n"
      "addCommunityList [512 528 529=\"/policy/commlist .clR10del\"] 0:str=\".clR10del\"\n"
      "addCommunityListEntry [512 528 529=\"/policy/commlist .clR10del\" 530 531=\"entry "
      ".csR10del\"] 0:str=\".csR10del\" 5:u32=10 1:u32=0 4:flag=false\n"
      "setCommunity [512 576=\"R\" 577 578=10 601] 14:str=\".clR10del\"\n"
      // Step n, then o, then p.
      "delCommunitySet [512 526 527=\"/policy/commset .eR10\"] delete\n"
      "commit\n"
      "addCommunitySet [512 526 527=\"/policy/commset .eR10\"] 0:str=\".eR10\" 2:u32s=[]\n"
      "commit\n"
      "setExtCommunity [512 576=\"R\" 577 578=10 601] 13:str=\".eR10\" 24:u8=2\n"
      "ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=10 601] 30:str=\"1.500000\" 29:u8=2\n"
      "delCommunitySet [512 631 632=\"/policy/commset .lR10\"] delete\n"
      "commit\n"
      "addCommunitySet [512 631 632=\"/policy/commset .lR10\"] 0:str=\".lR10\" 2:u32s=[]\n"
      "commit\n"
      "setLargeCommunity [512 576=\"R\" 577 578=10 601] 36:str=\".lR10\" 38:u8=4\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 3:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 25:u32=4294967295\n"
      "setNextHopPeerAddr [512 576=\"R\" 577 578=10 601] 27:flag=true\n"
      "commit\n"
      "setNextHopPeerAddr [512 576=\"R\" 577 578=10 601] 28:flag=false\n"
      "commit\n"
      "setNextHopUnchanged [512 576=\"R\" 577 578=10 601] 31:flag=true\n"
      "commit\n"
      "setNextHopUnchanged [512 576=\"R\" 577 578=10 601] 32:flag=true\n"
      "commit\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 35:u32=0\n",
      inserted());
}

TEST_F(RouteMapTest, EmptyMapSendsNothingAndEachSequenceReannouncesTheMap) {
  EXPECT_EQ("", inserted());
  map->mapEntryIs(10);
  map->mapEntryIs(20)->permitIs(Acl::deny);
  EXPECT_EQ(seqLines("R", 10) + seqLines("R", 20, false), inserted());
}

TEST_F(RouteMapTest, MetricTypeOriginAndNextHopFamilyAreConverted) {
  Orb::Ptr<MapEntry> e = map->mapEntryIs(10);
  e->metricTypeIs(1);
  e->originIs(Acl::originEgp);
  e->nextHopIs(Kiwi::IpAddr::fromString("192.0.2.1"));
  e->ipv6NextHopIs(Kiwi::Ip6Addr::fromString("2001:db8::2"));
  std::string const lbwReset = setCmd("ExtCommSetLinkBwOpts", "29:reset");
  std::pair<Orb::U32, std::string> const rows[] = {
      // OSPF metric type 1 is the engine's 3.
      {SetFlags::metricType | SetFlags::origin,
       setCmd("setIntValue", "10:u32=3") + setCmd("setIntValue", "6:u32=1")},
      // Both addresses are configured; the flag picks the family.
      {SetFlags::nextHop, setCmd("setNextHop", "7:ip=192.0.2.1")},
      {SetFlags::ipv6NextHop, setCmd("setNextHop", "8:ip6=2001:db8::2")},
  };
  std::string const head = seqLines("R", 10);
  for (auto const& [flags, set] : rows) {
    e->setFlagsIs(SetFlags{flags});
    EXPECT_EQ(head.substr(0, head.size() - lbwReset.size()) + set + lbwReset, inserted());
  }
}

TEST_F(RouteMapTest, SyncCommitCarriesTheUnusedAsPathListRemovalAndIsARegisteredAction) {
  std::string const expected =
      "deleteAsPathList [512 534 535=\"/policy/asplist not_a_funny_name\"] delete\n"
      "commit sync\n";
  cog->doSyncCommit();
  EXPECT_EQ(expected, sent());
  EXPECT_TRUE(Orb::TypeRegistry::instance().doAction("Tessel::Cog", "doSyncCommit", *cog));
  EXPECT_EQ(expected, sent());
}

using TesselTest::RootTest;

TEST_F(RootTest, OpModeIsSentForAnyVrfWithoutCommit) {
  Tessel::cogFactory("other")->doRouteMapOpConfig(Routing::RouteMap::routeMapOpModeAlternate);
  EXPECT_EQ("RouteMapSetOpMode [256] 18:u32=1\n", sent());
}

using RouteMapDeathTest = RouteMapTest;

TEST_F(RouteMapDeathTest, OutOfRangeValuesAndForeignVrfsAbortAfterTheirErrorLine) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Orb::Ptr<MapEntry> e = map->mapEntryIs(10);
  e->levelIs(4);
  e->metricTypeIs(3);
  e->originIs(Acl::BGPOrigin(3));
  e->communityAddReplaceIs(commSet(Acl::commSetDelete_));
  e->communityDeleteIs(commSet(Acl::commSetAdd_));
  std::pair<Orb::U32, char const*> const inserts[] = {
      {SetFlags::level, "0 doInsertRouteMap invalid level: 4\n.*Assertion failed: 0 "},
      {SetFlags::metricType, "0 doInsertRouteMap invalid metric type: 3\n.*Assertion failed: 0 "},
      {SetFlags::origin, "0 doInsertRouteMap invalid origin 3\n.*Assertion failed: 0 "},
      {SetFlags::communityAddReplace,
       "Assertion failed: entryPtr->communityAddReplace\\(\\)->flag\\(\\) != Acl::commSetDelete_"},
      {SetFlags::communityDelete,
       "Assertion failed: entryPtr->communityDelete\\(\\)->flag\\(\\) == Acl::commSetDelete_"},
  };
  for (auto [flags, output] : inserts) {
    e->setFlagsIs(SetFlags{flags});
    EXPECT_DEATH(TesselTest::withTraceOnStderr([this] { inserted(); }), output);
  }
  // A clause flagged on without its set fails its assertion, as the
  // extended and large clauses do, rather than reading through null.
  e->communityAddReplaceIs(nullptr);
  e->communityDeleteIs(nullptr);
  e->extCommunityIs(nullptr);
  for (auto [flags, output] : {
           std::pair{SetFlags::communityAddReplace,
                     "0 Assertion failed: entryPtr->communityAddReplace\\(\\)\n"},
           std::pair{SetFlags::communityDelete,
                     "0 Assertion failed: entryPtr->communityDelete\\(\\)\n"},
           std::pair{SetFlags::extCommunity, "0 Assertion failed: commSet\n"},
       }) {
    e->setFlagsIs(SetFlags{flags});
    EXPECT_DEATH(TesselTest::withTraceOnStderr([this] { inserted(); }), output);
  }

  std::pair<std::function<void()>, char const*> const calls[] = {
      {[this, e] {
         e->setFlagsIs(SetFlags{SetFlags::level});
         e->levelIs(0);
         inserted();
       },
       "0 doInsertRouteMap invalid level: 0\n.*Assertion failed: 0 "},
      {[this] { cog->doSetMetric("R", 10, 1, Routing::RouteMap::MedType(9)); },
       "0 Error: invalid med type 9\n.*Assertion failed: 0 "},
      {[this] { cog->doAddMatchProto("R", 10, 0, false); }, "Unsupported protocol"},
      {[this] { cog->doAddMatchProto("R", 10, 10, false); }, "Unsupported protocol"},
      {[this] { cog->doAddMatchMetricType("R", 10, 0, false); }, "Assertion failed: 0 "},
      {[this] { cog->doAddMatchMetricType("R", 10, 3, false); }, "Assertion failed: 0 "},
      {[this] { cog->doAddMatchRouteType("R", 10, 0, false); }, "Assertion failed: 0 "},
      {[this] { cog->doAddMatchRouteType("R", 10, 6, false); }, "Assertion failed: 0 "},
      {[] { Cog::prefixListId("A", Cog::PrefixListFamily(2)); },
       "Assertion failed: family == ipv6"},
      // Paths are only built for the current root's VRF.
      {[] {
         auto root = Tessel::rootFactory("root");
         Tessel::cogFactory("red")->ribPathIs(512);
       },
       "Assertion failed: rmRoot->vrfName\\(\\) == vrfName"},
      // A translator that built paths before the root came still checks.
      {[] {
         auto cog = Tessel::cogFactory("red");
         cog->ribPathIs(512);
         auto root = Tessel::rootFactory("root");
         cog->ribPathIs(512);
       },
       "Assertion failed: rmRoot->vrfName\\(\\) == vrfName"},
  };
  for (auto const& [call, output] : calls)
    EXPECT_DEATH(TesselTest::withTraceOnStderr(call), output);
}

}  // namespace
