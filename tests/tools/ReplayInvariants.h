// What the library guarantees beyond the engine state, asserted by the random
// replay whenever a run settles: every policy-map reason has a live owner, and
// the community-list user index keeps only the clauses it is meant to keep.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "ScenarioWorld.h"

namespace ReplayInvariants {

/// Things the library keeps on purpose that an invariant would otherwise
/// call broken; each is counted when met, so a long run can say how often.
inline constexpr std::string_view kPeerFilterClausesKept = "peer-filter-clauses-kept";
inline constexpr std::string_view kCommunityListUserStale = "community-list-user-stale";

/// Follows one run statement by statement and keeps, from the route-map
/// configuration alone, the index the library should hold: a sequence's
/// clauses are recorded when its map is sent whole, and forgotten when the
/// sequence goes or when a version finds it among the sequences the map's
/// reactor noted since its last version; nothing else removes them.
class Watch {
 public:
  /// Call before each statement runs.
  void before(Scenario::World const& world);
  /// Call after each statement has run.
  void after(Scenario::World const& world, Scenario::Statement const& statement);

  /// The invariants broken now, one line each in text order; empty when all
  /// hold. Only meaningful while the world is settled.
  std::string broken(Scenario::World const& world);

  /// How often each named exception excused an entry, over this watch's life.
  std::map<std::string_view, std::size_t> const& excused() const noexcept { return excused_; }

 private:
  using Sequence = std::pair<std::string, unsigned>;  // route map, sequence number
  /// The standard community clauses of a sequence that name lists, as
  /// (tracked flag, list name): 1 for the delete clause, 3 for the other.
  using Uses = std::set<std::pair<unsigned, std::string>>;
  struct Snapshot {
    std::map<Sequence, Uses> uses;  // every sequence, with or without uses
    std::set<std::string> maps;
    /// Peer filters' sequences, under their engine names.
    std::map<Sequence, Uses> filterUses;
  };
  /// One clause in the index: list, route map, sequence, tracked flag.
  using Record = std::tuple<std::string, std::string, unsigned, unsigned>;

  static Snapshot snapshotOf(Scenario::World const& world);
  static bool reactorsAlive(Scenario::World const& world);
  /// Records the clauses of route map (or peer filter) `map` as `uses` has
  /// them, as sending it whole does.
  static void record(std::set<Record>& into, std::map<Sequence, Uses> const& uses,
                     std::string const& map);
  void forget(Sequence const& seq);

  void policyOwners(Scenario::World const& world, std::string& out) const;
  void commListUsers(Scenario::World const& world, std::string& out);

  Snapshot before_;
  bool aliveBefore_ = false;
  std::set<Record> expected_;
  /// Every peer-filter clause ever recorded: none is forgotten.
  std::set<Record> filterRecords_;
  /// Per route map, the sequences its reactor noted since its last version:
  /// the ones a version cleans up.
  std::map<std::string, std::set<unsigned>> noted_;
  std::map<std::string_view, std::size_t> excused_;
};

}  // namespace ReplayInvariants
