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

constexpr std::size_t kSlice = 1024;

/// Nanoseconds per command of `pass(first, last)` over `commands` commands,
/// slice by slice, each slice timed warm.
template <class Pass>
double medianNsPerCommand(std::size_t commands, Pass pass) {
  constexpr int kBatches = 9;
  std::vector<double> perCommand;
  for (int b = 0; b < kBatches; ++b) {
    double seconds = 0;
    std::size_t encoded = 0;
    for (std::size_t first = 0; first < commands; first += kSlice) {
      std::size_t const last = std::min(commands, first + kSlice);
      // Enough passes that a slice takes tens of microseconds.
      std::size_t const passes = std::max<std::size_t>(2, 4 * kSlice / (last - first));
      pass(first, last);
      double const t0 = cpuSeconds();
      for (std::size_t i = 0; i < passes; ++i)
        pass(first, last);
      seconds += cpuSeconds() - t0;
      encoded += passes * (last - first);
    }
    perCommand.push_back(seconds * 1e9 / static_cast<double>(encoded));
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
  std::size_t const all = y.commands;
  if (encoder.encode(0, all) != encoder.bytes()) fail("flat encoding wrote the wrong byte count");
  {
    AllocCounter counter;
    if (encoder.encodeEachAllocated(0, all) != encoder.bytes())
      fail("allocated encoding wrote the wrong byte count");
    AllocStats const s = counter.stats();
    if (s.allocs != y.commands || s.frees != y.commands || s.bytes != encoder.bytes())
      fail("allocation counter missed the allocated encoding's blocks");
  }
  y.flatNs = medianNsPerCommand(
      all, [&](std::size_t first, std::size_t last) { encoder.encode(first, last); });
  y.mallocNs = medianNsPerCommand(
      all, [&](std::size_t first, std::size_t last) { encoder.encodeEachAllocated(first, last); });
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
