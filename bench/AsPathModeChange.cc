// Cost of a regular-expression mode change with many AS-path lists: every
// list leaves the engine, the mode goes, and the lists valid under it come
// back. Time per list must stay flat as the lists grow in number.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "Inputs.h"
#include "Rib/NullSink.h"
#include "Tessel/Cog.h"
#include "Tessel/Root.h"

namespace {

constexpr Orb::U32 kEntries = 10;

Orb::Name listName(Orb::U32 i) {
  char text[16];
  std::snprintf(text, sizeof text, "L%05u", i);
  return Orb::Name(text);
}

/// A root for VRF "default" with `lists` AS-path lists of ten entries. One
/// entry of every list is invalid under one of the two modes, alternating
/// from list to list, so each mode change finds half the lists inapplicable.
struct World {
  explicit World(Orb::U32 lists) {
    root = Tessel::rootFactory("bench");
    root->vrfNameIs("default");
    config = Acl::AclListConfig::create("acllist");
    for (Orb::U32 i = 0; i < lists; ++i) {
      auto list = config->asPathListIs(listName(i));
      for (Orb::U32 s = 1; s <= kEntries; ++s) {
        Acl::AsPathEntry e;
        e.seqno = s * 10;
        e.regex = "_6500" + std::to_string(s % 10) + "_";
        e.action = s % 3 == 0 ? Acl::deny : Acl::permit;
        if (s == kEntries / 2) (i % 2 ? e.validInMode0 : e.validInMode1) = false;
        list->pathEntryIs(e);
      }
      list->versionInc();
    }
    Bench::Inputs{.aclLists = config}.giveTo(*root);
  }
  ~World() {
    root = nullptr;
    Tessel::rmRoot = nullptr;
  }
  Orb::Ptr<Tessel::Root> root;
  Orb::Ptr<Acl::AclListConfig> config;
};

void reportPerList(benchmark::State& state, Rib::NullSink const& sink, Orb::U32 lists) {
  double const changes = static_cast<double>(state.iterations());
  state.counters["commands/change"] = static_cast<double>(sink.commands()) / changes;
  state.counters["commits/change"] = static_cast<double>(sink.commits()) / changes;
  state.counters["time/list"] = benchmark::Counter(
      changes * lists, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["time/command"] =
      benchmark::Counter(static_cast<double>(sink.commands()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.SetComplexityN(lists);
}

/// One mode change per iteration, alternating between the two modes.
void BM_AsPathModeChange(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  auto const lists = static_cast<Orb::U32>(state.range(0));
  World world(lists);
  sink.clear();
  Orb::U32 mode = 0;
  for (auto _ : state) {
    mode ^= 1;
    world.config->regexModeIs(Acl::RegexMode(mode));
  }
  reportPerList(state, sink, lists);
}
BENCHMARK(BM_AsPathModeChange)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Complexity(benchmark::oN);

/// The yardstick: the same commands a mode change sends, issued straight
/// through the translator with no reactor in between.
void BM_AsPathEncoderYardstick(benchmark::State& state) {
  Rib::NullSink sink;
  Rib::ScopedEngineSink installed(sink);
  auto const lists = static_cast<Orb::U32>(state.range(0));
  std::vector<Orb::Name> names;
  for (Orb::U32 i = 0; i < lists; ++i)
    names.push_back(listName(i));
  Orb::String const regex = "_65001_";
  for (auto _ : state) {
    auto cog = Tessel::cogFactory("default");
    for (auto const& name : names)
      cog->doDeleteAsPathList(name);
    cog->doSyncCommit();
    cog->doCommit();
    cog->doAsPathRegexMode(Acl::regexModeString);
    cog->doCommit();
    for (Orb::U32 i = 0; i < lists; ++i) {
      cog->doAddAsPathList(names[i]);
      if (i % 2) continue;
      for (Orb::U32 s = 1; s <= kEntries; ++s)
        cog->doAddAsPathListEntry(names[i], s * 10, Acl::permit, regex, Acl::originIgp);
    }
    cog->doCommit();
  }
  reportPerList(state, sink, lists);
}
BENCHMARK(BM_AsPathEncoderYardstick)->Arg(1000)->Arg(10000);

}  // namespace

BENCHMARK_MAIN();
