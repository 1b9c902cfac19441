// FanOutSink: one engine sink that hands every command and commit to several,
// so one stream is both recorded as text and applied to an engine model.
#pragma once

#include <utility>
#include <vector>

#include "Rib/EngineSink.h"

namespace Scenario {

/// Forwards to each target in order; the targets outlive the sink.
class FanOutSink final : public Rib::EngineSink {
 public:
  explicit FanOutSink(std::vector<Rib::EngineSink*> targets) : targets_(std::move(targets)) {}

  void execute(Rib::CogOp const& op) override {
    for (Rib::EngineSink* t : targets_)
      t->execute(op);
  }
  void commit(Rib::CommitKind kind) override {
    for (Rib::EngineSink* t : targets_)
      t->commit(kind);
  }

 private:
  std::vector<Rib::EngineSink*> targets_;
};

}  // namespace Scenario
