// Cost of resending a route map whole (a version change) as the map grows
// (W1): time per emitted engine command must stay flat, the total linear, and
// the same beside many other maps. Each case reports its cost per command
// against the flat encoders on the same stream.
#include <benchmark/benchmark.h>

#include "Inputs.h"
#include "PerCommand.h"
#include "Rib/NullSink.h"
#include "Tessel/Root.h"

namespace {

using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchRule;

/// Gives `map` `sequences` sequences, each with three match rules and four
/// set clauses.
void sequencesIs(Routing::RouteMap::Map& map, Orb::U32 sequences) {
  for (Orb::U32 i = 1; i <= sequences; ++i) {
    auto e = map.mapEntryIs(i * 10);
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
}

/// A root for VRF "default" with route map "BENCH" of `sequences` sequences
/// and `others` more maps of ten sequences each.
struct World {
  World(Orb::U32 sequences, Orb::U32 others) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    config = Routing::RouteMap::Config::create("rm");
    map = config->routeMapIs("BENCH");
    sequencesIs(*map, sequences);
    for (Orb::U32 n = 0; n < others; ++n)
      sequencesIs(*config->routeMapIs(Orb::String::format("OTHER%u", n)), 10);
    Bench::Inputs{.routeMaps = config}.giveTo(*root);
  }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Routing::RouteMap::Config> config;
  Orb::Ptr<Routing::RouteMap::Map> map;
};

/// One resend of "BENCH" per iteration.
void resend(benchmark::State& state, Orb::U32 others) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(static_cast<Orb::U32>(state.range(0)), others);
  Bench::runPerCommand(state, sink, [&] { world.map->versionInc(); });
  state.counters["commands/resend"] = benchmark::Counter(static_cast<double>(sink.commands()) /
                                                         static_cast<double>(state.iterations()));
}

void BM_RouteMapResend(benchmark::State& state) {
  resend(state, 0);
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_RouteMapResend)->Arg(1)->Arg(100)->Arg(1000)->Arg(10000)->Complexity(benchmark::oN);

/// The same resend beside 10,000 other maps: must cost what it costs alone.
void BM_RouteMapResendBesideOtherMaps(benchmark::State& state) {
  resend(state, 10000);
}
BENCHMARK(BM_RouteMapResendBesideOtherMaps)->Arg(100);

}  // namespace

BENCHMARK_MAIN();
