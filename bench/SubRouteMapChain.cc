// Cost of listing and unlisting the head of a chain of route maps, each
// calling the next as a sub-route-map: the listing propagates down the whole
// chain and the unlisting withdraws it again, so the time per map in the
// chain and the policy-map changes per map must stay flat as the chain grows.
#include <benchmark/benchmark.h>

#include "Inputs.h"
#include "Rib/NullSink.h"
#include "Tessel/Root.h"

namespace {

/// Counts the changes of the policy map's collections.
class ChangeCounter final : public Orb::Notifiee {
 public:
  explicit ChangeCounter(Orb::Ptr<Orb::Entity const> e) : Notifiee(std::move(e)) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId, Orb::Key const&) override { ++changes; }
  long changes = 0;
};

Orb::Name mapName(Orb::U32 i) {
  std::string name = "R";
  name += std::to_string(i);
  return Orb::Name(name);
}

/// A root for VRF "default" whose route maps R0 .. R(n-1) form a chain, or,
/// with `fan`, are all called by R0, one sequence each: the same references
/// without the depth.
struct World {
  World(Orb::U32 maps, bool fan) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    config = Routing::RouteMap::Config::create("rm");
    for (Orb::U32 i = 0; i < maps; ++i) {
      if (fan) {
        config->routeMapIs(mapName(i))->mapEntryIs(10);
        if (i > 0) config->routeMap(mapName(0))->mapEntryIs(10 * i)->subRouteMapIs(mapName(i));
        continue;
      }
      auto e = config->routeMapIs(mapName(i))->mapEntryIs(10);
      if (i + 1 < maps) e->subRouteMapIs(mapName(i + 1));
    }
    policyMap = RoutingPolicyMap::PolicyMap::create("pmap");
    Bench::Inputs{.routeMaps = config, .policyMap = policyMap}.giveTo(*root);
  }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Routing::RouteMap::Config> config;
  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap;
};

void listUnlist(benchmark::State& state, bool fan) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  auto const maps = static_cast<Orb::U32>(state.range(0));
  World world(maps, fan);
  ChangeCounter counter(world.policyMap);
  RoutingPolicyMap::Requester const agent{RoutingPolicyMap::PluginType(3),
                                          RoutingPolicyMap::CliMode(2), "neighbor", "peer1"};
  for (auto _ : state) {
    world.policyMap->routeMapIs("R0")->reasonIs(agent);
    if (world.policyMap->routeMap().size() != maps) state.SkipWithError("chain not listed");
    world.policyMap->routeMap("R0")->reasonDel(agent);
    world.policyMap->routeMapDel("R0");
    if (!world.policyMap->routeMap().empty()) state.SkipWithError("chain not withdrawn");
  }
  auto const perMap = static_cast<double>(state.iterations()) * maps;
  state.counters["pmapChanges/map"] =
      benchmark::Counter(static_cast<double>(counter.changes) / perMap);
  state.counters["time/map"] =
      benchmark::Counter(perMap, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["commands"] = benchmark::Counter(static_cast<double>(sink.commands()));
  state.SetComplexityN(state.range(0));
}
void BM_ChainListUnlist(benchmark::State& state) {
  listUnlist(state, false);
}
BENCHMARK(BM_ChainListUnlist)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN);

// The yardstick: the same number of references one level deep.
void BM_FanListUnlist(benchmark::State& state) {
  listUnlist(state, true);
}
BENCHMARK(BM_FanListUnlist)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN);

}  // namespace

BENCHMARK_MAIN();
