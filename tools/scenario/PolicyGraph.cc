// Writing the policy references as Graphviz text.
#include "PolicyGraph.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

namespace Scenario {

namespace {

std::string quotedId(std::string const& prefix, std::string_view name) {
  std::string out = "\"" + prefix;
  for (char c : name) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}
std::string mapId(std::string_view name) {
  return quotedId("route-map ", name);
}
std::string listId(std::string_view name) {
  return quotedId("dynamic-prefix-list ", name);
}

}  // namespace

std::string policyGraph(Inputs const& in) {
  std::ostringstream nodes;
  std::ostringstream edges;
  std::set<std::string> drawn;
  auto const& pmap = *in.policyMap;
  // Every node once; one only referred to is dashed.
  auto node = [&](std::string const& id, std::string_view name, bool isMap, bool configured) {
    if (!drawn.insert(id).second) return;
    bool const listed = isMap ? pmap.routeMap(Orb::Name(name)) != nullptr
                              : pmap.dynamicPrefixList(Orb::Name(name)) != nullptr;
    std::string style = listed ? "filled" : "";
    if (!configured) style += style.empty() ? "dashed" : ",dashed";
    nodes << "  " << id << " [label=" << quotedId("", name)
          << (isMap ? ", shape=box" : ", shape=ellipse")
          << (style.empty() ? "" : ", style=\"" + style + "\"") << "];\n";
  };

  for (auto const& [name, map] : in.routeMapConfig->routeMap()) {
    node(mapId(name.view()), name.view(), true, true);
    std::vector<Orb::U32> seqnos;
    for (auto const& kv : map->mapEntry())
      seqnos.push_back(kv.first);
    std::sort(seqnos.begin(), seqnos.end());
    for (Orb::U32 seqno : seqnos) {
      auto entry = map->mapEntry(seqno);
      std::string const seq = "seq " + std::to_string(seqno);
      if (!entry->subRouteMap().empty()) {
        edges << "  " << mapId(name.view()) << " -> " << mapId(entry->subRouteMap().view())
              << " [label=\"" << seq << " sub-route-map\"];\n";
      }
      for (auto option : {Routing::RouteMap::matchDynamicPrefixList,
                          Routing::RouteMap::matchIpv6DynamicPrefixList}) {
        auto const* rule = entry->matchRule(option);
        if (!rule) continue;
        bool const v4 = option == Routing::RouteMap::matchDynamicPrefixList;
        edges << "  " << mapId(name.view()) << " -> " << listId(rule->strValue.view())
              << " [label=\"" << seq << (v4 ? " ipv4" : " ipv6") << "\"];\n";
      }
    }
  }
  for (auto const& [name, list] : in.dynPfxListConfig->dynamicPrefixList()) {
    node(listId(name.view()), name.view(), false, true);
    if (!list->matchMap().empty()) {
      edges << "  " << listId(name.view()) << " -> " << mapId(list->matchMap().view())
            << " [label=\"match-map\"];\n";
    }
  }
  // Requesters from other parts of the agent; the library's own reasons are
  // the edges above.
  auto requesters = [&](RoutingPolicyMap::PolicyMap::Requesters const& coll, bool isMap) {
    for (auto const& [name, requester] : coll) {
      for (auto const& kv : requester->reason()) {
        if (kv.first.pluginType == RoutingPolicyMap::pluginTypeRouting) continue;
        std::string const id = quotedId("requester ", kv.first.configKey.view());
        if (drawn.insert(id).second) {
          nodes << "  " << id << " [label=" << quotedId("", kv.first.configKey.view())
                << ", shape=note];\n";
        }
        edges << "  " << id << " -> " << (isMap ? mapId(name.view()) : listId(name.view()))
              << ";\n";
      }
    }
  };
  requesters(pmap.routeMap(), true);
  requesters(pmap.dynamicPrefixList(), false);

  // Names referred to but not configured.
  std::string const edgeText = edges.str();
  for (auto const& [name, requester] : pmap.routeMap())
    node(mapId(name.view()), name.view(), true, false);
  for (auto const& [name, requester] : pmap.dynamicPrefixList())
    node(listId(name.view()), name.view(), false, false);
  for (auto const& [name, map] : in.routeMapConfig->routeMap()) {
    for (auto const& kv : map->mapEntry()) {
      auto const& sub = kv.second->subRouteMap();
      if (!sub.empty()) node(mapId(sub.view()), sub.view(), true, false);
      for (auto option : {Routing::RouteMap::matchDynamicPrefixList,
                          Routing::RouteMap::matchIpv6DynamicPrefixList}) {
        if (auto const* rule = kv.second->matchRule(option))
          node(listId(rule->strValue.view()), rule->strValue.view(), false, false);
      }
    }
  }
  for (auto const& [name, list] : in.dynPfxListConfig->dynamicPrefixList()) {
    if (!list->matchMap().empty())
      node(mapId(list->matchMap().view()), list->matchMap().view(), true, false);
  }
  return "digraph policies {\n  rankdir=LR;\n" + nodes.str() + edgeText + "}\n";
}

}  // namespace Scenario
