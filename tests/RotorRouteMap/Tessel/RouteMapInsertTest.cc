// Translation of a whole route map: sequences, their order of set clauses,
// the conversions of the configured values, and removal of maps and sequences.
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "DeathTrace.h"
#include "Harness.h"
#include "Tessel/Cog.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;
using SetFlags = MapEntry::SetFlags;
using TesselTest::EngineTest;

class RouteMapTest : public EngineTest {
 protected:
  void releaseAll() override {
    cog = nullptr;
    map = nullptr;
    config = nullptr;
    EngineTest::releaseAll();
  }

  /// A sequence of "R" with these set flags and nothing else.
  Orb::Ptr<MapEntry> entryWith(Orb::U32 seqno, Orb::U32 bits) {
    Orb::Ptr<MapEntry> entry = map->mapEntryIs(seqno);
    entry->setFlagsIs(SetFlags{bits});
    return entry;
  }

  /// Sends "R" and returns what reached the engine.
  std::string inserted() {
    cog->doInsertRouteMap(map, "R");
    return sent();
  }

  static Orb::Ptr<CommunitySet const> commSet(Acl::CommSetFlag flag) {
    CommunitySet::Content content;
    content.flag = flag;
    return CommunitySet::create(content);
  }

  Orb::Ptr<Routing::RouteMap::Config> config = Routing::RouteMap::Config::create("rm");
  Orb::Ptr<Routing::RouteMap::Map> map = config->routeMapIs("R");
  Orb::Ptr<Tessel::Cog> cog = Tessel::cogFactory("default");
};

constexpr char const* seqHead =
    "routeMap [512 576=\"R\"] 0:str=\"R\"\n"
    "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true\n";
constexpr char const* lbwReset = "ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=10 601] 29:reset\n";

TEST_F(RouteMapTest, MapWithoutSequencesSendsNothing) {
  EXPECT_EQ("", inserted());
}

TEST_F(RouteMapTest, BareSequenceSendsMapSequenceAndLinkBandwidthReset) {
  map->mapEntryIs(10);
  EXPECT_EQ(std::string(seqHead) + lbwReset, inserted());
}

TEST_F(RouteMapTest, EverySetFlagIsSentInTheFixedStepOrder) {
  if constexpr (std::endian::native != std::endian::little) {
    GTEST_SKIP() << "the packed AS numbers below are little-endian";
  }
  Orb::Ptr<MapEntry> e = entryWith(10, 0xffffffff);
  e->permitIs(Acl::deny);
  MatchRule rule;
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
  e->setValue33Is(2);
  e->nextHopIs(Kiwi::IpAddr::fromString("10.0.0.1"));
  e->ipv6NextHopIs(Kiwi::Ip6Addr::fromString("2001:db8::1"));
  e->setValue19Is(-5);
  e->setValue26Is(26);
  e->levelIs(2);
  e->metricIs(-1);
  e->medTypeIs(Routing::RouteMap::medTypeNone);
  e->metricTypeIs(2);
  e->originIs(Acl::originIncomplete);
  e->setValue2Is(2);
  e->communityAddReplaceIs(commSet(Acl::commSetAdd_));
  e->communityDeleteIs(commSet(Acl::commSetDelete_));
  e->extCommunityIs(commSet(Acl::commSetReplace_));
  e->largeCommunityIs(commSet(Acl::commSetReplace_));
  e->extCommLbwFlagIs(Acl::lbwValue);
  e->extCommLbwValueIs(1.5f);
  e->setValue3Is(3);
  e->setValue25Is(25);
  e->nextHopPeerAddrIs(true);
  e->ipv6NextHopPeerAddrIs(false);
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
      "setIntValue [512 576=\"R\" 577 578=10 601] 33:u32=2\n"
      "setStrValue [512 576=\"R\" 577 578=10 601] 34:str=\"\\x03\\x00\\x00\\x00\"\n"
      "setNextHop [512 576=\"R\" 577 578=10 601] 8:ip6=2001:db8::1\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 19:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 26:u32=26\n"
      "setU8Value [512 576=\"R\" 577 578=10 601] 0:u8=2\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 1:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 17:u32=0\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 10:u32=4\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 6:u32=2\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 2:u32=2\n"
      "ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=10 601] 30:str=\"1.500000\" 29:u8=2\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 3:u32=3\n"
      "setIntValue [512 576=\"R\" 577 578=10 601] 25:u32=25\n"
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

  // The community steps send nothing yet, but already run at their place:
  // add/replace, delete, extended, then the link bandwidth, then large.
  std::string order;
  for (std::string const& line : trace.lines) {
    for (char const* step : {"doSetCommunity(", "doSetExtCommunity(", "doSetExtCommunityLbwOpts(",
                             "doSetLargeCommunity("}) {
      if (line.find(step) != std::string::npos) order += std::string(step) + " ";
    }
  }
  EXPECT_EQ(
      "doSetCommunity( doSetCommunity( doSetExtCommunity( doSetExtCommunityLbwOpts( "
      "doSetLargeCommunity( ",
      order);
}

TEST_F(RouteMapTest, EachSequenceReannouncesTheMapInCollectionOrder) {
  map->mapEntryIs(10);
  map->mapEntryIs(20)->permitIs(Acl::deny);
  std::string expected;
  for (auto const& [seqno, entry] : map->mapEntry()) {
    std::string const seq = std::to_string(seqno);
    expected += "routeMap [512 576=\"R\"] 0:str=\"R\"\n";
    expected += "routeMapSeq [512 576=\"R\" 577 578=" + seq + "] 0:u32=" + seq +
                (seqno == 10 ? " 1:flag=true\n" : " 1:flag=false\n");
    expected += "ExtCommSetLinkBwOpts [512 576=\"R\" 577 578=" + seq + " 601] 29:reset\n";
  }
  EXPECT_EQ(expected, inserted());
}

TEST_F(RouteMapTest, SignedValuesAreFlooredAtZeroAndUnsignedPassAsIs) {
  Orb::Ptr<MapEntry> e = entryWith(
      10, SetFlags::setValue3 | SetFlags::setValue25 | SetFlags::setValue2 | SetFlags::setValue33);
  e->setValue3Is(-1);
  e->setValue25Is(0xffffffff);
  e->setValue2Is(0x80000000);
  e->setValue33Is(4000000000u);
  std::string const set = "[512 576=\"R\" 577 578=10 601] ";
  EXPECT_EQ(std::string(seqHead) + "setIntValue " + set + "33:u32=4000000000\n" + "setIntValue " +
                set + "2:u32=2147483648\n" + lbwReset + "setIntValue " + set + "3:u32=0\n" +
                "setIntValue " + set + "25:u32=4294967295\n",
            inserted());
}

TEST_F(RouteMapTest, MetricTypeLevelAndOriginConversions) {
  Orb::Ptr<MapEntry> e = entryWith(10, SetFlags::metricType | SetFlags::level | SetFlags::origin);
  std::string const set = "[512 576=\"R\" 577 578=10 601] ";
  e->metricTypeIs(1);
  e->levelIs(1);
  e->originIs(Acl::originIgp);
  EXPECT_EQ(std::string(seqHead) + "setU8Value " + set + "0:u8=1\n" + "setIntValue " + set +
                "10:u32=3\n" + "setIntValue " + set + "6:u32=0\n" + lbwReset,
            inserted());
  e->metricTypeIs(2);
  e->levelIs(3);
  e->originIs(Acl::originEgp);
  EXPECT_EQ(std::string(seqHead) + "setU8Value " + set + "0:u8=3\n" + "setIntValue " + set +
                "10:u32=4\n" + "setIntValue " + set + "6:u32=1\n" + lbwReset,
            inserted());
}

TEST_F(RouteMapTest, OneNextHopBitSelectsItsFamily) {
  Orb::Ptr<MapEntry> e = entryWith(10, SetFlags::nextHop);
  e->nextHopIs(Kiwi::IpAddr::fromString("192.0.2.1"));
  e->ipv6NextHopIs(Kiwi::Ip6Addr::fromString("2001:db8::2"));
  std::string const set = "[512 576=\"R\" 577 578=10 601] ";
  EXPECT_EQ(std::string(seqHead) + "setNextHop " + set + "7:ip=192.0.2.1\n" + lbwReset, inserted());
  e->setFlagsIs(SetFlags{SetFlags::ipv6NextHop});
  EXPECT_EQ(std::string(seqHead) + "setNextHop " + set + "8:ip6=2001:db8::2\n" + lbwReset,
            inserted());
}

TEST_F(RouteMapTest, DeletingAMapOrOneSequenceDiffersOnlyInPathDepth) {
  cog->doDeleteRouteMap("R");
  cog->doDeleteMapSequence("R", 10);
  EXPECT_EQ(
      "deleteRouteMap [512 576=\"R\"] delete\n"
      "deleteRouteMap [512 576=\"R\" 577 578=10] delete\n",
      sent());
}

using RouteMapDeathTest = RouteMapTest;

TEST_F(RouteMapDeathTest, OutOfRangeSetValuesAbortAfterTheirErrorLine) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto insert = [this] { TesselTest::withTraceOnStderr([this] { inserted(); }); };

  Orb::Ptr<MapEntry> e = entryWith(10, SetFlags::level);
  e->levelIs(4);
  EXPECT_DEATH(insert(), "0 doInsertRouteMap invalid level: 4\n.*Assertion failed: 0 ");

  e->setFlagsIs(SetFlags{SetFlags::metricType});
  e->metricTypeIs(3);
  EXPECT_DEATH(insert(), "0 doInsertRouteMap invalid metric type: 3\n.*Assertion failed: 0 ");

  e->setFlagsIs(SetFlags{SetFlags::origin});
  e->originIs(Acl::BGPOrigin(3));
  EXPECT_DEATH(insert(), "0 doInsertRouteMap invalid origin 3\n.*Assertion failed: 0 ");
}

TEST_F(RouteMapDeathTest, CommunitySetWithTheWrongFlagAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Orb::Ptr<MapEntry> e = entryWith(10, SetFlags::communityAddReplace);
  e->communityAddReplaceIs(commSet(Acl::commSetDelete_));
  EXPECT_DEATH(inserted(),
               "Assertion failed: entryPtr->communityAddReplace\\(\\)->flag\\(\\) != "
               "Acl::commSetDelete_");

  e->setFlagsIs(SetFlags{SetFlags::communityDelete});
  e->communityDeleteIs(commSet(Acl::commSetAdd_));
  EXPECT_DEATH(inserted(),
               "Assertion failed: entryPtr->communityDelete\\(\\)->flag\\(\\) == "
               "Acl::commSetDelete_");
}

}  // namespace
