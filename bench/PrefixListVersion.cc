// Cost of prefix-list versions (W2): one 100,000-entry IPv4 list sent whole
// at its reactor's construction, then versions that change 0.1 %, 1 %, 10 %
// and all of it. The cost of a version must follow the changed entries, not
// the list's size nor the number of other lists. Every case that sends
// commands reports its cost per command against the flat encoders.
#include <benchmark/benchmark.h>

#include <memory>

#include "Inputs.h"
#include "PerCommand.h"
#include "Rib/NullSink.h"
#include "Tessel/Cog.h"
#include "Tessel/Root.h"

namespace {

constexpr Orb::U32 kEntries = 100000;

Acl::PrefixList::Entry entryOf(Orb::U32 i, Orb::U32 le) {
  return {i * 10, Acl::permit, Kiwi::Prefix(Kiwi::IpAddr(0x0a000000u + (i << 8)), 24), 0, le};
}

/// A root for VRF "default" whose list configuration holds list "BIG" of
/// `entries` entries and `others` lists of ten entries each. The list
/// configuration is handed over last, so the list reactor is made by `start`.
struct World {
  World(Orb::U32 entries, Orb::U32 others) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    lists = Acl::AclListConfig::create("acllist");
    big = lists->prefixListIs("BIG");
    for (Orb::U32 i = 1; i <= entries; ++i)
      big->prefixEntryIs(entryOf(i, 0));
    for (Orb::U32 n = 0; n < others; ++n) {
      auto other = lists->prefixListIs("OTHER" + std::to_string(n));
      for (Orb::U32 i = 1; i <= 10; ++i)
        other->prefixEntryIs(entryOf(i, 0));
    }
    small = lists->prefixListIs("SMALL");
    for (Orb::U32 i = 1; i <= 10; ++i)
      small->prefixEntryIs(entryOf(i, 0));
    Bench::Inputs{.aclLists = lists}.giveTo(*root, Bench::Inputs::Held::aclLists);
  }
  /// Makes the per-VRF machinery, which replays every list.
  void start() { root->aclListConfigIs(lists); }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Acl::AclListConfig> lists;
  Orb::Ptr<Acl::PrefixList> big;
  Orb::Ptr<Acl::PrefixList> small;
};

/// Construction of the list reactor and its first version, which sends the
/// whole list: per entry, and per command against the flat encoders.
void BM_W2_Construction(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  Bench::Yardstick const yardstick = [] {
    World world(kEntries, 0);
    return Bench::yardstickOf(Bench::recordingOf([&] {
      world.start();
      world.big->versionInc();
    }));
  }();
  Bench::TimedParts timed(sink);
  for (auto _ : state) {
    state.PauseTiming();
    auto world = std::make_unique<World>(kEntries, 0);
    state.ResumeTiming();
    timed.enter();
    world->start();
    world->big->versionInc();
    timed.leave();
    state.PauseTiming();
    world.reset();
    state.ResumeTiming();
  }
  Bench::reportPerCommand(state, timed.totals(), yardstick);
  state.counters["time/entry"] =
      benchmark::Counter(static_cast<double>(kEntries) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_W2_Construction)->Unit(benchmark::kMillisecond)->Iterations(5);

/// One version changing `per mille / 10` % of the entries, spread evenly
/// over the list: the entry writes, their notifications and the version.
void BM_W2_Version(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(kEntries, static_cast<Orb::U32>(state.range(1)));
  world.start();
  world.big->versionInc();
  Orb::U32 const changed = kEntries * static_cast<Orb::U32>(state.range(0)) / 1000;
  Orb::U32 const stride = kEntries / changed;
  Orb::U32 round = 0;
  Orb::U32 offset = 0;
  Bench::runPerCommand(state, sink, [&] {
    // Each version changes other entries, so a small batch does not find its
    // entries still in the cache from the one before; an entry comes round
    // again after `stride` versions, never to the value it holds.
    offset = (offset + 7) % stride;
    Orb::U32 const le = 1 + ++round % 31;
    for (Orb::U32 i = 1 + offset; i <= kEntries; i += stride)
      world.big->prefixEntryIs(entryOf(i, le));
    world.big->versionInc();
  });
  state.counters["changed"] = changed;
  state.counters["time/changed"] =
      benchmark::Counter(static_cast<double>(changed) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["commands/version"] = benchmark::Counter(static_cast<double>(sink.commands()) /
                                                          static_cast<double>(state.iterations()));
}
// Arguments: changed entries in per mille of the list, other lists.
BENCHMARK(BM_W2_Version)
    ->Args({1, 0})
    ->Args({10, 0})
    ->Args({100, 0})
    ->Args({1000, 0})
    ->Args({1, 1000})
    ->Args({100, 1000});

/// The same versions with the entry writes (the model's work and the
/// reactor's noting of each change) outside the timing: what the version
/// itself costs per changed entry.
void BM_W2_VersionApply(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(kEntries, 0);
  world.start();
  world.big->versionInc();
  Orb::U32 const changed = kEntries * static_cast<Orb::U32>(state.range(0)) / 1000;
  Orb::U32 const stride = kEntries / changed;
  Orb::U32 round = 0;
  Orb::U32 offset = 0;
  auto const changeEntries = [&] {
    offset = (offset + 7) % stride;
    Orb::U32 const le = 1 + ++round % 31;
    for (Orb::U32 i = 1 + offset; i <= kEntries; i += stride)
      world.big->prefixEntryIs(entryOf(i, le));
  };
  Bench::Yardstick const yardstick = Bench::yardstickOf(Bench::recordingOf([&] {
    changeEntries();
    world.big->versionInc();
  }));
  Bench::TimedParts timed(sink);
  for (auto _ : state) {
    state.PauseTiming();
    changeEntries();
    state.ResumeTiming();
    timed.enter();
    world.big->versionInc();
    timed.leave();
  }
  Bench::reportPerCommand(state, timed.totals(), yardstick);
  state.counters["time/changed"] =
      benchmark::Counter(static_cast<double>(changed) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_W2_VersionApply)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

/// One version of a ten-entry list with one entry changed, beside the big
/// list and `others` more lists.
void BM_W2_SmallListVersion(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(kEntries, static_cast<Orb::U32>(state.range(0)));
  world.start();
  Orb::U32 le = 24;
  Bench::runPerCommand(state, sink, [&] {
    le = le == 24 ? 28 : 24;
    world.small->prefixEntryIs(entryOf(5, le));
    world.small->versionInc();
  });
}
BENCHMARK(BM_W2_SmallListVersion)->Arg(0)->Arg(1000);

/// The command layer alone: one entry command built and executed with no
/// reactor around it, what the reactors' share is measured against.
void BM_EntryEncoder(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  auto cog = Tessel::cogFactory("default");
  Orb::U32 i = 0;
  Bench::runPerCommand(state, sink, [&] {
    auto e = entryOf(++i % kEntries, 24);
    cog->doAddIpPrefixListEntry("BIG", e.seqno, e.action, e.prefix, e.ge, e.le);
  });
}
BENCHMARK(BM_EntryEncoder);

/// Heap bytes the library keeps per configured entry once a version is
/// applied (the heap's net growth over the construction and first version:
/// the list reactor's state beyond the model), and the most it held on the
/// way, divided by entries.
void BM_W2_RetainedBytes(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  Bench::AllocStats heap;
  for (auto _ : state) {
    World world(kEntries, 0);
    Bench::AllocCounter counter(Bench::AllocCounter::Mode::live);
    world.start();
    world.big->versionInc();
    heap = counter.stats();
  }
  state.counters["bytes/entry"] = static_cast<double>(heap.live) / kEntries;
  state.counters["peak bytes/entry"] = static_cast<double>(heap.peak) / kEntries;
}
BENCHMARK(BM_W2_RetainedBytes)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
