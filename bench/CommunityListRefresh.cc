// Cost of a change of one community-list entry. Every route-map clause that
// copied the list is rebuilt, so the cost must grow linearly with its users
// and stay flat per user; a list nobody uses must cost the same however many
// clauses use other lists. The refresh reports its cost per command against
// the flat encoders. Forgetting one sequence's uses costs the same however
// many lists are in use.
#include <benchmark/benchmark.h>

#include "Inputs.h"
#include "PerCommand.h"
#include "Rib/NullSink.h"
#include "Tessel/Cog.h"
#include "Tessel/Root.h"

namespace {

using Routing::RouteMap::CommunitySet;
using Routing::RouteMap::MapEntry;

constexpr Orb::U32 kSequencesPerMap = 10;

/// A root for VRF "default" whose route maps hold `clauses` sequences, ten to
/// a map, each adding the communities of one of `lists` community lists; and
/// the list "X", with one entry, that the benchmarks change.
struct World {
  World(Orb::U32 clauses, Orb::U32 lists) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    acl = Acl::AclListConfig::create("acllist");
    for (Orb::U32 l = 0; l < lists; ++l)
      entryIs(acl->communityListIs(Orb::String::format("L%u", l)), 10);
    entryIs(acl->communityListIs("X"), 10);
    changed = acl->communityList("X")->communityListEntry(10);
    config = Routing::RouteMap::Config::create("rm");
    for (Orb::U32 i = 0; i < clauses; ++i) {
      auto map = config->routeMapIs(Orb::String::format("RM%u", i / kSequencesPerMap));
      auto e = map->mapEntryIs((i % kSequencesPerMap + 1) * 10);
      Orb::Name const list = lists ? Orb::String::format("L%u", i % lists) : Orb::String("X");
      e->communityAddReplaceIs(CommunitySet::create({Acl::commSetAdd_, true, {list}, {}}));
      e->setFlagsIs({MapEntry::SetFlags::communityAddReplace});
    }
    Bench::Inputs{.routeMaps = config, .aclLists = acl}.giveTo(*root);
  }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  static void entryIs(Orb::Ptr<Acl::CommunityList> const& list, Orb::U32 seqno) {
    auto e = list->communityListEntryIs(seqno);
    e->communityValueIs({{0, 0, 0xfde80000u + seqno}});
    e->versionIs(1);
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Acl::AclListConfig> acl;
  Orb::Ptr<Routing::RouteMap::Config> config;
  Orb::Ptr<Acl::CommunityListEntry> changed;
};

void report(benchmark::State& state, Rib::NullSink const& sink, double users) {
  double const iterations = static_cast<double>(state.iterations());
  state.counters["commands/change"] =
      benchmark::Counter(static_cast<double>(sink.commands()) / iterations);
  if (users > 0) {
    state.counters["time/user"] = benchmark::Counter(
        users * iterations, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  }
}

// W3: one list used by N clauses; one entry change rebuilds all N.
void BM_EntryChangeOfListWithUsers(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  Orb::U32 const users = static_cast<Orb::U32>(state.range(0));
  World world(users, 0);
  Orb::U32 version = 1;
  Bench::runPerCommand(state, sink, [&] { world.changed->versionIs(++version); });
  report(state, sink, users);
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_EntryChangeOfListWithUsers)
    ->Arg(1)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Complexity(benchmark::oN);

// A list nobody uses, beside N clauses that use a hundred other lists.
void BM_EntryChangeOfUnusedList(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  World world(static_cast<Orb::U32>(state.range(0)), 100);
  sink.clear();
  Orb::U32 version = 1;
  {
    Bench::AllocCounter counter;
    for (auto _ : state)
      world.changed->versionIs(++version);
    counter.pause();
    state.counters["allocs/change"] =
        static_cast<double>(counter.stats().allocs) / static_cast<double>(state.iterations());
  }
  report(state, sink, 0);
}
BENCHMARK(BM_EntryChangeOfUnusedList)->Arg(0)->Arg(10000);

// Forgetting one sequence's uses, and recording them again, in an index where
// N lists are in use (one clause each): the cost follows the sequence's own
// lists, not N.
void BM_SequenceForgottenAmongListsInUse(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  Orb::U32 const lists = static_cast<Orb::U32>(state.range(0));
  World world(lists, lists);
  auto const cog = Tessel::cogFactory("default");
  auto const set = world.config->routeMap("RM0")->mapEntry(10)->communityAddReplace();
  for (auto _ : state) {
    cog->delRmFromCommListUsers("RM0", 10);
    cog->addRmClauseToCommListUsers("RM0", 10, set);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SequenceForgottenAmongListsInUse)->Arg(100)->Arg(3000)->Complexity(benchmark::o1);

}  // namespace

BENCHMARK_MAIN();
