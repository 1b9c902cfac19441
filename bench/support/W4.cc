// Building the W4 configuration into a root's inputs.
#include "W4.h"

#include "Inputs.h"

namespace Bench {

namespace {

using Orb::String;
using Orb::U32;
using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;

constexpr U32 kRouteMaps = 1000;
constexpr U32 kSequencesPerMap = 10;
constexpr U32 kPrefixLists = 100;
constexpr U32 kPrefixEntries = 1000;
constexpr U32 kAsPathLists = 500;
constexpr U32 kAsPathEntries = 5;
constexpr U32 kCommunityLists = 500;
/// Every fifth sequence adds the communities of a list: 2,000 clauses.
constexpr U32 kCommunityClauseEvery = 5;
constexpr U32 kAcls = 100;
constexpr U32 kAclRules = 10;
constexpr U32 kPeerFilters = 100;
constexpr U32 kPeerFilterSequences = 5;
constexpr U32 kDynamicPrefixLists = 100;

constexpr double kObjects =
    kRouteMaps * (1 + kSequencesPerMap) + kPrefixLists * (1 + kPrefixEntries) +
    kAsPathLists * (1 + kAsPathEntries) + kCommunityLists * 2 + kAcls * (1 + kAclRules) +
    kPeerFilters * (1 + kPeerFilterSequences) + kDynamicPrefixLists;

void routeMapsIs(Routing::RouteMap::Config& config) {
  for (U32 m = 0; m < kRouteMaps; ++m) {
    auto map = config.routeMapIs(String::format("RM%u", m));
    for (U32 s = 1; s <= kSequencesPerMap; ++s) {
      U32 const i = m * kSequencesPerMap + s;
      auto e = map->mapEntryIs(s * 10);
      MatchRule prefix;
      prefix.option = Routing::RouteMap::matchPrefixList;
      prefix.strValue = String::format("PL%u", i % kPrefixLists);
      e->matchRuleIs(prefix);
      MatchRule proto;
      proto.option = Routing::RouteMap::matchProtocol;
      proto.intValue = 1 + i % 9;
      e->matchRuleIs(proto);
      MapEntry::SetFlags flags{MapEntry::SetFlags::metric | MapEntry::SetFlags::nextHop |
                               MapEntry::SetFlags::asPathPrepend};
      e->metricIs(static_cast<Orb::S32>(i));
      e->nextHopIs(Kiwi::IpAddr(0x0a000000u + i));
      MapEntry::AsPath prepend;
      prepend.set(0, 65000 + i % 100);
      e->asPathPrependIs(prepend);
      if (i % kCommunityClauseEvery == 0) {
        Orb::Name const list = String::format("CL%u", i / kCommunityClauseEvery % kCommunityLists);
        e->communityAddReplaceIs(CommunitySet::create({Acl::commSetAdd_, true, {list}, {}}));
        flags.bits |= MapEntry::SetFlags::communityAddReplace;
      }
      e->setFlagsIs(flags);
    }
  }
}

void peerFiltersIs(Routing::RouteMap::PeerFilterConfig& config) {
  for (U32 f = 0; f < kPeerFilters; ++f) {
    auto filter = config.peerFilterIs(String::format("PF%u", f));
    for (U32 s = 1; s <= kPeerFilterSequences; ++s) {
      auto e = filter->mapEntryIs(s * 10);
      e->permitIs(s % 2 ? Acl::permit : Acl::deny);
      MatchRule range;
      range.option = Routing::RouteMap::matchAsRange;
      range.intValue = 64512 + s * 100;
      range.rangeHigh = range.intValue + 99;
      e->matchRuleIs(range);
    }
  }
}

void listsIs(Acl::AclListConfig& lists) {
  for (U32 l = 0; l < kPrefixLists; ++l) {
    auto list = lists.prefixListIs(String::format("PL%u", l));
    for (U32 i = 1; i <= kPrefixEntries; ++i) {
      Kiwi::Prefix const prefix(Kiwi::IpAddr(0x0a000000u + (l << 16) + (i << 4)), 28);
      list->prefixEntryIs({i * 10, i % 7 ? Acl::permit : Acl::deny, prefix, 0, 0});
    }
    list->versionInc();
  }
  for (U32 l = 0; l < kAsPathLists; ++l) {
    auto list = lists.asPathListIs(String::format("AP%u", l));
    for (U32 s = 1; s <= kAsPathEntries; ++s) {
      Acl::AsPathEntry e;
      e.seqno = s * 10;
      e.regex = String::format("_%u_", 65000 + (l + s) % 1000);
      list->pathEntryIs(e);
    }
    list->versionInc();
  }
  for (U32 l = 0; l < kCommunityLists; ++l) {
    auto list = lists.communityListIs(String::format("CL%u", l));
    auto e = list->communityListEntryIs(10);
    e->communityValueIs({{0, 0, 0xfde80000u + l}});
    e->versionIs(1);
  }
}

void aclsIs(Acl::Config& config) {
  auto type = config.aclTypeConfigIs(Acl::aclTypeIp);
  for (U32 a = 0; a < kAcls; ++a) {
    auto acl = type->aclIs(String::format("ACL%u", a));
    acl->standardIs(true);
    Acl::AclCurrentConfig::SeqToId seqs;
    Acl::AclCurrentConfig::IdToRule rules;
    for (U32 r = 1; r <= kAclRules; ++r) {
      Acl::IpRuleConfig rule;
      rule.action = r % 3 ? 1 : 0;
      rule.filter.sourceIs({Kiwi::IpAddr(0xc0a80000u + (a << 8) + r), 0xffffffffu});
      Acl::UniqueId const id{r};
      seqs.set(r * 10, id);
      rules.set(id, rule);
    }
    acl->currCfgIs(Orb::make<Acl::AclCurrentConfig>(std::move(seqs), std::move(rules)));
  }
}

void dynamicPrefixListsIs(Routing::DynamicPrefixList::Config& config,
                          RoutingPolicyMap::PolicyMap& policyMap) {
  RoutingPolicyMap::Requester const bench{RoutingPolicyMap::pluginTypeNone,
                                          RoutingPolicyMap::cliModeNone, "", "bench"};
  for (U32 d = 0; d < kDynamicPrefixLists; ++d) {
    Orb::Name const name = String::format("DPL%u", d);
    auto list = config.dynamicPrefixListIs(name);
    list->ipv4PrefixListIs(String::format("PL%u", d % kPrefixLists));
    list->matchMapIs(String::format("RM%u", d));
    list->versionInc();
    policyMap.dynamicPrefixListIs(name)->reasonIs(bench);
  }
}

}  // namespace

double const w4Objects = kObjects;

W4World::W4World(bool mirror) {
  root = Tessel::rootFactory("bench");
  root->engineMirrorIs(mirror);
  root->vrfNameIs("default");
  routeMaps = Routing::RouteMap::Config::create("rm");
  routeMapsIs(*routeMaps);
  peerFilters = Routing::RouteMap::PeerFilterConfig::create("pf");
  peerFiltersIs(*peerFilters);
  lists = Acl::AclListConfig::create("acllist");
  listsIs(*lists);
  acls = Acl::Config::create("acl");
  aclsIs(*acls);
  dynamicPrefixLists = Routing::DynamicPrefixList::Config::create("dynpfx");
  policyMap = RoutingPolicyMap::PolicyMap::create("pmap");
  dynamicPrefixListsIs(*dynamicPrefixLists, *policyMap);
  Inputs{routeMaps, peerFilters, lists, acls, dynamicPrefixLists, policyMap}.giveTo(
      *root, Inputs::Held::policyMap);
}

W4World::~W4World() {
  root = nullptr;
  Tessel::rmRoot = nullptr;
}

}  // namespace Bench
