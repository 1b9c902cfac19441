// Cost of resending a route map whole (a version change) as the map grows:
// time per emitted engine command must stay flat, the total linear.
#include <benchmark/benchmark.h>

#include "Rib/NullSink.h"
#include "Tessel/Root.h"

namespace {

using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;

/// A root for VRF "default" with one route map of `sequences` sequences, each
/// with three match rules and four set clauses.
struct World {
  explicit World(Orb::U32 sequences) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    config = Routing::RouteMap::Config::create("rm");
    map = config->routeMapIs("BENCH");
    for (Orb::U32 i = 1; i <= sequences; ++i) {
      auto e = map->mapEntryIs(i * 10);
      MatchRule prefix;
      prefix.option = Routing::RouteMap::matchPrefixList;
      prefix.strValue = "PL" + std::to_string(i % 50);
      e->matchRuleIs(prefix);
      MatchRule tag;
      tag.option = Routing::RouteMap::MatchOption(100);
      tag.intValue = i;
      e->matchRuleIs(tag);
      MatchRule proto;
      proto.option = Routing::RouteMap::matchProtocol;
      proto.intValue = 1 + i % 9;
      proto.invert = (i % 2) != 0;
      e->matchRuleIs(proto);
      e->metricIs(static_cast<Orb::S32>(i));
      e->originIs(Acl::originEgp);
      e->nextHopIs(Kiwi::IpAddr(0x0a000000u + i));
      Routing::RouteMap::MapEntry::AsPath prepend;
      prepend.set(0, 65000 + i % 100);
      prepend.set(1, 65000);
      e->asPathPrependIs(prepend);
      e->setFlagsIs({MapEntry::SetFlags::metric | MapEntry::SetFlags::origin |
                     MapEntry::SetFlags::nextHop | MapEntry::SetFlags::asPathPrepend});
    }
    root->routeMapConfigIs(config);
    root->peerFilterConfigIs(Routing::RouteMap::PeerFilterConfig::create("pf"));
    root->aclListConfigIs(Acl::AclListConfig::create("acllist"));
    root->aclConfigIs(Acl::Config::create("acl"));
    root->dynPfxListConfigIs(Routing::DynamicPrefixList::Config::create("dynpfx"));
    root->policyMapIs(RoutingPolicyMap::PolicyMap::create("pmap"));
  }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Routing::RouteMap::Config> config;
  Orb::Ptr<Routing::RouteMap::Map> map;
};

void BM_RouteMapResend(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(static_cast<Orb::U32>(state.range(0)));
  sink.clear();
  for (auto _ : state)
    world.map->versionInc();
  state.SetItemsProcessed(static_cast<int64_t>(sink.commands()));
  state.counters["commands/resend"] = benchmark::Counter(static_cast<double>(sink.commands()) /
                                                         static_cast<double>(state.iterations()));
  state.counters["time/command"] =
      benchmark::Counter(static_cast<double>(sink.commands()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RouteMapResend)->Arg(1)->Arg(100)->Arg(1000)->Arg(10000)->Complexity(benchmark::oN);

}  // namespace

BENCHMARK_MAIN();
