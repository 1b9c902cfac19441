// Copying each configuration input field by field into new entities.
#include "ScenarioCopy.h"

namespace Scenario {

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::Map;
using Routing::RouteMap::MapEntry;

Orb::Ptr<CommunitySet const> copyOf(Orb::Ptr<CommunitySet const> const& set) {
  if (!set) return nullptr;
  return CommunitySet::create({set->flag(), set->useCL(), set->listNames(), set->values()});
}

void copyEntry(MapEntry const& from, MapEntry& to) {
  to.permitIs(from.permit());
  for (auto const& [option, rule] : from.matchRule())
    to.matchRuleIs(rule);
  to.subRouteMapIs(from.subRouteMap());
  to.nextHopIs(from.nextHop());
  to.ipv6NextHopIs(from.ipv6NextHop());
  to.nextHopPeerAddrIs(from.nextHopPeerAddr());
  to.ipv6NextHopPeerAddrIs(from.ipv6NextHopPeerAddr());
  to.nextHopUnchangedIs(from.nextHopUnchanged());
  to.ipv6NextHopUnchangedIs(from.ipv6NextHopUnchanged());
  to.levelIs(from.level());
  to.metricIs(from.metric());
  to.medTypeIs(from.medType());
  to.metricTypeIs(from.metricType());
  to.originIs(from.origin());
  to.setValue2Is(from.setValue2());
  to.setValue3Is(from.setValue3());
  to.setValue19Is(from.setValue19());
  to.setValue25Is(from.setValue25());
  to.setValue26Is(from.setValue26());
  to.setValue33Is(from.setValue33());
  to.setValue35Is(from.setValue35());
  to.asPathPrependIs(from.asPathPrepend());
  to.asPathReplaceIs(from.asPathReplace());
  to.communityAddReplaceIs(copyOf(from.communityAddReplace()));
  to.communityDeleteIs(copyOf(from.communityDelete()));
  to.extCommunityIs(copyOf(from.extCommunity()));
  to.largeCommunityIs(copyOf(from.largeCommunity()));
  to.extCommLbwFlagIs(from.extCommLbwFlag());
  to.extCommLbwValueIs(from.extCommLbwValue());
  to.setFlagsIs(from.setFlags());
}

void copyMap(Map const& from, Map& to) {
  for (auto const& [seqno, entry] : from.mapEntry())
    copyEntry(*entry, *to.mapEntryIs(seqno));
  to.versionIs(from.version());
}

template <class L>
void copyVersioned(L const& from, L& to, auto const& entries, auto put) {
  for (auto const& [seqno, entry] : entries(from))
    put(to, entry);
  to.versionIs(from.version());
}

Orb::Ptr<Acl::AclListConfig> copyOf(Acl::AclListConfig const& from) {
  auto to = Acl::AclListConfig::create(from.name());
  to->regexModeIs(from.regexMode());
  for (auto const& [name, list] : from.prefixList()) {
    copyVersioned(
        *list, *to->prefixListIs(name),
        [](auto const& l) -> auto const& { return l.prefixEntry(); },
        [](auto& l, auto const& e) { l.prefixEntryIs(e); });
  }
  for (auto const& [name, list] : from.ipv6PrefixList()) {
    copyVersioned(
        *list, *to->ipv6PrefixListIs(name),
        [](auto const& l) -> auto const& { return l.prefixEntry(); },
        [](auto& l, auto const& e) { l.prefixEntryIs(e); });
  }
  for (auto const& [name, list] : from.asPathList()) {
    copyVersioned(
        *list, *to->asPathListIs(name), [](auto const& l) -> auto const& { return l.pathEntry(); },
        [](auto& l, auto const& e) { l.pathEntryIs(e); });
  }
  for (auto const& [name, list] : from.communityList()) {
    auto copy = to->communityListIs(name);
    for (auto const& [seqno, entry] : list->communityListEntry()) {
      auto e = copy->communityListEntryIs(seqno);
      e->permitIs(entry->permit());
      e->listTypeIs(entry->listType());
      e->communityValueIs(entry->communityValue());
      e->regexIs(entry->regex());
      e->versionIs(entry->version());
    }
  }
  return to;
}

Orb::Ptr<Acl::Config> copyOf(Acl::Config const& from) {
  auto to = Acl::Config::create(from.name());
  for (auto const& [type, config] : from.aclTypeConfig()) {
    auto copy = to->aclTypeConfigIs(type);
    for (auto const& [name, acl] : config->acl()) {
      auto a = copy->aclIs(name);
      a->standardIs(acl->standard());
      if (auto const& current = acl->currCfg()) {
        a->currCfgIs(Orb::make<Acl::AclCurrentConfig>(current->seqToId(), current->idToRule()));
      }
    }
  }
  return to;
}

// What the other parts of the agent listed. The library's own reasons are
// its output: the new machine registers those it has now, and a copied one
// it no longer has (its map changed and not yet resent) would stay for good.
Orb::Ptr<RoutingPolicyMap::PolicyMap> copyOf(RoutingPolicyMap::PolicyMap const& from) {
  using RoutingPolicyMap::PolicyMap;
  auto to = PolicyMap::create(from.name());
  auto copy = [&](PolicyMap::Requesters const& coll, auto add) {
    for (auto const& [name, requester] : coll) {
      Orb::Ptr<RoutingPolicyMap::PolicyRequester> entry;
      for (auto const& [reason, unused] : requester->reason()) {
        if (reason.pluginType == RoutingPolicyMap::pluginTypeRouting) continue;
        if (!entry) entry = ((*to).*add)(name);
        entry->reasonIs(reason);
      }
    }
  };
  copy(from.routeMap(), &PolicyMap::routeMapIs);
  copy(from.dynamicPrefixList(), &PolicyMap::dynamicPrefixListIs);
  copy(from.redistributedDynPfx(), &PolicyMap::redistributedDynPfxIs);
  return to;
}

}  // namespace

void replaceWithCopy(Inputs& in, Input input) {
  switch (input) {
    case Input::routeMapConfig: {
      auto to = Routing::RouteMap::Config::create(in.routeMapConfig->name());
      to->routeMapOpModeIs(in.routeMapConfig->routeMapOpMode());
      for (auto const& [name, map] : in.routeMapConfig->routeMap())
        copyMap(*map, *to->routeMapIs(name));
      in.routeMapConfig = to;
      break;
    }
    case Input::peerFilterConfig: {
      auto to = Routing::RouteMap::PeerFilterConfig::create(in.peerFilterConfig->name());
      for (auto const& [name, filter] : in.peerFilterConfig->peerFilter())
        copyMap(*filter, *to->peerFilterIs(name));
      in.peerFilterConfig = to;
      break;
    }
    case Input::aclListConfig:
      in.aclListConfig = copyOf(*in.aclListConfig);
      break;
    case Input::aclConfig:
      in.aclConfig = copyOf(*in.aclConfig);
      break;
    case Input::dynPfxListConfig: {
      auto to = Routing::DynamicPrefixList::Config::create(in.dynPfxListConfig->name());
      for (auto const& [name, list] : in.dynPfxListConfig->dynamicPrefixList()) {
        auto copy = to->dynamicPrefixListIs(name);
        copy->ipv4PrefixListIs(list->ipv4PrefixList());
        copy->ipv6PrefixListIs(list->ipv6PrefixList());
        copy->matchMapIs(list->matchMap());
        copy->versionIs(list->version());
      }
      in.dynPfxListConfig = to;
      break;
    }
    case Input::policyMap:
      in.policyMap = copyOf(*in.policyMap);
      break;
  }
}

}  // namespace Scenario
