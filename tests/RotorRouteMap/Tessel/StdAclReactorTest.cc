// The standard IP ACL reactors: whole-list rewrites in two transactions, the
// action inversion, and what sends nothing at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Harness.h"
#include "Tessel/AclConfigSm.h"

namespace {

using Acl::AclCurrentConfig;
using Acl::IpRuleConfig;
using Acl::UniqueId;

struct Rule {
  Orb::U32 seqno;
  Orb::U32 action;
  char const* source;
};

/// A current configuration with these rules, identified by seqno + 1000.
Orb::Ptr<AclCurrentConfig const> rules(std::initializer_list<Rule> list) {
  AclCurrentConfig::SeqToId seqToId;
  AclCurrentConfig::IdToRule idToRule;
  for (Rule const& r : list) {
    UniqueId id{r.seqno + 1000u};
    seqToId.set(r.seqno, id);
    IpRuleConfig rule;
    rule.action = r.action;
    rule.filter.sourceIs(Kiwi::IpAddrWithFullMask::fromString(r.source));
    idToRule.set(id, rule);
  }
  return Orb::make<AclCurrentConfig>(std::move(seqToId), std::move(idToRule));
}

std::string path(std::string const& name) {
  return "512 602 517=\"" + name + "\"";
}
std::string deleteAcl(std::string const& name) {
  return "doDelIpStdAcl [" + path(name) + "] delete\ncommit\n";
}
std::string addAcl(std::string const& name) {
  return "doAddIpStdAcl [" + path(name) + "] 0:str=\"" + name + "\"\n";
}
std::string entry(std::string const& name, Orb::U32 seqno, bool permit, std::string const& addr,
                  std::string const& mask) {
  auto const n = std::to_string(seqno);
  return "doAddIpStdAclEntry [" + path(name) + " 518=" + n + "] 9:u32=" + n +
         " 8:flag=" + (permit ? "true" : "false") + " 0:ip=" + addr + " 4:ip=" + mask + "\n";
}

class StdAclReactorTest : public TesselTest::RootTest {
 protected:
  StdAclReactorTest() {
    giveAllInputs();
    ip = aclConfig->aclTypeConfigIs(Acl::aclTypeIp);
    sent();
  }
  Orb::Ptr<Acl::AclConfig> standardAcl(char const* name) {
    auto acl = ip->aclIs(name);
    acl->standardIs(true);
    return acl;
  }
  Tessel::AclConfigSm* sm() const { return root->vrfStatusSm()->aclConfigSm(); }
  Orb::Ptr<Acl::AclTypeConfig> ip;
};

// Rewrites, inverted actions, missing rules and what sends nothing are pinned
// by the golden std-acl scenario.
TEST_F(StdAclReactorTest, RemovedAclTakesItsReactorWithItsMessage) {
  standardAcl("A")->currCfgIs(rules({{10, 1, "10.1.0.0/16"}}));
  sent();
  ip->aclDel("A");
  EXPECT_NE(std::string::npos, trace.text.find("\n1 handleIpConfig: remove ip acl std list A"));
  EXPECT_EQ(nullptr, sm()->ipConfigSm()->acl("A"));
}

TEST_F(StdAclReactorTest, AclsAreReplayedWhenAnInputComesBack) {
  standardAcl("A")->currCfgIs(rules({{10, 0, "10.1.0.0/16"}}));
  standardAcl("B");
  sent();
  root->dynPfxListConfigIs(nullptr);
  root->dynPfxListConfigIs(dynPfxListConfig);
  std::string const stream = sent();
  auto const at = stream.find("doDelIpStdAcl");
  ASSERT_NE(std::string::npos, at) << stream;
  EXPECT_EQ(
      deleteAcl("A") + addAcl("A") + entry("A", 10, false, "10.1.0.0", "255.255.0.0") + "commit\n",
      stream.substr(at));
}

TEST_F(StdAclReactorTest, IpTypeConfigurationComingAndGoingMakesAndDropsItsReactor) {
  aclConfig->aclTypeConfigDel(Acl::aclTypeIp);
  EXPECT_EQ(nullptr, sm()->ipConfigSm());
  auto again = aclConfig->aclTypeConfigIs(Acl::aclTypeIp);
  auto acl = again->aclIs("A");
  acl->standardIs(true);
  acl->currCfgIs(rules({{10, 1, "10.1.0.0/16"}}));
  EXPECT_EQ(
      deleteAcl("A") + addAcl("A") + entry("A", 10, true, "10.1.0.0", "255.255.0.0") + "commit\n",
      sent());
}

TEST(IpFilterRange, OutOfRangeIdentifiersAreRefusedWhereverTheyAreCopied) {
  Acl::IpFilter filter;
  EXPECT_THROW(
      {
        try {
          filter.vniIs(16777216);
        } catch (Orb::RangeError const& e) {
          EXPECT_STREQ("IpFilterBase::vni < 0 or > 16777215 not allowed", e.what());
          throw;
        }
      },
      Orb::RangeError);
  EXPECT_THROW(filter.tniIs(-1), Orb::RangeError);
  filter.vniIs(16777215);
  filter.tniIs(0);
  Acl::IpFilter copy = filter;
  EXPECT_EQ(16777215, copy.vni());
}

}  // namespace
