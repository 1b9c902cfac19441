// Running statements against the live root and the shadow configuration, and
// keeping track of what the engine is allowed to lag behind.
#include "ScenarioWorld.h"

#include <algorithm>

namespace Scenario {

World::World(Options options)
    : options_(std::move(options)), previousSink_(Rib::engineSinkIs(&sink_)) {
  root_ = Tessel::rootFactory("root");
  root_->vrfNameIs(options_.vrf);
  for (std::size_t i = 0; i < inputCount; ++i)
    inputIs(Input(i), true);
}

World::~World() {
  if (Tessel::rmRoot == root_) Tessel::rmRoot = nullptr;
  root_ = nullptr;
  Rib::engineSinkIs(previousSink_);
}

bool World::allPresent() const noexcept {
  return std::all_of(present_.begin(), present_.end(), [](bool p) { return p; });
}

bool World::settled() const {
  return allPresent() && dirty_.empty();
}

void World::inputIs(Input input, bool present) {
  switch (input) {
    case Input::routeMapConfig:
      root_->routeMapConfigIs(present ? live_.routeMapConfig : nullptr);
      break;
    case Input::peerFilterConfig:
      root_->peerFilterConfigIs(present ? live_.peerFilterConfig : nullptr);
      break;
    case Input::aclListConfig:
      root_->aclListConfigIs(present ? live_.aclListConfig : nullptr);
      break;
    case Input::aclConfig:
      root_->aclConfigIs(present ? live_.aclConfig : nullptr);
      break;
    case Input::dynPfxListConfig:
      root_->dynPfxListConfigIs(present ? live_.dynPfxListConfig : nullptr);
      break;
    case Input::policyMap:
      root_->policyMapIs(present ? live_.policyMap : nullptr);
      break;
  }
  present_[index(input)] = present;
}

void World::apply(Statement const& statement) {
  if (statement.edit) {
    statement.edit(live_);
    if (options_.shadow) statement.edit(shadow_);
  }
  Effect const& effect = statement.effect;
  bool const up = allPresent();
  switch (effect.kind) {
    case Effect::Kind::none:
      break;
    case Effect::Kind::mapChanged:
      dirty_.insert(effect.map);
      // A map made while the reactor is up gets a reactor of its own, whose
      // first resend deletes whatever the engine still held under the name.
      if (up) stale_.erase(effect.map);
      break;
    case Effect::Kind::mapVersioned:
      dirty_.erase(effect.map);
      break;
    case Effect::Kind::mapRemoved:
      dirty_.erase(effect.map);
      if (!up) removedWhileAway_.insert(effect.map);
      break;
    case Effect::Kind::sequenceRemoved:
      // The last sequence takes the whole map out of the engine, so nothing
      // of it lags any more.
      if (auto map = live_.routeMapConfig->routeMap(effect.map);
          up && map && map->mapEntry().empty()) {
        dirty_.erase(effect.map);
      }
      break;
    case Effect::Kind::inputTaken:
      if (inputPresent(effect.input)) inputIs(effect.input, false);
      break;
    case Effect::Kind::inputGiven:
      if (inputPresent(effect.input)) break;
      inputIs(effect.input, true);
      if (!allPresent()) break;
      // A new VrfStatusSm has resent every map whole, and only those.
      dirty_.clear();
      stale_.insert(removedWhileAway_.begin(), removedWhileAway_.end());
      removedWhileAway_.clear();
      std::erase_if(stale_, [&](Orb::Name const& name) {
        return live_.routeMapConfig->routeMap(name) != nullptr;
      });
      break;
  }
}

}  // namespace Scenario
