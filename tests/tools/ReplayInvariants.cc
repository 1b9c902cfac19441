// The invariants of ReplayInvariants.h, read from the live root, the live
// policy map and the configuration.
#include "ReplayInvariants.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <tuple>
#include <vector>

#include "Tessel/CommListUsers.h"
#include "Tessel/Root.h"

namespace ReplayInvariants {

namespace {

using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::Requester;
using Flags = Routing::RouteMap::MapEntry::SetFlags;

constexpr std::string_view kPeerFilterPrefix = ".PEER_FILTER.";

/// The route map and sequence of a reason's key "MAP seqNo N".
std::optional<std::pair<std::string, unsigned>> sequenceOf(std::string_view key) {
  std::size_t const at = key.rfind(" seqNo ");
  if (at == std::string_view::npos) return std::nullopt;
  std::string_view const digits = key.substr(at + 7);
  unsigned seqno = 0;
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), seqno);
  if (ec != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return std::pair{std::string(key.substr(0, at)), seqno};
}

/// Whether one reason was put there by something that is still there: a
/// sequence of a listed route map that names the policy, a configured and
/// listed dynamic prefix list whose match map it is, or a requester the
/// scenario listed (the shadow policy map holds exactly those).
bool owned(Scenario::World const& world, RoutingPolicyMap::PolicyType type, Orb::Name const& name,
           Requester const& r) {
  PolicyMap const& live = *world.live().policyMap;
  PolicyMap const& listed = *world.shadow().policyMap;
  if (r.pluginType == RoutingPolicyMap::pluginTypeNone) {
    auto const entry = type == RoutingPolicyMap::policyTypeRouteMap ? listed.routeMap(name)
                       : type == RoutingPolicyMap::policyTypeDynamicPrefixList
                           ? listed.dynamicPrefixList(name)
                           : listed.redistributedDynPfx(name);
    return entry && entry->hasReason(r);
  }
  if (r.pluginType != RoutingPolicyMap::pluginTypeRouting) return false;
  if (r.cliMode == RoutingPolicyMap::cliModeDynamicPrefixList) {
    if (type != RoutingPolicyMap::policyTypeRouteMap ||
        r.configCli.view() != "dynamic prefix-list match-map") {
      return false;
    }
    Orb::Name const list(r.configKey.view());
    auto const configured = world.live().dynPfxListConfig->dynamicPrefixList(list);
    return configured && live.dynamicPrefixList(list) &&
           configured->matchMap().view() == name.view();
  }
  if (r.cliMode != RoutingPolicyMap::cliModeRouteMap) return false;
  auto const seq = sequenceOf(r.configKey.view());
  if (!seq) return false;
  Orb::Name const mapName(seq->first);
  auto const map = world.live().routeMapConfig->routeMap(mapName);
  auto const entry = map ? map->mapEntry(seq->second) : nullptr;
  if (!entry || !live.routeMap(mapName)) return false;
  std::string_view const cli = r.configCli.view();
  if (type == RoutingPolicyMap::policyTypeRouteMap) {
    return cli == "sub-route-map" && entry->subRouteMap().view() == name.view();
  }
  if (type != RoutingPolicyMap::policyTypeDynamicPrefixList) return false;
  auto const option = cli == "match ipv4 address dynamic prefix-list"
                          ? Routing::RouteMap::matchDynamicPrefixList
                      : cli == "match ipv6 address dynamic prefix-list"
                          ? Routing::RouteMap::matchIpv6DynamicPrefixList
                          : Routing::RouteMap::MatchOption(0);
  auto const* rule = option ? entry->matchRule(option) : nullptr;
  return rule && rule->strValue.view() == name.view();
}

/// The route map, or peer filter under its engine name, called `name`.
Routing::RouteMap::Map const* mapOf(Scenario::World const& world, std::string_view name) {
  if (name.starts_with(kPeerFilterPrefix)) {
    name.remove_prefix(kPeerFilterPrefix.size());
    return world.live().peerFilterConfig->peerFilter(Orb::Name(name)).get();
  }
  return world.live().routeMapConfig->routeMap(Orb::Name(name)).get();
}

/// The set of the clause `flag` of sequence `seqno`, when it is on.
Orb::Ptr<Routing::RouteMap::CommunitySet const> clauseSet(Routing::RouteMap::Map const& map,
                                                          unsigned seqno, unsigned flag) {
  auto const entry = map.mapEntry(seqno);
  if (!entry) return nullptr;
  bool const del = flag == Acl::commSetDelete_;
  if (!entry->setFlags().has(del ? Flags::communityDelete : Flags::communityAddReplace))
    return nullptr;
  return del ? entry->communityDelete() : entry->communityAddReplace();
}

std::string clauseText(std::string const& list, std::string const& map, unsigned seqno,
                       unsigned flag) {
  return list + ": " + map + " seq " + std::to_string(seqno) + " flag " + std::to_string(flag);
}

void policyOwners(Scenario::World const& world, std::string& out) {
  PolicyMap const& live = *world.live().policyMap;
  auto walk = [&](RoutingPolicyMap::PolicyType type, PolicyMap::Requesters const& coll) {
    for (auto const& [name, requester] : coll) {
      if (requester->reason().empty()) {
        out += RoutingPolicyMap::valueToStrep(type) + " \"" + name.str() +
               "\" is listed without a reason\n";
      }
      for (auto const& [reason, unused] : requester->reason()) {
        if (owned(world, type, name, reason)) continue;
        std::ostringstream line;
        line << RoutingPolicyMap::valueToStrep(type) << " \"" << name.str() << "\" " << reason
             << ": nothing that is still there put this reason there\n";
        out += line.str();
      }
    }
  };
  walk(RoutingPolicyMap::policyTypeRouteMap, live.routeMap());
  walk(RoutingPolicyMap::policyTypeDynamicPrefixList, live.dynamicPrefixList());
  walk(RoutingPolicyMap::policyTypeRedistributedDynPfx, live.redistributedDynPfx());
}

void commListUsers(Scenario::World const& world, std::string& out) {
  Tessel::Root const* root = Tessel::rmRoot.get();
  if (!root || !root->commListUsers()) {
    out += "the root holds no community-list user index\n";
    return;
  }
  Tessel::CommListUsers const& users = *root->commListUsers();
  std::set<std::tuple<std::string, std::string, unsigned, unsigned>> held;
  std::map<Tessel::MapEntryCommSetClause, std::vector<Orb::Name>> lists;
  for (auto const& [listName, coll] : users.commListUser()) {
    std::string const list = listName.str();
    if (coll->commSetClause().empty()) out += "the index keeps " + list + " without a clause\n";
    for (auto const& [key, record] : coll->commSetClause()) {
      std::string const map = key.mapName().str();
      unsigned const flag = static_cast<unsigned>(key.flag());
      lists[key].push_back(listName);
      held.emplace(list, map, key.mapSeqno(), flag);
      auto const* configured = mapOf(world, map);
      auto const set = configured ? clauseSet(*configured, key.mapSeqno(), flag) : nullptr;
      if (!set || set != record.commSet() || !set->listNames().contains(listName)) {
        out += "the index holds " + clauseText(list, map, key.mapSeqno(), flag) +
               ", which the configuration does not have\n";
      }
    }
  }
  auto const& back = users.clauseLists();
  if (back.size() != lists.size() ||
      !std::equal(back.begin(), back.end(), lists.begin(), [](auto const& a, auto const& b) {
        return a.first == b.first && a.second == b.second;
      })) {
    out += "the index's way back from clauses to lists disagrees with its collections\n";
  }
  auto expect = [&](std::string const& engineName, Routing::RouteMap::Map const& map) {
    for (auto const& [seqno, entry] : map.mapEntry()) {
      for (unsigned flag : {unsigned(Acl::commSetAdd_), unsigned(Acl::commSetDelete_)}) {
        auto const set = clauseSet(map, seqno, flag);
        if (!set) continue;
        for (Orb::Name const& list : set->listNames()) {
          if (held.contains({list.str(), engineName, seqno, flag})) continue;
          out += "the index misses " + clauseText(list.str(), engineName, seqno, flag) + "\n";
        }
      }
    }
  };
  for (auto const& [name, map] : world.live().routeMapConfig->routeMap())
    expect(name.str(), *map);
  for (auto const& [name, filter] : world.live().peerFilterConfig->peerFilter())
    expect(std::string(kPeerFilterPrefix) + name.str(), *filter);
}

}  // namespace

std::string broken(Scenario::World const& world) {
  std::string out;
  policyOwners(world, out);
  commListUsers(world, out);
  // In text order, not the index's hash order.
  std::vector<std::string> lines;
  for (std::size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(out.substr(at, end + 1 - at));
  std::sort(lines.begin(), lines.end());
  std::string sorted;
  for (std::string const& line : lines)
    sorted += line;
  return sorted;
}

}  // namespace ReplayInvariants
