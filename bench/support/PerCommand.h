// Cost per engine command, as ratios to the flat encoders measured in the
// same program and run: the figures the benchmarks of the library report.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "AllocCounter.h"
#include "Rib/CommandText.h"
#include "Rib/NullSink.h"

namespace Bench {

/// The commands and commits `work` sends, recorded by a sink installed over
/// whatever sink is in place for the duration of the call.
std::vector<Rib::RecordedCommand> recordingOf(std::function<void()> const& work);

/// The flat encoders' cost per command on one stream, in process CPU time as
/// Google Benchmark measures the library.
struct Yardstick {
  std::size_t commands = 0;
  double flatNs = 0;
  double mallocNs = 0;
};

/// Times both flat encoders on the commands of `records`, in slices of at
/// most 1,024 commands each encoded from warm caches after one untimed pass:
/// the yardstick is the cost of encoding those commands, not the memory
/// latency of a recording of hundreds of megabytes, and stays stable from a
/// stream of ten commands to one of a million. The figure is the median of
/// nine batches over the whole stream, so a neighbour's burst on a shared
/// core moves one batch rather than the figure. Aborts when the encoders or
/// the allocation counter misbehave (a wrong byte count, other than one
/// allocation per command), as every ratio would then be wrong.
Yardstick yardstickOf(std::vector<Rib::RecordedCommand> records);

/// The process's CPU time in seconds, the clock Google Benchmark reports
/// as CPU; a timed loop read with it gives the same figure as the report.
double cpuSeconds();

/// What a timed loop did: the commands it sent, the CPU time it took and
/// the allocations counted over it.
struct LoopTotals {
  double commands = 0;
  double cpuSeconds = 0;
  AllocStats allocs;
};

/// Sets the counters of a timed loop from its totals, as plain numbers:
///   ns/command, x flat, x flat+malloc, allocs/command, bytes/command,
/// and the yardstick's own "flat ns" and "flat+malloc ns". The ratios divide
/// the loop's CPU time per command by the yardstick's. Nothing is set for a
/// loop that sent no command.
void reportPerCommand(benchmark::State& state, LoopTotals const& loop, Yardstick const& yardstick);

/// Totals of a loop that times only part of each iteration: `enter` and
/// `leave` bracket each timed part, so commands, CPU time and allocations of
/// the untimed set-up and tear-down stay out.
class TimedParts {
 public:
  TimedParts(Rib::NullSink const& sink, AllocCounter::Mode mode = AllocCounter::Mode::events)
      : sink_(sink), counter_(mode) {
    counter_.pause();
  }
  void enter() {
    commandsBefore_ = sink_.commands();
    start_ = cpuSeconds();
    counter_.resume();
  }
  void leave() {
    counter_.pause();
    totals_.cpuSeconds += cpuSeconds() - start_;
    totals_.commands += static_cast<double>(sink_.commands() - commandsBefore_);
  }
  LoopTotals totals() const {
    LoopTotals t = totals_;
    t.allocs = counter_.stats();
    return t;
  }

 private:
  Rib::NullSink const& sink_;
  AllocCounter counter_;
  Orb::U64 commandsBefore_ = 0;
  double start_ = 0;
  LoopTotals totals_;
};

/// The usual timed loop: one call of `change` is recorded for the yardstick,
/// then `state`'s loop calls it with `sink` counting commands and the
/// allocation counter on, and the per-command counters are set. `change` must
/// send the same kind of stream every call.
template <class Change>
void runPerCommand(benchmark::State& state, Rib::NullSink& sink, Change&& change) {
  Yardstick const yardstick = yardstickOf(recordingOf(change));
  sink.clear();
  AllocCounter counter;
  double const start = cpuSeconds();
  for (auto _ : state)
    change();
  double const seconds = cpuSeconds() - start;
  counter.pause();
  reportPerCommand(state, {static_cast<double>(sink.commands()), seconds, counter.stats()},
                   yardstick);
}

}  // namespace Bench
