// Running statements against the live root and the shadow configuration, and
// keeping track of what the engine is allowed to lag behind.
#include "ScenarioWorld.h"

#include "ScenarioCopy.h"
#include "ScenarioRecords.h"

#include <algorithm>
#include <utility>

namespace Scenario {

namespace {

std::vector<Rib::EngineSink*> sinksOf(World::Options const& options, Rib::EngineSink& model) {
  std::vector<Rib::EngineSink*> sinks;
  if (options.stream) sinks.push_back(options.stream);
  if (options.model) sinks.push_back(&model);
  return sinks;
}

}  // namespace

World::World(Options options)
    : options_(std::move(options)),
      sink_(sinksOf(options_, modelFeed_)),
      previousSink_(Rib::engineSinkIs(&sink_)) {
  listRecordsClear();
  if (options_.policyMap)
    policyWatch_ = std::make_unique<PolicyMapWatch>(live_.policyMap, options_.policyMap);
  if (options_.shadow) asPathHoldBack_ = std::make_unique<AsPathHoldBack>(shadow_.aclListConfig);
  root_ = Tessel::rootFactory("root");
  mirrorIs(*root_);
  root_->vrfNameIs(options_.vrf);
  for (std::size_t i = 0; i < inputCount; ++i)
    inputIs(Input(i), true);
}

World::~World() {
  // The tear-down's own commands and policy-map withdrawals are no part of
  // the scenario's output: the stream and the watch go first.
  Rib::engineSinkIs(previousSink_);
  policyWatch_ = nullptr;
  if (Tessel::rmRoot == root_) Tessel::rmRoot = nullptr;
  root_ = nullptr;
}

bool World::allPresent() const noexcept {
  return std::all_of(present_.begin(), present_.end(), [](bool p) { return p; });
}

bool World::settled() const {
  return allPresent() && std::all_of(pending_.begin(), pending_.end(),
                                     [](auto const& names) { return names.empty(); });
}

void World::inputIs(Input input, bool present) {
  rootInputIs(input, present);
  present_[index(input)] = present;
  if (asPathHoldBack_) asPathHoldBack_->upIs(allPresent());
}

void World::rootInputIs(Input input, bool present) {
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
}

void World::mirrorIs(Tessel::Root& root) const {
  root.engineMirrorIs(options_.mirror || options_.reconcile);
  root.reconcileAtRebuildIs(options_.reconcile);
}

void World::allSent() {
  for (auto& names : pending_)
    names.clear();
  for (auto& names : removedWhileAway_)
    names.clear();
  listRecordsReconciled();
  if (asPathHoldBack_) asPathHoldBack_->reconciled();
}

void World::reconcile() {
  if (root_->doReconcile().reconciled) allSent();
}

void World::machineRebuilt() {
  listRecordsMachineryIs(false);
  if (asPathHoldBack_) {
    asPathHoldBack_->upIs(false);
    asPathHoldBack_->upIs(true);
  }
  for (auto& names : pending_)
    names.clear();
  listRecordsMachineryIs(true);
  renamePending_ = false;
  if (options_.reconcile) allSent();
}

void World::apply(Statement const& statement) {
  Effect const& effect = statement.effect;
  bool const lifecycle =
      effect.kind == Effect::Kind::inputTaken || effect.kind == Effect::Kind::inputGiven ||
      effect.kind == Effect::Kind::inputReplaced || effect.kind == Effect::Kind::vrfRenamed ||
      effect.kind == Effect::Kind::rootReplaced;
  if (effect.kind == Effect::Kind::reconciled && !root_->engineMirror()) {
    throw Refusal(
        "expected the root to keep a mirror for 'reconcile' (policy-replay "
        "--reconcile, or World::Options::mirror)");
  }
  if (renamePending_ && !lifecycle) {
    throw Refusal(
        "expected 'input', 'replace' or 'root' after renaming the VRF: the library "
        "keeps serving the old VRF until an input changes, and aborts on any command "
        "built meanwhile");
  }
  if (statement.edit) {
    statement.edit(live_);
    if (options_.shadow) statement.edit(shadow_);
  }
  bool const up = allPresent();
  std::set<Orb::Name>& pending = pending_[index(effect.object)];
  switch (effect.kind) {
    case Effect::Kind::none:
      break;
    case Effect::Kind::changed:
      pending.insert(effect.name);
      // An object made while everything is there gets a reactor of its own,
      // whose first send replaces whatever the engine still held under the
      // name; one made while an input is away is sent whole when it is back.
      removedWhileAway_[index(effect.object)].erase(effect.name);
      break;
    case Effect::Kind::sent:
      pending.erase(effect.name);
      break;
    case Effect::Kind::removed:
      pending.erase(effect.name);
      if (!up) removedWhileAway_[index(effect.object)].insert(effect.name);
      break;
    case Effect::Kind::partRemoved:
      // Removing the last part takes the whole object out of the engine, so
      // nothing of it lags any more.
      if (up && effect.emptied && effect.emptied(live_, effect.name)) pending.erase(effect.name);
      break;
    case Effect::Kind::inputTaken:
      if (!inputPresent(effect.input)) break;
      inputIs(effect.input, false);
      listRecordsMachineryIs(false);
      renamePending_ = false;
      break;
    case Effect::Kind::inputGiven:
      if (inputPresent(effect.input)) break;
      inputIs(effect.input, true);
      // A new VrfStatusSm has resent every object whole, and only those.
      if (allPresent()) {
        for (auto& names : pending_)
          names.clear();
        listRecordsMachineryIs(true);
        // The new machine reconciled as it came.
        if (options_.reconcile) allSent();
      }
      break;
    case Effect::Kind::inputReplaced:
      replaceWithCopy(live_, effect.input);
      if (effect.input == Input::policyMap && policyWatch_)
        policyWatch_ = std::make_unique<PolicyMapWatch>(live_.policyMap, options_.policyMap);
      if (!inputPresent(effect.input)) break;
      rootInputIs(effect.input, true);
      if (up) machineRebuilt();
      break;
    case Effect::Kind::vrfRenamed:
      if (L3::VrfName(effect.name) == options_.vrf) break;
      options_.vrf = L3::VrfName(effect.name);
      root_->vrfNameIs(options_.vrf);
      renamePending_ = up;
      break;
    case Effect::Kind::rootReplaced: {
      // The later root retires the earlier one's machine as it is made; the
      // earlier root goes once the later one has the inputs.
      Orb::Ptr<Tessel::Root> const earlier = std::exchange(root_, Tessel::rootFactory(effect.name));
      mirrorIs(*root_);
      root_->vrfNameIs(options_.vrf);
      for (std::size_t i = 0; i < inputCount; ++i) {
        if (present_[i]) rootInputIs(Input(i), true);
      }
      if (up) machineRebuilt();
      break;
    }
    case Effect::Kind::reconciled:
      reconcile();
      break;
  }
}

}  // namespace Scenario
