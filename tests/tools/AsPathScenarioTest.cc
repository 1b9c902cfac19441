// AS-path statements of the scenario language and what the check makes of
// AS-path flows: validity decided by compiling the expression, pending lists,
// and the divergences the AS-path reactor makes on purpose.
#include <gtest/gtest.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "AsPathRegex.h"
#include "ScenarioTestSupport.h"

namespace {

using ScenarioTestSupport::refusalOf;

/// The AS-path configuration `text` leaves, one line a list and an entry.
std::string asPathConfig(std::string const& text) {
  auto const in = ScenarioTestSupport::configured(text);
  std::string out = "mode " + std::to_string(in.aclListConfig->regexMode()) + "\n";
  for (auto const& [name, list] : in.aclListConfig->asPathList()) {
    out += name.str() + " v" + std::to_string(list->version()) + "\n";
    for (auto const& [seqno, e] : list->pathEntry()) {
      out += "  " + std::to_string(seqno) + " " + e.regex.str() +
             " action=" + std::to_string(e.action) + " origin=" + std::to_string(e.origin) +
             " valid=" + (e.validInMode0 ? "0" : "") + (e.validInMode1 ? "1" : "") + "\n";
    }
  }
  return out;
}

TEST(AsPathRegexTest, EachModeCompilesInItsOwnDialect) {
  struct Case {
    char const* expression;
    bool mode0;  // POSIX extended
    bool mode1;  // ECMAScript
  };
  Case const cases[] = {
      {"_65000_", true, true},
      {"^(64512|65000)$", true, true},
      {"(?:65001)", false, true},
      {"^65000(?=_)", false, true},
      {"65000{,3}", true, false},
      {"65000)", true, false},
      {"(65000", false, false},
      {"[65000", false, false},
      // Counts and references no state limit allows; std::regex would read
      // the first ones with an overflow that wraps them into small counts.
      {"6500X{2222222222222222222,2}", false, false},
      {"65000{2147483648}", false, false},
      {"65000{1,99999999999}", false, false},
      {"(65000)\\99999999999", false, false},
      {"65000{3}", true, true},
      {"(65000)\\1", true, true},
      {"[{99999999999}]", true, true},
      {"\\{99999999999}", true, true},
  };
  for (Case const& c : cases) {
    auto const v = Scenario::regexValidity(c.expression);
    EXPECT_EQ(c.mode0, v.mode0) << c.expression;
    EXPECT_EQ(c.mode1, v.mode1) << c.expression;
  }
}

TEST(AsPathRegexTest, ExpressionsThatWouldExhaustTheCompilersAreInvalidWithoutCompiling) {
  // regcomp writes "x+" out as "xx*": each stacked '+' doubles the
  // expression, and this one would take gigabytes (std::regex reads it
  // without copying).
  std::string const stacked = "_65000" + std::string(120, '+');
  auto v = Scenario::regexValidity(stacked);
  EXPECT_FALSE(v.mode0);
  EXPECT_TRUE(v.mode1);
  v = Scenario::regexValidity("((65000{1000}){1000}){1000}");
  EXPECT_FALSE(v.mode0);
  EXPECT_FALSE(v.mode1);
  v = Scenario::regexValidity("(65000{300})+");
  EXPECT_TRUE(v.mode0);
  EXPECT_TRUE(v.mode1);
  // Each optional copy's closure reaches every later one: memory grows with
  // the square of the bound, and this one would take 5 GB.
  EXPECT_FALSE(Scenario::regexValidity("65000{,26502}").mode0);
  EXPECT_FALSE(Scenario::regexValidity("65000{2,1000}").mode0);
  EXPECT_TRUE(Scenario::regexValidity("65000{2,200}").mode0);
  EXPECT_TRUE(Scenario::regexValidity("65000{26502,}").mode0);

  // Both compilers recurse per group, std::regex per term too: past 1024
  // bytes neither is asked, so no line can run them out of stack.
  std::string const nested = std::string(512, '(') + std::string(512, ')');
  EXPECT_TRUE(Scenario::regexValidity(nested).mode0);
  v = Scenario::regexValidity("(" + nested + ")");
  EXPECT_FALSE(v.mode0);
  EXPECT_FALSE(v.mode1);
  EXPECT_FALSE(Scenario::regexValidity(std::string(100000, '6')).mode1);
}

TEST(AsPathScenarioTest, StatementsWriteListsEntriesVersionsAndTheMode) {
  EXPECT_EQ(
      "mode 7\n"
      "A v1\n"
      "  10 _65000_ action=0 origin=0 valid=01\n"
      "  20 (?:65001) action=1 origin=1 valid=1\n"
      "  30 65000{,3} action=0 origin=4000000000 valid=0\n"
      "  40 (x action=0 origin=2 valid=01\n"
      "E v0\n",
      asPathConfig("as-path-list A 10 permit _65000_\n"
                   "as-path-list A 20 deny (?:65001) origin egp\n"
                   "as-path-list A 30 permit 65000{,3} origin 4000000000\n"
                   "as-path-list A 40 permit (x valid both origin incomplete\n"
                   "as-path-list A 50 permit _1_\n"
                   "no as-path-list A 50\n"
                   "no as-path-list A 60\n"
                   "version as-path-list A\n"
                   "as-path-list E\n"
                   "as-path-list G 10 permit _1_\n"
                   "no as-path-list G\n"
                   "as-path-regex-mode string\n"
                   "as-path-regex-mode 7\n"));
  EXPECT_EQ("mode 1\n", asPathConfig("as-path-regex-mode 1\n"));
}

TEST(AsPathScenarioTest, RefusesBadAsPathLinesSayingWhatWasExpected) {
  std::pair<char const*, char const*> const cases[] = {
      {"as-path-list A ten permit _1_\n", "expected sequence number, got 'ten'"},
      {"as-path-list A 10 allow _1_\n", "expected permit or deny, got 'allow'"},
      {"as-path-list A 10 permit\n", "expected a regular expression (one word), got end of line"},
      {"as-path-list A 10 permit _1_ origin bgp\n",
       "expected an origin (igp, egp, incomplete or a number), got 'bgp'"},
      {"as-path-list A 10 permit _1_ valid 2\n", "expected none, 0, 1 or both, got '2'"},
      {"as-path-list A 10 permit _1_ _2_\n", "expected origin, valid or end of line, got '_2_'"},
      {"as-path-regex-mode perl\n", "expected a regex mode (asn, string or a number), got 'perl'"},
      {"no as-path-list A 10 x\n", "expected end of line, got 'x'"},
  };
  for (auto [text, message] : cases)
    EXPECT_EQ(std::string("t.scenario:1: ") + message, refusalOf(text)) << text;
}

class AsPathCheckTest : public ScenarioTestSupport::CheckedWorldTest {};

TEST_F(AsPathCheckTest, FlowsMatchAFreshReplayWheneverNoListWaitsForItsVersion) {
  // Checked at each version, after the list's removal, and after each mode
  // change that leaves nothing pending.
  EXPECT_EQ("checks=6\n", runChecked(R"(as-path-list A 10 permit _65000_
as-path-list A 20 deny ^65001$
version as-path-list A
as-path-list A 15 permit (?:1)
version as-path-list A
as-path-regex-mode string
as-path-list A 30 permit a{,3}
as-path-regex-mode asn
no as-path-list A 15
version as-path-list A
as-path-regex-mode 9
no as-path-list A 30
no as-path-list A
)"));
}

TEST_F(AsPathCheckTest, EntryCorrectedInPlaceIsKnownByNameUntilTheModeChanges) {
  std::string const out = runChecked(R"(as-path-list A 10 permit _1_
as-path-list A 20 permit (x
version as-path-list A
as-path-list A 20 permit _2_
version as-path-list A
as-path-regex-mode string
)");
  EXPECT_EQ(
      "checks=3\n"
      "t.scenario:5: known divergence 'as-path-entry-corrected-in-place': an AS-path list "
      "withdrawn by an invalid entry stays withdrawn when that entry is made valid in place, "
      "until the entry is removed or the mode changes; a fresh root sends it\n",
      out);
}

TEST_F(AsPathCheckTest, ListRemovedWhileAnInputWasAwayIsKnownByNameUntilRemovedAgain) {
  std::string const out = runChecked(R"(as-path-list A 10 permit _1_
version as-path-list A
input policy-map off
no as-path-list A
input policy-map on
as-path-list A
version as-path-list A
no as-path-list A
)");
  EXPECT_NE(std::string::npos, out.find("t.scenario:5: known divergence "
                                        "'as-path-list-removed-while-away'"))
      << out;
  EXPECT_EQ(std::string::npos, out.find("differs")) << out;
  EXPECT_EQ(0u, world->model().stateText().find("256 16:u32=1 18:u32=0")) << world->model();
}

TEST_F(AsPathCheckTest, LostWithdrawalOrRestorationIsReported) {
  std::string const flow = R"(as-path-list A 10 permit _1_
version as-path-list A
as-path-list A 20 permit (x
version as-path-list A
no as-path-list A 20
version as-path-list A
)";
  auto without = [](char const* name, Orb::U32 seqno) {
    return [=](Rib::RecordedCommand const& c) {
      return !(c.name == name && c.path.size() == 5 &&
               c.path[4].text.view() == std::to_string(seqno) + "/asplist/entry");
    };
  };
  EXPECT_THAT(
      runChecked(flow, without("delAsPathListEntry", 10)),
      testing::StartsWith("checks=2\nline 4: version as-path-list A\nthe engine state differs"));
  // Only the second send of entry 10, its restoration, is lost.
  auto restoration = [sends = std::make_shared<int>(0),
                      entry10 = without("addAsPathListEntry", 10)](Rib::RecordedCommand const& c) {
    return entry10(c) || ++*sends != 2;
  };
  EXPECT_THAT(
      runChecked(flow, restoration),
      testing::StartsWith("checks=3\nline 6: version as-path-list A\nthe engine state differs"));
}

}  // namespace
