// Bench::AllocCounter: counts the program's heap allocations through
// replacement global operator new and delete, switched on only around the
// region a benchmark wants counted.
#pragma once

#include <cstdint>

namespace Bench {

/// What the heap saw while counting was on.
struct AllocStats {
  std::uint64_t allocs = 0;
  std::uint64_t frees = 0;
  /// Bytes the allocations asked for.
  std::uint64_t bytes = 0;
  /// Usable bytes allocated minus usable bytes freed, blocks from before the
  /// counting included: the net growth of the heap. Kept only by `live`
  /// counting, which asks the allocator for every block's size.
  std::int64_t live = 0;
  /// The highest `live` reached.
  std::int64_t peak = 0;
};

/// Counting is process-wide and meant for single-threaded benchmarks: the
/// counts are plain loads and stores, so a second allocating thread would
/// lose some of them (though never corrupt the heap).
class AllocCounter {
 public:
  enum class Mode : std::uint8_t {
    /// Allocations and bytes only: the cheapest, for timed loops.
    events,
    /// Also the heap's net growth and its peak.
    live,
  };

  /// Clears the counts and starts counting.
  explicit AllocCounter(Mode mode = Mode::events);
  /// Stops counting.
  ~AllocCounter();
  AllocCounter(AllocCounter const&) = delete;
  AllocCounter& operator=(AllocCounter const&) = delete;

  /// Stops and restarts counting, keeping the counts: for the untimed parts
  /// of a timed loop.
  void pause();
  void resume();

  /// The counts so far.
  AllocStats stats() const;

 private:
  Mode mode_;
};

}  // namespace Bench
