// Fuzzes the whole library through the scenario language: a scenario that
// reads is replayed with the check after every settled statement (and with a
// repair before each check once it holds a `reconcile` statement). A
// divergence the check cannot name, an assertion, a sanitizer report or an
// Orb object left alive once the world is gone is a finding; a refused line
// is not (the language refuses what would make the library abort).
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Check.h"
#include "FuzzCheck.h"
#include "Orb/Object.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(data), size);
  Scenario::Scenario scenario;
  try {
    scenario = Scenario::parse(text, "fuzz");
  } catch (Scenario::ScenarioError const&) {
    return 0;
  }
  long const liveBefore = Orb::Object::liveObjects();
  {
    Scenario::World::Options options;
    options.vrf = scenario.vrf;
    // A scenario that reconciles is checked strictly: after every settled
    // statement a repair, then no divergence but the name collisions.
    options.mirror = scenario.reconciles;
    options.reconcile = scenario.reconciles;
    Scenario::World world(options);
    Scenario::RunResult result;
    try {
      result = Scenario::run(scenario, world, true);
    } catch (Scenario::ScenarioError const&) {
      // A statement refused when it ran (a reference to something absent).
    }
    if (result.divergence) {
      Fuzz::finding("divergence after line " + std::to_string(result.divergence->line) + ": " +
                    Fuzz::shown(result.divergence->statement) + "\n" + result.divergence->report);
    }
  }
  long const liveAfter = Orb::Object::liveObjects();
  if (liveAfter != liveBefore) {
    Fuzz::finding("Orb objects alive before the world: " + std::to_string(liveBefore) +
                  ", after it went: " + std::to_string(liveAfter));
  }
  return 0;
}
