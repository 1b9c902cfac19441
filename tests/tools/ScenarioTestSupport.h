// Helpers shared by the scenario-language and replay-check tests: parsing
// refusals, configuring inputs without a root, and a checked world per test.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "Check.h"

namespace ScenarioTestSupport {

/// The refusal parsing `text` as `file` meets, or "(accepted)".
inline std::string refusalOf(std::string const& text, std::string const& file = "t.scenario") {
  try {
    Scenario::parse(text, file);
  } catch (Scenario::ScenarioError const& e) {
    return e.what();
  }
  return "(accepted)";
}

/// New inputs after the edits of `text`, without a root.
inline Scenario::Inputs configured(std::string const& text) {
  auto inputs = Scenario::Inputs::create();
  for (auto const& s : Scenario::parse(text, "t.scenario").statements) {
    if (s.edit) s.edit(inputs);
  }
  return inputs;
}

using Keep = std::function<bool(Rib::RecordedCommand const&)>;

/// A new world for each run, and no objects left behind once it is gone.
class CheckedWorldTest : public ::testing::Test {
 protected:
  void TearDown() override {
    world.reset();
    Tessel::rmRoot = nullptr;
    EXPECT_EQ(liveBefore_, Orb::Object::liveObjects()) << "objects left behind";
  }

  /// Runs `text` with the check on a new world whose model sees only what
  /// `keep` lets through (everything when null).
  Scenario::RunResult run(std::string const& text, Keep keep = nullptr) {
    auto const scenario = Scenario::parse(text, "t.scenario");
    world.reset();
    world.emplace(Scenario::World::Options{});
    world->modelFilterIs(std::move(keep));
    return Scenario::run(scenario, *world, true);
  }

  /// The run summed up as text: the checks made, the notes and the divergence.
  std::string runChecked(std::string const& text, Keep keep = nullptr) {
    auto const r = run(text, std::move(keep));
    std::string out = "checks=" + std::to_string(r.checks) + "\n";
    for (auto const& note : r.notes)
      out += note + "\n";
    if (r.divergence) {
      out += "line " + std::to_string(r.divergence->line) + ": " + r.divergence->statement + "\n" +
             r.divergence->report;
    }
    return out;
  }

  long liveBefore_ = Orb::Object::liveObjects();
  std::optional<Scenario::World> world;
};

}  // namespace ScenarioTestSupport
