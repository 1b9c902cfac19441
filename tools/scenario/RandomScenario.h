// Seeded random scenarios of every configuration kind, for long replay runs
// and tests: the same seed always writes the same steps.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Scenario {

/// One random change: a route-map, peer-filter or ACL line with its clauses,
/// one top-level statement, or the versions that settle a run. Shrinking
/// removes whole steps before single lines after the first, so a clause never
/// loses its opening line.
using RandomStep = std::vector<std::string>;
using RandomSteps = std::vector<RandomStep>;

/// Writes random steps that mostly run: it remembers what exists and what
/// waits for its version, and now and then settles everything at once.
class RandomGenerator {
 public:
  /// Without `otherKinds`, route maps only.
  RandomGenerator(unsigned seed, bool otherKinds);
  ~RandomGenerator();
  RandomGenerator(RandomGenerator const&) = delete;
  RandomGenerator& operator=(RandomGenerator const&) = delete;

  RandomStep next();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

/// The steps as scenario text, one line each.
std::string textOf(RandomSteps const& steps);

}  // namespace Scenario
