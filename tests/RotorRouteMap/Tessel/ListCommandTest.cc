// Prefix-list and standard ACL commands: paths, value tags and their order,
// the length-range rules and the permit flag.
#include <gtest/gtest.h>

#include "Harness.h"

namespace {

using Tessel::Cog;

class ListCommandTest : public TesselTest::CogTest {};

TEST_F(ListCommandTest, LengthRangeSendsBothBoundsOnlyWhenNoneIsConfigured) {
  auto const p = Kiwi::Prefix::fromString("10.0.0.0/8");
  struct Case {
    Orb::U32 ge, le;
    char const* range;
  } const cases[] = {{0, 0, " 6:u32=8 7:u32=8"},
                     {16, 0, " 6:u32=16"},
                     {0, 24, " 7:u32=24"},
                     {16, 24, " 6:u32=16 7:u32=24"}};
  for (auto const& c : cases) {
    cog->doAddIpPrefixListEntry("P", 5, Acl::permit, p, c.ge, c.le);
    EXPECT_EQ(std::string("doAddIpPrefixListEntry [512 603 515=\"P\" 516=5] 9:u32=5 8:flag=true "
                          "0:ip=10.0.0.0 2:u32=8") +
                  c.range + "\n",
              sent())
        << "ge " << c.ge << " le " << c.le;
    auto const p6 = Kiwi::Ip6Prefix::fromString("2001:db8::/32");
    cog->doAddIpv6PrefixListEntry("P", 5, Acl::permit, p6, c.ge, c.le);
    std::string range = c.range;
    if (c.ge == 0 && c.le == 0) range = " 6:u32=32 7:u32=32";
    EXPECT_EQ(
        "doAddIpv6PrefixListEntry [512 603 515=\".ipv6.P\" 516=5] 9:u32=5 8:flag=true "
        "1:ip6=2001:db8:: 3:u32=32" +
            range + "\n",
        sent());
  }
}

TEST_F(ListCommandTest, OnlyActionOneIsDenyOnBothFamiliesAndAcls) {
  auto const p = Kiwi::Prefix::fromString("10.0.0.0/8");
  auto const p6 = Kiwi::Ip6Prefix::fromString("::/0");
  auto const src = Kiwi::IpAddrWithFullMask::fromString("10.1.0.0/16");
  for (Orb::U32 action : {0u, 1u, 2u, 0xffffffffu}) {
    bool const permit = action != 1;
    std::string const flag = permit ? "8:flag=true" : "8:flag=false";
    cog->doAddIpPrefixListEntry("P", 1, Acl::MatchPermit(action), p, 0, 0);
    cog->doAddIpv6PrefixListEntry("P", 1, Acl::MatchPermit(action), p6, 0, 0);
    cog->doAddIpStdAclEntry("A", 1, Acl::MatchPermit(action), src);
    std::string const text = sent();
    EXPECT_EQ(3,
              [&] {
                int n = 0;
                for (auto at = text.find(flag); at != std::string::npos;
                     at = text.find(flag, at + 1))
                  ++n;
                return n;
              }())
        << "action " << action << "\n"
        << text;
  }
}

TEST_F(ListCommandTest, ListNodesAndDeletesUseTheEngineName) {
  cog->doAddIpPrefixList("A");
  cog->doAddIpv6PrefixList("A");
  cog->doDelIpPrefixList("A", Cog::ipv4);
  cog->doDelIpPrefixList("A", Cog::ipv6);
  cog->doDelIpPrefixListEntry("A", 7, Cog::ipv6);
  EXPECT_EQ(
      "doAddIpPrefixList [512 603 515=\"A\"] 0:str=\"A\"\n"
      "doAddIpv6PrefixList [512 603 515=\".ipv6.A\"] 0:str=\".ipv6.A\"\n"
      "doDelIpPrefixList [512 603 515=\"A\"] delete\n"
      "doDelIpPrefixList [512 603 515=\".ipv6.A\"] delete\n"
      "doDelIpPrefixListEntry [512 603 515=\".ipv6.A\" 516=7] delete\n",
      sent());
  EXPECT_NE(std::string::npos, trace.text.find("\n7 doDelIpPrefixListEntry 7"));
}

TEST_F(ListCommandTest, EntryTraceNamesSequenceAndPrefix) {
  cog->doAddIpPrefixListEntry("P", 10, Acl::permit, Kiwi::Prefix::fromString("10.0.0.0/8"), 0, 0);
  EXPECT_EQ("\n7 doAddIpPrefixListEntry 10 10.0.0.0/8", trace.text);
}

TEST_F(ListCommandTest, StandardAclSendsItsMaskAsAnAddress) {
  cog->doAddIpStdAcl("A");
  cog->doAddIpStdAclEntry("A", 10, Acl::permit,
                          Kiwi::IpAddrWithFullMask::fromString("10.1.0.0/16"));
  cog->doDelIpStdAclEntry("A", 10);
  cog->doDelIpStdAcl("A");
  EXPECT_EQ(
      "doAddIpStdAcl [512 602 517=\"A\"] 0:str=\"A\"\n"
      "doAddIpStdAclEntry [512 602 517=\"A\" 518=10] 9:u32=10 8:flag=true 0:ip=10.1.0.0 "
      "4:ip=255.255.0.0\n"
      "doDelIpStdAclEntry [512 602 517=\"A\" 518=10] delete\n"
      "doDelIpStdAcl [512 602 517=\"A\"] delete\n",
      sent());
  EXPECT_EQ("", trace.text) << "the ACL commands write no trace of their own";
}

TEST(PrefixListFamilyText, NamesAndNumbersBothWays) {
  EXPECT_EQ("ipv4", Tessel::valueToStrep(Cog::ipv4));
  EXPECT_EQ("ipv6", Tessel::valueToStrep(Cog::ipv6));
  EXPECT_EQ("7", Tessel::valueToStrep(Cog::PrefixListFamily(7)));
  EXPECT_EQ("ipv6", testing::PrintToString(Cog::ipv6)) << "failure messages print the name";
  EXPECT_EQ(Cog::ipv6, Tessel::prefixListFamilyFromStrep("ipv6"));
  EXPECT_EQ(Cog::ipv6, Tessel::prefixListFamilyFromStrep("1"));
  EXPECT_THROW(Tessel::prefixListFamilyFromStrep("ipv5"), Orb::RangeError);
  EXPECT_EQ(Cog::PrefixListFamily(9), Tessel::PrefixListFamilyInstance(9u));
  EXPECT_EQ("ipv6", Tessel::stringValue(Tessel::PrefixListFamilyInstance("ipv6")));
  EXPECT_EQ(Cog::ipv6, Tessel::sequenceToValue<Cog::PrefixListFamily>(1));
  EXPECT_THROW(Tessel::sequenceToValue<Cog::PrefixListFamily>(2), Orb::RangeError);
}

}  // namespace
