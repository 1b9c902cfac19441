// A routing agent in miniature: it embeds the library the way the agent does
// and prints every engine command the library sends, one canonical line each.
#include <iostream>
#include <string_view>

#include "Acl/AclListConfig.h"
#include "Acl/Config.h"
#include "Orb/Trace.h"
#include "Rib/CommandText.h"
#include "Rib/EngineSink.h"
#include "Routing/DynamicPrefixList/Config.h"
#include "Routing/RouteMap/Config.h"
#include "RoutingPolicyMap/PolicyMap.h"
#include "Tessel/Root.h"

namespace {

// Stands where the agent's connection to the routing engine would: the
// library hands it each command and each commit, in order.
class PrintingEngine final : public Rib::EngineSink {
 public:
  void execute(Rib::CogOp const& op) override {
    std::cout << Rib::commandLine(Rib::RecordedCommand::of(op)) << '\n';
  }
  void commit(Rib::CommitKind kind) override {
    std::cout << Rib::commandLine(Rib::RecordedCommand::of(kind)) << '\n';
  }
};

// The agent's log: errors and deletions only (levels 0 and 1).
class ErrorLog final : public Orb::TraceSink {
 public:
  int maxLevel() const override { return 1; }
  void traceLine(int level, std::string_view file, int line, std::string_view text) override {
    std::cerr << "trace " << level << ' ' << file << ':' << line << ' ' << text << '\n';
  }
};

}  // namespace

int main() {
  using Routing::RouteMap::MapEntry;

  PrintingEngine engine;
  ErrorLog log;
  Rib::ScopedEngineSink engineInstalled(engine);
  Orb::traceSinkIs(&log);

  // The configuration the agent mounts; other processes write it.
  auto routeMaps = Routing::RouteMap::Config::create("routeMapConfig");
  auto peerFilters = Routing::RouteMap::PeerFilterConfig::create("peerFilterConfig");
  auto aclLists = Acl::AclListConfig::create("aclListConfig");
  auto acls = Acl::Config::create("aclConfig");
  auto dynPfxLists = Routing::DynamicPrefixList::Config::create("dynPfxListConfig");
  auto policyMap = RoutingPolicyMap::PolicyMap::create("policyMap");

  // Start-up: the root, its VRF, then the six inputs. The per-VRF machinery
  // starts when the last input arrives and replays what is configured.
  auto root = Tessel::rootFactory("routeMapRoot");
  root->vrfNameIs("default");
  root->routeMapConfigIs(routeMaps);
  root->peerFilterConfigIs(peerFilters);
  root->aclListConfigIs(aclLists);
  root->aclConfigIs(acls);
  root->dynPfxListConfigIs(dynPfxLists);
  root->policyMapIs(policyMap);

  // A writer builds a route map through the model's setters. Nothing is sent
  // for the sequence yet...
  auto map = routeMaps->routeMapIs("CUSTOMER-IN");
  auto seq = map->mapEntryIs(10);
  seq->permitIs(Acl::permit);
  Routing::RouteMap::MatchRule prefixes;
  prefixes.option = Routing::RouteMap::matchPrefixList;
  prefixes.strValue = "CUSTOMER-NETS";
  seq->matchRuleIs(prefixes);
  seq->metricIs(100);
  seq->setFlagIs(MapEntry::SetFlags::metric, true);
  // ...until it bumps the version: then the whole map is resent.
  map->versionInc();

  // Removing the map deletes it from the engine.
  routeMaps->routeMapDel("CUSTOMER-IN");

  // Shut-down: drop the root; the per-VRF machinery goes with it.
  Tessel::rmRoot = nullptr;
  root = nullptr;
  Orb::traceSinkIs(nullptr);
  return 0;
}
