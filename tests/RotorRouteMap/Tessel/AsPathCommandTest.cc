// AS-path list commands: the composite list and entry keys, the origin codes,
// the permit flag that only a permit entry carries, and the regex mode.
#include <gtest/gtest.h>

#include <string>

#include "Harness.h"

namespace {

using TesselTest::CogTest;

std::string const listPath = "512 534 535=\"/policy/asplist A\"";

std::string entryPath(Orb::U32 seqno) {
  return listPath + " 536 537=\"" + std::to_string(seqno) + "/asplist/entry\"";
}

TEST_F(CogTest, AsPathListNodeIsKeyedByPrefixedNameAndCarriesThePlainName) {
  cog->doAddAsPathList("A");
  cog->doDeleteAsPathList("A");
  EXPECT_EQ("addAsPathList [" + listPath + "] 0:str=\"A\"\n" +  //
                "deleteAsPathList [" + listPath + "] delete\n",
            sent());
  EXPECT_EQ(0u, engine.commits());
}

TEST_F(CogTest, AsPathEntryCarriesOriginCodeAndPermitFlagOnlyWhenPermitting) {
  struct Case {
    Acl::MatchPermit action;
    Orb::U32 origin;
    std::string values;
  };
  Case const cases[] = {
      {Acl::permit, 0, "2:u32=257 3:flag=true"},
      {Acl::permit, 1, "2:u32=258 3:flag=true"},
      {Acl::deny, 2, "2:u32=260"},
      {Acl::deny, 3, "2:u32=256"},
      {Acl::permit, 0xffffffff, "2:u32=256 3:flag=true"},
      // Any action other than permit is a deny here, unlike prefix lists.
      {Acl::MatchPermit(7), 0, "2:u32=257"},
  };
  for (Case const& c : cases) {
    cog->doAddAsPathListEntry("A", 5, c.action, "^65000_", Acl::BGPOrigin(c.origin));
    EXPECT_EQ(
        "addAsPathListEntry [" + entryPath(5) + "] 0:u32=5 1:str=\"^65000_\" " + c.values + "\n",
        sent())
        << "action " << c.action << " origin " << c.origin;
  }
  cog->doDelAsPathListEntry("A", 4000000000u);
  EXPECT_EQ("delAsPathListEntry [" + entryPath(4000000000u) + "] delete\n", sent());
  EXPECT_EQ(0u, engine.commits());
}

TEST_F(CogTest, RegexModeOneIsSentAsTwoAndEveryOtherModeAsOne) {
  std::pair<Orb::U32, Orb::U32> const modes[] = {{0, 1}, {1, 2}, {2, 1}, {0xffffffff, 1}};
  for (auto [mode, sentValue] : modes) {
    cog->doAsPathRegexMode(Acl::RegexMode(mode));
    EXPECT_EQ("AsPathRegexMode [256] 16:u32=" + std::to_string(sentValue) + "\n", sent())
        << "mode " << mode;
  }
  EXPECT_EQ(0u, engine.commits());
}

using AsPathCommandDeathTest = CogTest;

TEST_F(AsPathCommandDeathTest, RegexModeIsCheckedAgainstTheRootsVrf) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        auto root = Tessel::rootFactory("root");
        Tessel::cogFactory("red")->doAsPathRegexMode(Acl::regexModeString);
      },
      "Assertion failed: rmRoot->vrfName\\(\\) == vrfName");
}

}  // namespace
