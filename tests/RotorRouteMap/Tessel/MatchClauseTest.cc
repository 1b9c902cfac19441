// Match clauses: which command each option becomes, how invert travels, and
// the configured values the engine knows by other numbers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Harness.h"

namespace {

using Routing::RouteMap::MatchRule;
using TesselTest::cmd;
using testing::HasSubstr;
using testing::Not;
using MatchTest = TesselTest::CogTest;

/// A rule of `option` whose every field holds a recognisable value.
MatchRule ruleOf(Orb::U32 option, bool invert) {
  MatchRule rule{.option = Routing::RouteMap::MatchOption(option),
                 .strValue = "L",
                 .intValue = 2,
                 .ipAddr = Kiwi::IpAddr::fromString("10.0.0.1"),
                 .ip6Addr = Kiwi::Ip6Addr::fromString("2001:db8::1"),
                 .rangeHigh = 9,
                 .commListSet = {},
                 .pathLengthFirst = 3,
                 .pathLengthSecond = 4,
                 .invert = invert};
  rule.commListSet.nameIs("L");
  return rule;
}

struct Row {
  Orb::U32 option;
  std::string plain;     // sent for the rule with invert false
  std::string inverted;  // sent for the rule with invert true
};

// Invert travels as flag 0, ahead of the entry's own values.
Row flagged(Orb::U32 option, std::string const& plain) {
  std::string inverted = plain;
  inverted.insert(inverted.find(']') + 1, " 0:flag=true");
  return {option, plain, inverted};
}

// Invert is a command of its own on the list node, ahead of the entry.
Row listed(Orb::U32 option, std::string const& invertOp, std::string const& list,
           std::string const& plain) {
  return {option, plain, cmd(invertOp, list, "0:flag=true") + plain};
}

// Invert changes nothing.
Row unaffected(Orb::U32 option, std::string const& plain) {
  return {option, plain, plain};
}

// Every option with a handler of its own, one of each lookup table, and
// options that must send nothing.
std::vector<Row> dispatchTable() {
  std::string const v4 = "0:ip=10.0.0.1";
  std::vector<Row> rows = {
      listed(5, "gwListInvert", "593", cmd("gwListEntry", "593 594=\"10.0.0.1\"", v4)),
      listed(12, "nhListInvert", "595", cmd("nhListEntry", "595 596=\"10.0.0.1\"", v4)),
      listed(117, "nhListInvert", "595",
             cmd("nhListEntry", "595 596=\"2001:db8::1\"", "1:ip6=2001:db8::1")),
      // Matched by the kernel's name of the interface.
      listed(107, "iflist", "591", cmd("ifname", "591 592=\"l\"", "1:str=\"l\"")),
      flagged(1, cmd("accessList", "588=\"L\"", "8:u8=2 7:str=\"L\"")),
      flagged(2, cmd("prefixList", "587=\"L\"", "8:u8=1 7:str=\"L\"")),
      flagged(116, cmd("prefixList", "587=\".ipv6.L\"", "8:u8=6 7:str=\".ipv6.L\"")),
      flagged(14, cmd("nextHopPrefixList", "619=\"L\"", "8:u8=1 7:str=\"L\"")),
      flagged(118, cmd("nextHopPrefixList", "619=\".ipv6.L\"", "8:u8=6 7:str=\".ipv6.L\"")),
      flagged(15, cmd("resolvedNextHopPrefixList", "620=\"L\"", "8:u8=1 7:str=\"L\"")),
      flagged(119, cmd("resolvedNextHopPrefixList", "620=\".ipv6.L\"", "8:u8=6 7:str=\".ipv6.L\"")),
      flagged(112, cmd("matchIntValue", "613=4", "26:u32=4")),
      flagged(122, cmd("matchIntValue", "624=2", "30:u32=2")),
      flagged(113, cmd("matchIntValue", "575=24", "24:u32=24")),
      flagged(121, cmd("AsRangeEntry", "623=2", "28:u32=2 29:u32=9")),
      flagged(126, cmd("AsPathLength", "630=3", "33:u32=3 34:u32=4")),
      flagged(100, cmd("matchIntValue", "581=2", "2:u32=2")),
      flagged(101, cmd("matchstrValue", "582=\"L\"", "9:str=\"L\"")),
      // The engine's IS-IS instance match wants 15 as its second value.
      flagged(106, cmd("isisInstance", "607=2", "24:u32=2 23:u32=15")),
      // Dynamic lists name the list as configured and cannot be inverted.
      unaffected(123, cmd("dynamicPrefixList", "626=\"L\"", "8:u8=1 7:str=\"L\"")),
      unaffected(124, cmd("dynamicPrefixList", "626=\"L\"", "8:u8=6 7:str=\"L\"")),
      {128, cmd("aggAttrMapName", "635", "0:flag=false 36:str=\"L\""),
       cmd("aggAttrMapName", "635", "0:flag=true 36:str=\"L\"")}};
  // Community options reach their own handlers, never the string table that
  // lists 103 too.
  rows.push_back(flagged(103, cmd("commList", "585=\"L\"", "13:str=\"L\"")));
  rows.push_back(flagged(104, cmd("extCommList", "629=\"L\"", "14:str=\"L\"")));
  rows.push_back(flagged(127, cmd("largeCommList", "634=\"L\"", "35:str=\"L\"")));
  rows.push_back(flagged(125, cmd("CommInstances", "625=2", "31:u32=2 32:u32=9")));
  rows.push_back(unaffected(999, ""));
  return rows;
}

TEST_F(MatchTest, EachMatchOptionBecomesItsCommandWithAndWithoutInvert) {
  for (bool invert : {false, true}) {
    std::string expected;
    for (Row const& row : dispatchTable()) {
      cog->doAddMatchRule("R", 10, ruleOf(row.option, invert));
      expected += invert ? row.inverted : row.plain;
    }
    EXPECT_EQ(expected, sent()) << "invert " << invert;
  }
  EXPECT_THAT(trace.text, HasSubstr("\n0 Error: add match option not implemented: 999"));
}

TEST_F(MatchTest, MatchValuesAreSentAsTheEngineKnowsThem) {
  std::string expected;
  Orb::U32 const codes[] = {1, 24, 31, 10, 4, 9, 15, 49, 52};
  for (Orb::U32 protocol = 1; protocol <= 9; ++protocol) {
    cog->doAddMatchProto("R", 10, protocol, false);
    std::string const code = std::to_string(codes[protocol - 1]);
    expected += cmd("matchIntValue", "575=" + code, "24:u32=" + code);
  }
  // Valid configuration the engine has no match for: no command, no error.
  cog->doAddMatchRouteType("R", 10, 5, true);
  // Without a named map the flag is all the command carries.
  cog->doAddMatchContribAggAttr("R", 10, "", false);
  expected += cmd("aggAttrMapName", "635", "0:flag=false");
  EXPECT_EQ(expected, sent());
  EXPECT_THAT(trace.text, Not(HasSubstr("\n0 ")));
}

}  // namespace
