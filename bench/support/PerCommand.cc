// Recording a workload's stream, calibrating the flat encoders on it and
// turning a timed loop's totals into per-command ratios.
#include "PerCommand.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "FlatEncoder.h"
#include "Rib/RecordingSink.h"

namespace Bench {

double cpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

namespace {

[[noreturn]] void fail(char const* what) {
  std::fprintf(stderr, "yardstick: %s\n", what);
  std::abort();
}

/// Nanoseconds per command of `pass`, which handles `commands` commands.
template <class Pass>
double medianNsPerCommand(std::size_t commands, Pass pass) {
  constexpr int kBatches = 9;
  constexpr double kBatchSeconds = 4e-3;
  pass();  // warms caches and the allocator
  double const start = cpuSeconds();
  pass();
  double const once = std::max(cpuSeconds() - start, 1e-7);
  auto const passes = static_cast<long>(std::max(1.0, kBatchSeconds / once));
  std::vector<double> perCommand;
  for (int b = 0; b < kBatches; ++b) {
    double const t0 = cpuSeconds();
    for (long i = 0; i < passes; ++i)
      pass();
    double const seconds = cpuSeconds() - t0;
    perCommand.push_back(seconds * 1e9 / static_cast<double>(passes * commands));
  }
  std::nth_element(perCommand.begin(), perCommand.begin() + kBatches / 2, perCommand.end());
  return perCommand[kBatches / 2];
}

}  // namespace

std::vector<Rib::RecordedCommand> recordingOf(std::function<void()> const& work) {
  Rib::RecordingSink sink;
  Rib::ScopedEngineSink installed(sink);
  work();
  return sink.records();
}

Yardstick yardstickOf(std::vector<Rib::RecordedCommand> records) {
  FlatEncoder encoder(std::move(records));
  Yardstick y;
  y.commands = encoder.commands();
  if (y.commands == 0) fail("no commands to encode");
  if (encoder.encode() != encoder.bytes()) fail("flat encoding wrote the wrong byte count");
  {
    AllocCounter counter;
    if (encoder.encodeEachAllocated() != encoder.bytes())
      fail("allocated encoding wrote the wrong byte count");
    AllocStats const s = counter.stats();
    if (s.allocs != y.commands || s.frees != y.commands || s.bytes != encoder.bytes())
      fail("allocation counter missed the allocated encoding's blocks");
  }
  y.flatNs = medianNsPerCommand(y.commands, [&] { encoder.encode(); });
  y.mallocNs = medianNsPerCommand(y.commands, [&] { encoder.encodeEachAllocated(); });
  return y;
}

void reportPerCommand(benchmark::State& state, LoopTotals const& loop, Yardstick const& yardstick) {
  if (loop.commands <= 0) return;
  double const ns = loop.cpuSeconds * 1e9 / loop.commands;
  state.counters["ns/command"] = ns;
  state.counters["x flat"] = ns / yardstick.flatNs;
  state.counters["x flat+malloc"] = ns / yardstick.mallocNs;
  state.counters["allocs/command"] = static_cast<double>(loop.allocs.allocs) / loop.commands;
  state.counters["bytes/command"] = static_cast<double>(loop.allocs.bytes) / loop.commands;
  state.counters["flat ns"] = yardstick.flatNs;
  state.counters["flat+malloc ns"] = yardstick.mallocNs;
}

}  // namespace Bench
