// Set clauses: the metric and MED table, text and counts turned into engine
// numbers, the packed AS paths and the link-bandwidth options.
#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <string>

#include "DecimalCommaLocale.h"
#include "Harness.h"

namespace {

using Routing::RouteMap::MapEntry;
using TesselTest::setCmd;
using testing::HasSubstr;
using SetTest = TesselTest::CogTest;

TEST_F(SetTest, MedTypeDecidesWhichMetricTagsGoAndItsEngineCode) {
  std::string const both = setCmd("setIntValue", "1:u32=50") + setCmd("setIntValue", "17:u32=50");
  std::string const own = setCmd("setIntValue", "17:u32=50");
  std::string const expected[] = {
      /* 0 */ both,
      /* 1 */ setCmd("setIntValue", "16:u32=1"),
      /* 2 */ both + setCmd("setIntValue", "16:u32=2"),
      /* 3 */ setCmd("setIntValue", "16:u32=4"),
      /* 4 */ both + setCmd("setIntValue", "16:u32=5"),
      /* 5 */ own + setCmd("setIntValue", "16:u32=6"),
      /* 6 */ setCmd("setIntValue", "16:u32=3"),
      /* 7 */ setCmd("setIntValue", "16:u32=7"),
      /* 8 */ own + setCmd("setIntValue", "16:u32=8"),
  };
  for (Orb::U32 medType = 0; medType <= 8; ++medType) {
    cog->doSetMetric("R", 10, 50, Routing::RouteMap::MedType(medType));
    EXPECT_EQ(expected[medType], sent()) << "med type " << medType;
  }
}

TEST_F(SetTest, MetricTypeTextAndLastAsCountBecomeEngineNumbers) {
  cog->doSetMetricType("R", 10, "type-1");
  cog->doSetMetricType("R", 10, "type-2");
  cog->doSetMetricType("R", 10, "Type-1");
  cog->doSetAsPathPrependLastAs("R", 10, 3);
  EXPECT_EQ(setCmd("setIntValue", "10:u32=3") + setCmd("setIntValue", "10:u32=4") +
                setCmd("setIntValue", "33:u32=3"),
            sent());
  EXPECT_THAT(trace.text, HasSubstr("\n0 Error: ribAddMatchMetricType invalid type Type-1"));
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
  // Text is blank-separated numbers; a piece that is no number is left out.
  cog->doSetAsPathPrepend("R", 10, "1  258");
  cog->doSetAsPathReplace("R", 10, "7 x9 9x 4294967295");
  cog->doSetAsPathPrepend("R", 10, "");
  EXPECT_EQ(setCmd("setStrValue", "18:str=\"\\x01\\x00\\x00\\x00\\xe9\\xfd\\x00\\x00\"") +
                setCmd("setStrValue",
                       "34:str=\"\\x01\\x00\\x00\\x00\\xe9\\xfd\\x00\\x00\\x04\\x03\\x02\\x01\"") +
                setCmd("setStrValue", "18:str=\"\\x01\\x00\\x00\\x00\\x02\\x01\\x00\\x00\"") +
                setCmd("setStrValue", "34:str=\"\\x07\\x00\\x00\\x00\\xff\\xff\\xff\\xff\"") +
                setCmd("setStrValue", "18:str=\"\""),
            sent());
  EXPECT_THAT(trace.text, HasSubstr("\n0 Error: invalid AS number x9"));
  EXPECT_THAT(trace.text, HasSubstr("\n0 Error: invalid AS number 9x"));
}

TEST_F(SetTest, LinkBandwidthOptionsByFlag) {
  for (Orb::U32 flag = 0; flag <= 5; ++flag)
    cog->doSetExtCommunityLbwOpts("R", 10, Acl::ExtCommLinkBandwidthSetFlag(flag), 2.25f);
  cog->doSetExtCommunityLbwOpts("R", 10, Acl::lbwValue, 1e30f);
  std::string const op = "ExtCommSetLinkBwOpts";
  EXPECT_EQ(setCmd(op, "29:reset") + setCmd(op, "29:u8=1") +
                setCmd(op, "30:str=\"2.250000\" 29:u8=2") + setCmd(op, "29:u8=4") +
                setCmd(op, "29:u8=8") + setCmd(op, "29:reset") +
                setCmd(op, "30:str=\"1000000015047466219876688855040.000000\" 29:u8=2"),
            sent());
}

// The agent may run in any locale; the engine reads the bandwidth with a
// point.
TEST_F(SetTest, LinkBandwidthIsWrittenWithAPointInEveryLocale) {
  std::string const german = TestSupport::decimalCommaLocale();
  if (german.empty()) GTEST_SKIP() << "no locale with a decimal comma could be had";
  std::setlocale(LC_NUMERIC, german.c_str());
  cog->doSetExtCommunityLbwOpts("R", 10, Acl::lbwValue, 1.5f);
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(setCmd("ExtCommSetLinkBwOpts", "30:str=\"1.500000\" 29:u8=2"), sent());
}

}  // namespace
