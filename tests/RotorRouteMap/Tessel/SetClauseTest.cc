// Set clauses: the generic attribute writes, the metric and MED table, the
// packed AS paths, the self-committing next-hop modes and the link-bandwidth
// options.
#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "DeathTrace.h"
#include "Harness.h"
#include "Tessel/Cog.h"

namespace {

using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MedType;
using Tessel::Cog;
using TesselTest::EngineTest;

class SetTest : public EngineTest {
 protected:
  void releaseAll() override {
    cog = nullptr;
    EngineTest::releaseAll();
  }
  Orb::Ptr<Cog> cog = Tessel::cogFactory("default");
};

/// One command on the set node of R 10.
std::string set(std::string const& name, std::string const& values) {
  return name + " [512 576=\"R\" 577 578=10 601] " + values + "\n";
}

TEST_F(SetTest, GenericWritesCarryTheirTagAndKind) {
  cog->doSetIntValue("R", 10, 19, 4000000000u);
  cog->doSetU8Value("R", 10, 0, 255);
  cog->doSetStrValue("R", 10, 5, "x");
  cog->doSetNextHop("R", 10, Kiwi::IpAddr::fromString("192.0.2.1"),
                    Kiwi::Ip6Addr::fromString("2001:db8::1"), false);
  cog->doSetNextHop("R", 10, Kiwi::IpAddr::fromString("192.0.2.1"),
                    Kiwi::Ip6Addr::fromString("2001:db8::1"), true);
  cog->doSetAsPathPrependLastAs("R", 10, 3);
  EXPECT_EQ(set("setIntValue", "19:u32=4000000000") + set("setU8Value", "0:u8=255") +
                set("setStrValue", "5:str=\"x\"") + set("setNextHop", "7:ip=192.0.2.1") +
                set("setNextHop", "8:ip6=2001:db8::1") + set("setIntValue", "33:u32=3"),
            sent());
}

TEST_F(SetTest, MedTypeDecidesWhichMetricTagsGoAndItsEngineCode) {
  std::string const expected[] = {
      /* 0 */ set("setIntValue", "1:u32=50") + set("setIntValue", "17:u32=50"),
      /* 1 */ set("setIntValue", "16:u32=1"),
      /* 2 */ set("setIntValue", "1:u32=50") + set("setIntValue", "17:u32=50") +
          set("setIntValue", "16:u32=2"),
      /* 3 */ set("setIntValue", "16:u32=4"),
      /* 4 */ set("setIntValue", "1:u32=50") + set("setIntValue", "17:u32=50") +
          set("setIntValue", "16:u32=5"),
      /* 5 */ set("setIntValue", "17:u32=50") + set("setIntValue", "16:u32=6"),
      /* 6 */ set("setIntValue", "16:u32=3"),
      /* 7 */ set("setIntValue", "16:u32=7"),
      /* 8 */ set("setIntValue", "17:u32=50") + set("setIntValue", "16:u32=8"),
  };
  for (Orb::U32 medType = 0; medType <= 8; ++medType) {
    cog->doSetMetric("R", 10, 50, MedType(medType));
    EXPECT_EQ(expected[medType], sent()) << "med type " << medType;
  }
}

TEST_F(SetTest, MetricTypeTextIsSentAsEngineNumberAndUnknownTextIsTraced) {
  cog->doSetMetricType("R", 10, "type-1");
  cog->doSetMetricType("R", 10, "type-2");
  cog->doSetMetricType("R", 10, "Type-1");
  EXPECT_EQ(set("setIntValue", "10:u32=3") + set("setIntValue", "10:u32=4"), sent());
  EXPECT_TRUE(trace.contains("0 Error: ribAddMatchMetricType invalid type Type-1"));
}

TEST_F(SetTest, AsPathsArePackedAsHostOrderWordsInKeyOrder) {
  if constexpr (std::endian::native != std::endian::little) {
    GTEST_SKIP() << "the expected bytes are little-endian";
  }
  MapEntry::AsPath asPath;
  asPath.set(2, 0x01020304);
  asPath.set(1, 65001);
  asPath.set(0, 1);
  Tessel::doSetAsPathPrepend_("default", "R", 10, asPath.begin(), 2);
  Tessel::doSetAsPathReplace_("default", "R", 10, asPath.begin(), 3);
  EXPECT_EQ(set("setStrValue", "18:str=\"\\x01\\x00\\x00\\x00\\xe9\\xfd\\x00\\x00\"") +
                set("setStrValue",
                    "34:str=\"\\x01\\x00\\x00\\x00\\xe9\\xfd\\x00\\x00\\x04\\x03\\x02\\x01\""),
            sent());
}

TEST_F(SetTest, AsPathTextIsReadAsBlankSeparatedNumbers) {
  if constexpr (std::endian::native != std::endian::little) {
    GTEST_SKIP() << "the expected bytes are little-endian";
  }
  cog->doSetAsPathPrepend("R", 10, "1  258");
  cog->doSetAsPathReplace("R", 10, "7 x9 4294967295");
  cog->doSetAsPathPrepend("R", 10, "");
  EXPECT_EQ(set("setStrValue", "18:str=\"\\x01\\x00\\x00\\x00\\x02\\x01\\x00\\x00\"") +
                set("setStrValue", "34:str=\"\\x07\\x00\\x00\\x00\\xff\\xff\\xff\\xff\"") +
                set("setStrValue", "18:str=\"\""),
            sent());
  EXPECT_TRUE(trace.contains("0 Error: invalid AS number x9"));
}

TEST_F(SetTest, NextHopPeerAddrAndUnchangedCommitRightAfterTheirCommand) {
  cog->doSetIntValue("R", 10, 2, 1);
  cog->doSetNextHopPeerAddr("R", 10, 27, true);
  cog->doSetIntValue("R", 10, 3, 1);
  cog->doSetNextHopUnchanged("R", 10, 32, false);
  EXPECT_EQ(set("setIntValue", "2:u32=1") + set("setNextHopPeerAddr", "27:flag=true") + "commit\n" +
                set("setIntValue", "3:u32=1") + set("setNextHopUnchanged", "32:flag=false") +
                "commit\n",
            sent());
}

TEST_F(SetTest, LinkBandwidthOptionsByFlag) {
  for (Orb::U32 flag = 0; flag <= 5; ++flag)
    cog->doSetExtCommunityLbwOpts("R", 10, Acl::ExtCommLinkBandwidthSetFlag(flag), 2.25f);
  cog->doSetExtCommunityLbwOpts("R", 10, Acl::lbwValue, 1e30f);
  EXPECT_EQ(
      set("ExtCommSetLinkBwOpts", "29:reset") + set("ExtCommSetLinkBwOpts", "29:u8=1") +
          set("ExtCommSetLinkBwOpts", "30:str=\"2.250000\" 29:u8=2") +
          set("ExtCommSetLinkBwOpts", "29:u8=4") + set("ExtCommSetLinkBwOpts", "29:u8=8") +
          set("ExtCommSetLinkBwOpts", "29:reset") +
          set("ExtCommSetLinkBwOpts", "30:str=\"1000000015047466219876688855040.000000\" 29:u8=2"),
      sent());
}

using SetDeathTest = SetTest;

TEST_F(SetDeathTest, MedTypeAboveEightAbortsAfterItsErrorLine) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(TesselTest::withTraceOnStderr(
                   [this] { cog->doSetMetric("R", 10, 1, Routing::RouteMap::MedType(9)); }),
               "0 Error: invalid med type 9\n.*Assertion failed: 0 ");
}

}  // namespace
