// Match clauses: which command each option becomes, the invert flag, the
// converted values, and the engine names of prefix lists.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Harness.h"
#include "Orb/RangeError.h"
#include "Tessel/Cog.h"

namespace {

using Routing::RouteMap::MatchOption;
using Routing::RouteMap::MatchRule;
using Tessel::Cog;
using TesselTest::EngineTest;

class MatchTest : public EngineTest {
 protected:
  void releaseAll() override {
    cog = nullptr;
    EngineTest::releaseAll();
  }

  /// A rule of `option` whose every field holds a recognisable value.
  static MatchRule ruleOf(Orb::U32 option, bool invert) {
    MatchRule rule;
    rule.option = MatchOption(option);
    rule.strValue = "L";
    rule.intValue = 2;
    rule.ipAddr = Kiwi::IpAddr::fromString("10.0.0.1");
    rule.ip6Addr = Kiwi::Ip6Addr::fromString("2001:db8::1");
    rule.rangeHigh = 9;
    rule.pathLengthFirst = 3;
    rule.pathLengthSecond = 4;
    rule.invert = invert;
    return rule;
  }

  void add(MatchRule const& rule) { cog->doAddMatchRule("R", 10, rule); }

  Orb::Ptr<Cog> cog = Tessel::cogFactory("default");
};

/// The sequence path of R 10 followed by `rest`.
std::string at(std::string const& rest) {
  return "[512 576=\"R\" 577 578=10" + (rest.empty() ? "" : " " + rest) + "]";
}

struct Row {
  Orb::U32 option;
  std::string plain;     // sent for the rule with invert false
  std::string inverted;  // sent for the rule with invert true
};

// Every option with a handler of its own, and one of each lookup table.
std::vector<Row> dispatchTable() {
  std::string const t = " 0:flag=true";
  return {
      {5, "gwListEntry " + at("593 594=\"10.0.0.1\"") + " 0:ip=10.0.0.1\n",
       "gwListInvert " + at("593") + t + "\n" + "gwListEntry " + at("593 594=\"10.0.0.1\"") +
           " 0:ip=10.0.0.1\n"},
      {12, "nhListEntry " + at("595 596=\"10.0.0.1\"") + " 0:ip=10.0.0.1\n",
       "nhListInvert " + at("595") + t + "\n" + "nhListEntry " + at("595 596=\"10.0.0.1\"") +
           " 0:ip=10.0.0.1\n"},
      {117, "nhListEntry " + at("595 596=\"2001:db8::1\"") + " 1:ip6=2001:db8::1\n",
       "nhListInvert " + at("595") + t + "\n" + "nhListEntry " + at("595 596=\"2001:db8::1\"") +
           " 1:ip6=2001:db8::1\n"},
      {1, "accessList " + at("588=\"L\"") + " 8:u8=2 7:str=\"L\"\n",
       "accessList " + at("588=\"L\"") + t + " 8:u8=2 7:str=\"L\"\n"},
      {2, "prefixList " + at("587=\"L\"") + " 8:u8=1 7:str=\"L\"\n",
       "prefixList " + at("587=\"L\"") + t + " 8:u8=1 7:str=\"L\"\n"},
      {116, "prefixList " + at("587=\".ipv6.L\"") + " 8:u8=6 7:str=\".ipv6.L\"\n",
       "prefixList " + at("587=\".ipv6.L\"") + t + " 8:u8=6 7:str=\".ipv6.L\"\n"},
      {14, "nextHopPrefixList " + at("619=\"L\"") + " 8:u8=1 7:str=\"L\"\n",
       "nextHopPrefixList " + at("619=\"L\"") + t + " 8:u8=1 7:str=\"L\"\n"},
      {118, "nextHopPrefixList " + at("619=\".ipv6.L\"") + " 8:u8=6 7:str=\".ipv6.L\"\n",
       "nextHopPrefixList " + at("619=\".ipv6.L\"") + t + " 8:u8=6 7:str=\".ipv6.L\"\n"},
      {15, "resolvedNextHopPrefixList " + at("620=\"L\"") + " 8:u8=1 7:str=\"L\"\n",
       "resolvedNextHopPrefixList " + at("620=\"L\"") + t + " 8:u8=1 7:str=\"L\"\n"},
      {119, "resolvedNextHopPrefixList " + at("620=\".ipv6.L\"") + " 8:u8=6 7:str=\".ipv6.L\"\n",
       "resolvedNextHopPrefixList " + at("620=\".ipv6.L\"") + t + " 8:u8=6 7:str=\".ipv6.L\"\n"},
      {112, "matchIntValue " + at("613=4") + " 26:u32=4\n",
       "matchIntValue " + at("613=4") + t + " 26:u32=4\n"},
      {122, "matchIntValue " + at("624=2") + " 30:u32=2\n",
       "matchIntValue " + at("624=2") + t + " 30:u32=2\n"},
      {113, "matchIntValue " + at("575=24") + " 24:u32=24\n",
       "matchIntValue " + at("575=24") + t + " 24:u32=24\n"},
      {121, "AsRangeEntry " + at("623=2") + " 28:u32=2 29:u32=9\n",
       "AsRangeEntry " + at("623=2") + t + " 28:u32=2 29:u32=9\n"},
      {126, "AsPathLength " + at("630=3") + " 33:u32=3 34:u32=4\n",
       "AsPathLength " + at("630=3") + t + " 33:u32=3 34:u32=4\n"},
      {100, "matchIntValue " + at("581=2") + " 2:u32=2\n",
       "matchIntValue " + at("581=2") + t + " 2:u32=2\n"},
      {101, "matchstrValue " + at("582=\"L\"") + " 9:str=\"L\"\n",
       "matchstrValue " + at("582=\"L\"") + t + " 9:str=\"L\"\n"},
      {123, "dynamicPrefixList " + at("626=\"L\"") + " 8:u8=1 7:str=\"L\"\n",
       "dynamicPrefixList " + at("626=\"L\"") + " 8:u8=1 7:str=\"L\"\n"},
      {124, "dynamicPrefixList " + at("626=\"L\"") + " 8:u8=6 7:str=\"L\"\n",
       "dynamicPrefixList " + at("626=\"L\"") + " 8:u8=6 7:str=\"L\"\n"},
      {128, "aggAttrMapName " + at("635") + " 0:flag=false 36:str=\"L\"\n",
       "aggAttrMapName " + at("635") + t + " 36:str=\"L\"\n"},
      {106, "isisInstance " + at("607=2") + " 24:u32=2 23:u32=15\n",
       "isisInstance " + at("607=2") + t + " 24:u32=2 23:u32=15\n"},
      // Community options go to their own handlers, never to the string
      // table that lists 103 too; they send nothing yet.
      {103, "", ""},
      {104, "", ""},
      {127, "", ""},
      {125, "", ""},
  };
}

TEST_F(MatchTest, EachOptionBecomesItsCommandAndInvertFalseIsNeverSent) {
  std::string expected;
  for (Row const& row : dispatchTable()) {
    add(ruleOf(row.option, false));
    expected += row.plain;
  }
  EXPECT_EQ(expected, sent());
}

TEST_F(MatchTest, InvertIsFlagZeroOrACommandOfItsOwnBeforeTheEntry) {
  std::string expected;
  for (Row const& row : dispatchTable()) {
    add(ruleOf(row.option, true));
    expected += row.inverted;
  }
  EXPECT_EQ(expected, sent());
}

TEST_F(MatchTest, CommunityOptionsReachTheirPlaceholdersWithTheirKind) {
  for (Orb::U32 option : {103u, 104u, 127u, 125u})
    add(ruleOf(option, false));
  EXPECT_EQ("", sent());
  std::string kinds;
  for (std::string const& line : trace.lines) {
    if (line.rfind("0 Error: not sent yet: ", 0) != 0) continue;
    if (line.find("doAddMatchCommunity(") != std::string::npos) {
      kinds += line.substr(line.rfind("type=") + 5) + " ";
    } else if (line.find("doAddMatchCommInst(") != std::string::npos) {
      kinds += line.substr(line.find("[")) + " ";
    }
  }
  EXPECT_EQ("standard extended large [2, 9] invert: 0 ", kinds);
}

TEST_F(MatchTest, UnknownOptionIsTracedAndSkipped) {
  add(ruleOf(999, true));
  add(ruleOf(0, false));
  EXPECT_EQ("", sent());
  EXPECT_TRUE(trace.contains("0 Error: add match option not implemented: 999"));
  EXPECT_TRUE(trace.contains("0 Error: add match option not implemented: 0"));
}

TEST_F(MatchTest, RouteTypeFiveIsAcceptedAndNotSent) {
  cog->doAddMatchRouteType("R", 10, 5, true);
  EXPECT_EQ("", sent());
  for (std::string const& line : trace.lines)
    EXPECT_NE('0', line[0]) << line;
}

TEST_F(MatchTest, ValuesOfOneOptionLiveSideBySideUnderTheirOwnKeys) {
  MatchRule rule = ruleOf(100, false);
  add(rule);
  rule.intValue = 3;
  add(rule);
  EXPECT_EQ(
      "matchIntValue " + at("581=2") + " 2:u32=2\n" + "matchIntValue " + at("581=3") + " 2:u32=3\n",
      sent());
}

TEST_F(MatchTest, ProtocolsAreSentAsEngineCodes) {
  std::string expected;
  for (Orb::U32 code : {1u, 24u, 31u, 10u, 4u, 9u, 15u, 49u, 52u}) {
    std::string const c = std::to_string(code);
    expected += "matchIntValue " + at("575=" + c) + " 24:u32=" + c + "\n";
  }
  for (Orb::U32 protocol = 1; protocol <= 9; ++protocol)
    cog->doAddMatchProto("R", 10, protocol, false);
  EXPECT_EQ(expected, sent());
}

TEST_F(MatchTest, InterfaceIsMatchedByItsKernelName) {
  MatchRule rule = ruleOf(107, true);
  rule.strValue = "Ethernet1/2";
  add(rule);
  rule.invert = false;
  rule.strValue = "Vlan10";
  add(rule);
  EXPECT_EQ("iflist " + at("591") + " 0:flag=true\n" + "ifname " + at("591 592=\"eth1_2\"") +
                " 1:str=\"eth1_2\"\n" + "ifname " + at("591 592=\"vlan10\"") +
                " 1:str=\"vlan10\"\n",
            sent());
}

TEST_F(MatchTest, ContribAggAttrWithoutMapSendsOnlyTheFlag) {
  cog->doAddMatchContribAggAttr("R", 10, "", false);
  EXPECT_EQ("aggAttrMapName " + at("635") + " 0:flag=false\n", sent());
}

TEST(PrefixListId, Ipv6ListsArePrefixedIpv4ListsKeepTheirName) {
  EXPECT_EQ(Orb::String("A"), Cog::prefixListId("A", Cog::ipv4));
  EXPECT_EQ(Orb::String(".ipv6.A"), Cog::prefixListId("A", Cog::ipv6));
  EXPECT_EQ(Orb::String(".ipv6..ipv6.A"), Cog::prefixListId(".ipv6.A", Cog::ipv6));
}

TEST(PrefixListFamily, TextFormsReadBack) {
  EXPECT_EQ("ipv4", Tessel::valueToStrep(Cog::ipv4));
  EXPECT_EQ("ipv6", Tessel::valueToStrep(Cog::ipv6));
  EXPECT_EQ("7", Tessel::valueToStrep(Cog::PrefixListFamily(7)));
  EXPECT_EQ(Cog::ipv6, Tessel::prefixListFamilyFromStrep("ipv6"));
  EXPECT_EQ(Cog::ipv6, Tessel::prefixListFamilyFromStrep("1"));
  EXPECT_THROW(Tessel::prefixListFamilyFromStrep("ipv5"), Orb::RangeError);
}

using MatchDeathTest = MatchTest;

TEST_F(MatchDeathTest, OutOfRangeValuesAbort) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(cog->doAddMatchProto("R", 10, 0, false),
               "Assertion failed: 0 && \"Unsupported protocol\"");
  EXPECT_DEATH(cog->doAddMatchProto("R", 10, 10, false),
               "Assertion failed: 0 && \"Unsupported protocol\"");
  EXPECT_DEATH(cog->doAddMatchMetricType("R", 10, 3, false), "Assertion failed: 0 ");
  EXPECT_DEATH(cog->doAddMatchMetricType("R", 10, 0, false), "Assertion failed: 0 ");
  EXPECT_DEATH(cog->doAddMatchRouteType("R", 10, 0, false), "Assertion failed: 0 ");
  EXPECT_DEATH(cog->doAddMatchRouteType("R", 10, 6, false), "Assertion failed: 0 ");
  EXPECT_DEATH(Cog::prefixListId("A", Cog::PrefixListFamily(2)),
               "Assertion failed: family == ipv6");
}

}  // namespace
