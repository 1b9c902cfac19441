// Cold start (W4): the root gets its last input on a large mixed
// configuration, so a VrfStatusSm is built and replays every object. Reports
// the time per emitted command against the flat encoders, allocations per
// command, and the heap the library holds, at its peak and once started, per
// configured object.
#include <benchmark/benchmark.h>

#include <memory>

#include "AllocCounter.h"
#include "PerCommand.h"
#include "Rib/NullSink.h"
#include "W4.h"

namespace {

void BM_W4_ColdStart(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  // The heap first, on a world of its own with nothing else allocating:
  // what the start adds to the heap at its highest and once done.
  Bench::AllocStats heap;
  {
    Bench::W4World world;
    Bench::AllocCounter counter(Bench::AllocCounter::Mode::live);
    world.start();
    heap = counter.stats();
  }
  Bench::Yardstick const yardstick = [] {
    Bench::W4World world;
    return Bench::yardstickOf(Bench::recordingOf([&] { world.start(); }));
  }();
  Bench::TimedParts timed(sink);
  for (auto _ : state) {
    state.PauseTiming();
    auto world = std::make_unique<Bench::W4World>();
    state.ResumeTiming();
    timed.enter();
    world->start();
    timed.leave();
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
  Bench::LoopTotals const totals = timed.totals();
  Bench::reportPerCommand(state, totals, yardstick);
  state.counters["commands/start"] = totals.commands / static_cast<double>(state.iterations());
  state.counters["objects"] = Bench::w4Objects;
  state.counters["peak bytes/object"] = static_cast<double>(heap.peak) / Bench::w4Objects;
  state.counters["held bytes/object"] = static_cast<double>(heap.live) / Bench::w4Objects;
}
BENCHMARK(BM_W4_ColdStart)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
