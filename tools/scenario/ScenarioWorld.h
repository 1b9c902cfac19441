// The world a scenario runs in: a root on live configuration inputs, its engine
// stream (modelled, and shown to whoever asks), and an unwatched shadow copy
// for the check.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <set>

#include "AsPathHoldBack.h"
#include "FanOutSink.h"
#include "PolicyMapWatch.h"
#include "Rib/CommandText.h"
#include "Rib/EngineModel.h"
#include "Scenario.h"
#include "Tessel/Root.h"

namespace Scenario {

/// Owns the live root and the engine sinks while it exists; only one world
/// may exist at a time, as the root is process-wide.
class World {
 public:
  struct Options {
    L3::VrfName vrf = "default";
    /// Keep the shadow configuration the check replays; off saves the work
    /// when nothing is checked.
    bool shadow = true;
    /// Sees every command and commit as it is sent, before the model does
    /// (null: nobody). The world itself keeps none of them, so a long run
    /// costs no more memory than a short one; the stream's reader decides
    /// what to keep.
    Rib::EngineSink* stream = nullptr;
    /// Apply the stream to the engine model; off when nothing will read the
    /// model (no check, no state), which saves most of a long run's work.
    bool model = true;
    /// Sees each change of the live policy map as its canonical line, the
    /// moment it happens, so it falls in place among the commands the stream
    /// sees (null: the policy map is not watched).
    PolicyMapWatch::Reader policyMap;
    /// The root keeps a mirror of the engine, so `reconcile` statements can
    /// repair what the stream left behind.
    bool mirror = false;
    /// The mirror, a reconcile at every build of the machinery, and, when
    /// checking, one after every settled statement, before the check: the
    /// check then excuses only what no repair can undo.
    bool reconcile = false;
  };

  /// Installs the engine sinks, then makes the root with all six inputs, so
  /// its first replay is part of the stream.
  explicit World(Options options);
  ~World();
  World(World const&) = delete;
  World& operator=(World const&) = delete;

  /// Runs the statement on the live inputs, then on the shadow. A Refusal
  /// raised by the statement leaves both as they were.
  void apply(Statement const& statement);

  /// Whether nothing is pending: every input present and every object of
  /// every kind sent since its last change. Only then must the engine hold
  /// exactly what a fresh root would send for the configuration.
  bool settled() const;

  /// The objects of `kind` changed and not sent since.
  std::set<Orb::Name> const& pending(ObjectKind kind) const noexcept {
    return pending_[index(kind)];
  }

  /// The engine as the live stream left it.
  Rib::EngineModel const& model() const noexcept { return model_; }
  /// The VRF the root serves now.
  L3::VrfName const& vrf() const noexcept { return options_.vrf; }
  /// Whether the root was renamed while its machine runs: the machine keeps
  /// the old VRF until an input changes, and the library aborts on any
  /// command it builds meanwhile, so only input, replace, root and vrf
  /// statements are taken.
  bool renamePending() const noexcept { return renamePending_; }
  /// Whether the world repairs before every check.
  bool reconciles() const noexcept { return options_.reconcile; }
  /// Reconciles the live root; afterwards nothing is pending and nothing
  /// left behind, when the machinery was there to reconcile.
  void reconcile();
  Inputs const& live() const noexcept { return live_; }
  /// The configuration as the statements left it, watched by nobody.
  Inputs& shadow() noexcept { return shadow_; }
  Inputs const& shadow() const noexcept { return shadow_; }
  bool inputPresent(Input input) const noexcept { return present_[index(input)]; }

  /// Objects of `kind` that left the configuration while an input was away
  /// and were not made again since. A new reactor only sends what is there,
  /// so the engine may still hold them; whether it does is the kind's to say
  /// (see the known divergences in Check.cc).
  std::set<Orb::Name> const& removedWhileAway(ObjectKind kind) const noexcept {
    return removedWhileAway_[index(kind)];
  }
  /// Route maps that the engine holds although they left the configuration.
  std::set<Orb::Name> const& staleMaps() const noexcept {
    return removedWhileAway(ObjectKind::routeMap);
  }

  /// The AS-path lists the engine may hold otherwise than a fresh root sends
  /// them, as the shadow configuration says; null without a shadow.
  AsPathHoldBack const* asPathHoldBack() const noexcept { return asPathHoldBack_.get(); }

  /// Commands and commits for which `keep` is false are still recorded but
  /// never reach the model (null keeps everything), so a test can plant a
  /// divergence.
  void modelFilterIs(std::function<bool(Rib::RecordedCommand const&)> keep) {
    modelFeed_.keep = std::move(keep);
  }

 private:
  static std::size_t index(Input input) noexcept { return static_cast<std::size_t>(input); }
  static std::size_t index(ObjectKind kind) noexcept { return static_cast<std::size_t>(kind); }
  bool allPresent() const noexcept;
  void inputIs(Input input, bool present);
  /// Gives the root the live entity of `input`, or none.
  void rootInputIs(Input input, bool present);
  /// The machine was built anew while every input stayed: it sent every
  /// object whole, and the one before took the removals it had not sent.
  void machineRebuilt();
  /// Makes the root keep its mirror, and reconcile at rebuilds, as asked.
  void mirrorIs(Tessel::Root& root) const;
  /// Forgets what lagged behind or was left behind: the engine holds what a
  /// fresh start does.
  void allSent();

  /// The model's way in, through the test filter.
  struct ModelFeed final : Rib::EngineSink {
    explicit ModelFeed(Rib::EngineModel& m) : model(m) {}
    void execute(Rib::CogOp const& op) override {
      if (!keep || keep(Rib::RecordedCommand::of(op))) model.execute(op);
    }
    void commit(Rib::CommitKind kind) override {
      if (!keep || keep(Rib::RecordedCommand::of(kind))) model.commit(kind);
    }
    Rib::EngineModel& model;
    std::function<bool(Rib::RecordedCommand const&)> keep;
  };

  Options options_;
  Rib::EngineModel model_;
  ModelFeed modelFeed_{model_};
  FanOutSink sink_;
  Rib::EngineSink* previousSink_;
  Inputs live_ = Inputs::create();
  Inputs shadow_ = Inputs::create();
  /// Only while someone reads the policy map's changes.
  std::unique_ptr<PolicyMapWatch> policyWatch_;
  Orb::Ptr<Tessel::Root> root_;
  std::array<bool, inputCount> present_{};
  /// Per object kind, the objects changed since they were last sent; their
  /// engine state lags.
  std::array<std::set<Orb::Name>, objectKindCount> pending_;
  /// Per object kind, the objects removed while an input was away and not
  /// made again since.
  std::array<std::set<Orb::Name>, objectKindCount> removedWhileAway_;
  std::unique_ptr<AsPathHoldBack> asPathHoldBack_;
  bool renamePending_ = false;
};

}  // namespace Scenario
