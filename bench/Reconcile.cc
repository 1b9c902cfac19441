// Reconciling the W4 configuration: a reconcile that finds nothing to do, as
// a ratio to the mirrored cold start timed in the same run (and that start as
// a ratio to one without the mirror); one that repairs the 1 %
// of objects left behind while an input was away; and the heap the engine
// mirror holds per engine node.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "AllocCounter.h"
#include "PerCommand.h"
#include "Rib/NullSink.h"
#include "W4.h"

namespace {

using Orb::String;

/// The cold start's CPU time, the mean of `runs` starts of new worlds, with
/// or without the engine mirror.
double coldStartSeconds(int runs, bool mirror) {
  double total = 0;
  for (int i = 0; i < runs; ++i) {
    Bench::W4World world(mirror);
    double const before = Bench::cpuSeconds();
    world.start();
    total += Bench::cpuSeconds() - before;
  }
  return total / runs;
}

void BM_W4_ReconcileWithNothingToDo(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  double const plain = coldStartSeconds(3, false);
  double const cold = coldStartSeconds(3, true);
  Bench::W4World world(true);
  world.start();
  sink.clear();
  double const before = Bench::cpuSeconds();
  for (auto _ : state)
    world.root->doReconcile();
  double const each = (Bench::cpuSeconds() - before) / static_cast<double>(state.iterations());
  state.counters["x cold start"] = each / cold;
  state.counters["cold start ms"] = cold * 1e3;
  state.counters["mirror x plain start"] = cold / plain;
  state.counters["commands"] = static_cast<double>(sink.commands());
}
BENCHMARK(BM_W4_ReconcileWithNothingToDo)->Unit(benchmark::kMillisecond)->Iterations(5);

/// Takes 1 % of each kind of named object out of the configuration while an
/// input is away, so the engine keeps them when the machinery comes back.
void leaveOnePercentBehind(Bench::W4World& world) {
  world.root->aclConfigIs(nullptr);
  for (unsigned m = 0; m < 10; ++m)
    world.routeMaps->routeMapDel(String::format("RM%u", m * 100 + 1));
  world.peerFilters->peerFilterDel("PF1");
  world.lists->prefixListDel("PL1");
  for (unsigned l = 0; l < 5; ++l) {
    world.lists->asPathListDel(String::format("AP%u", l * 100 + 1));
    world.lists->communityListDel(String::format("CL%u", l * 100 + 1));
  }
  world.acls->aclTypeConfig(Acl::aclTypeIp)->aclDel("ACL1");
  world.root->aclConfigIs(world.acls);
}

void BM_W4_ReconcileOnePercentLeftBehind(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  double objects = 0;
  double commands = 0;
  std::unique_ptr<Bench::W4World> world;
  for (auto _ : state) {
    state.PauseTiming();
    world.reset();
    world = std::make_unique<Bench::W4World>(true);
    world->start();
    leaveOnePercentBehind(*world);
    sink.clear();
    state.ResumeTiming();
    objects += static_cast<double>(world->root->doReconcile().objects);
    commands += static_cast<double>(sink.commands());
  }
  double const runs = static_cast<double>(state.iterations());
  state.counters["objects repaired"] = objects / runs;
  state.counters["commands"] = commands / runs;
}
BENCHMARK(BM_W4_ReconcileOnePercentLeftBehind)->Unit(benchmark::kMillisecond)->Iterations(3);

/// What the mirror adds to the heap once the start is done, per node of the
/// engine tree it holds.
void BM_W4_MirrorBytesPerNode(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  auto heldAfterStart = [](bool mirror, std::size_t* nodes) {
    Bench::W4World world(mirror);
    Bench::AllocCounter counter(Bench::AllocCounter::Mode::live);
    world.start();
    std::int64_t const live = counter.stats().live;
    if (nodes) *nodes = world.root->mirror()->nodes();
    return live;
  };
  std::size_t nodes = 0;
  std::int64_t const with = heldAfterStart(true, &nodes);
  std::int64_t const without = heldAfterStart(false, nullptr);
  for (auto _ : state) {
  }
  state.counters["engine nodes"] = static_cast<double>(nodes);
  state.counters["mirror bytes/node"] = static_cast<double>(with - without) / nodes;
  state.counters["mirror MiB"] = static_cast<double>(with - without) / (1 << 20);
}
BENCHMARK(BM_W4_MirrorBytesPerNode)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
