// The invariants of ReplayInvariants.h, read from the live root, the live
// policy map and the configuration.
#include "ReplayInvariants.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>
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

}  // namespace

bool Watch::reactorsAlive(Scenario::World const& world) {
  for (std::size_t i = 0; i < Scenario::inputCount; ++i) {
    if (!world.inputPresent(Scenario::Input(i))) return false;
  }
  return true;
}

namespace {

/// The standard community clauses of `map`'s sequences that name lists, into
/// `out` under the map's engine name.
template <class Uses>
void addUses(std::map<std::pair<std::string, unsigned>, Uses>& out, std::string const& name,
             Routing::RouteMap::Map const& map) {
  for (auto const& [seqno, entry] : map.mapEntry()) {
    Uses& uses = out[{name, seqno}];
    auto const flags = entry->setFlags();
    if (flags.has(Flags::communityAddReplace)) {
      for (Orb::Name const& list : entry->communityAddReplace()->listNames())
        uses.emplace(3, list.str());
    }
    if (flags.has(Flags::communityDelete)) {
      for (Orb::Name const& list : entry->communityDelete()->listNames())
        uses.emplace(1, list.str());
    }
  }
}

}  // namespace

Watch::Snapshot Watch::snapshotOf(Scenario::World const& world) {
  Snapshot out;
  for (auto const& [mapName, map] : world.shadow().routeMapConfig->routeMap()) {
    out.maps.insert(mapName.str());
    addUses(out.uses, mapName.str(), *map);
  }
  for (auto const& [name, filter] : world.shadow().peerFilterConfig->peerFilter())
    addUses(out.filterUses, std::string(kPeerFilterPrefix) + name.str(), *filter);
  return out;
}

void Watch::record(std::set<Record>& into, std::map<Sequence, Uses> const& uses,
                   std::string const& map) {
  for (auto it = uses.lower_bound({map, 0}); it != uses.end() && it->first.first == map; ++it) {
    for (auto const& [flag, list] : it->second)
      into.emplace(list, map, it->first.second, flag);
  }
}

void Watch::forget(Sequence const& seq) {
  std::erase_if(expected_, [&](Record const& r) {
    return std::get<1>(r) == seq.first && std::get<2>(r) == seq.second;
  });
}

void Watch::before(Scenario::World const& world) {
  before_ = snapshotOf(world);
  aliveBefore_ = reactorsAlive(world);
}

void Watch::after(Scenario::World const& world, Scenario::Statement const& statement) {
  bool const alive = reactorsAlive(world);
  Snapshot const now = snapshotOf(world);
  if (!alive) {
    // The reactors went, and with them what they noted; the index stays.
    noted_.clear();
    return;
  }
  if (!aliveBefore_) {
    // New reactors send every map whole and note every sequence, cleaning
    // nothing up.
    for (auto const& [seq, uses] : now.filterUses)
      record(filterRecords_, now.filterUses, seq.first);
    for (std::string const& map : now.maps) {
      record(expected_, now.uses, map);
      auto& noted = noted_[map];
      for (auto it = now.uses.lower_bound({map, 0}); it != now.uses.end() && it->first.first == map;
           ++it)
        noted.insert(it->first.second);
    }
    return;
  }
  // A map removed takes its reactor and nothing of the index; a map made is
  // sent while still empty.
  for (std::string const& map : before_.maps) {
    if (!now.maps.contains(map)) noted_.erase(map);
  }
  for (auto const& [seq, uses] : before_.uses) {
    if (now.uses.contains(seq) || !now.maps.contains(seq.first)) continue;
    forget(seq);
    noted_[seq.first].erase(seq.second);
  }
  for (auto const& [seq, uses] : now.uses) {
    if (!before_.uses.contains(seq)) noted_[seq.first].insert(seq.second);
  }
  auto const& e = statement.effect;
  if (e.kind == Scenario::Effect::Kind::sent && e.object == Scenario::ObjectKind::routeMap) {
    std::string const map = e.name.str();
    for (unsigned seqno : std::exchange(noted_[map], {}))
      forget({map, seqno});
    record(expected_, now.uses, map);
  }
  // A peer filter's version sends it whole, with no clean-up before.
  if (e.kind == Scenario::Effect::Kind::sent && e.object == Scenario::ObjectKind::peerFilter)
    record(filterRecords_, now.filterUses, std::string(kPeerFilterPrefix) + e.name.str());
}

void Watch::policyOwners(Scenario::World const& world, std::string& out) const {
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

void Watch::commListUsers(Scenario::World const& world, std::string& out) {
  Tessel::Root const* root = Tessel::rmRoot.get();
  if (!root || !root->commListUsers()) {
    out += "the root holds no community-list user index\n";
    return;
  }
  Snapshot const now = snapshotOf(world);
  std::set<Record> held;
  std::set<Record> heldFilters;
  for (auto const& [listName, coll] : root->commListUsers()->commListUser()) {
    std::string const list = listName.str();
    if (coll->commSetClause().empty()) out += "the index keeps " + list + " without a clause\n";
    for (auto const& [key, record] : coll->commSetClause()) {
      std::string const map = key.mapName().str();
      unsigned const flag = static_cast<unsigned>(key.flag());
      std::string const what = list + ": " + map + " seq " + std::to_string(key.mapSeqno()) +
                               " flag " + std::to_string(flag);
      if (!record.commSet() || !record.commSet()->listNames().contains(listName)) {
        out += "the index holds " + what + " under a set that does not name the list\n";
      }
      Record const r{list, map, key.mapSeqno(), flag};
      // Peer filters are sent through the route-map insertion, which records
      // their clauses, but have no clean-up at all: every clause a send
      // recorded stays.
      if (map.starts_with(kPeerFilterPrefix)) {
        heldFilters.insert(r);
        if (!filterRecords_.contains(r)) {
          out += "the index holds " + what + ", which no send of the peer filter recorded\n";
        } else if (auto const it = now.filterUses.find({map, key.mapSeqno()});
                   it == now.filterUses.end() || !it->second.contains({flag, list})) {
          ++excused_[kPeerFilterClausesKept];
        }
        continue;
      }
      held.insert(r);
      if (!expected_.contains(r)) {
        out += "the index holds " + what + ", which the library would have removed\n";
        continue;
      }
      // Kept on purpose: a version cleans up only the sequences noted since
      // the last one, and a removed map or a new reactor cleans up nothing.
      auto const it = now.uses.find({map, key.mapSeqno()});
      if (it == now.uses.end() || !it->second.contains({flag, list}))
        ++excused_[kCommunityListUserStale];
    }
  }
  for (auto const& [list, map, seqno, flag] : expected_) {
    if (held.contains({list, map, seqno, flag})) continue;
    out += "the index misses " + list + ": " + map + " seq " + std::to_string(seqno) + " flag " +
           std::to_string(flag) + "\n";
  }
  for (auto const& r : filterRecords_) {
    if (heldFilters.contains(r)) continue;
    out += "the index misses " + std::get<0>(r) + ": " + std::get<1>(r) + " seq " +
           std::to_string(std::get<2>(r)) + " flag " + std::to_string(std::get<3>(r)) + "\n";
  }
  // Whatever was kept, every clause as settled is recorded.
  for (auto const* all : {&now.uses, &now.filterUses}) {
    for (auto const& [seq, uses] : *all) {
      for (auto const& [flag, list] : uses) {
        Record const r{list, seq.first, seq.second, flag};
        if (held.contains(r) || heldFilters.contains(r)) continue;
        out += "the index misses the settled clause " + list + ": " + seq.first + " seq " +
               std::to_string(seq.second) + " flag " + std::to_string(flag) + "\n";
      }
    }
  }
}

std::string Watch::broken(Scenario::World const& world) {
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
