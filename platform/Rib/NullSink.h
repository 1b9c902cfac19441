// Rib::NullSink: an engine sink that drops the command stream and only counts
// it, so benchmarks measure the library rather than an engine stand-in.
#pragma once

#include "Orb/Api.h"
#include "Orb/Types.h"
#include "Rib/EngineSink.h"

namespace Rib {

/// Counts commands and commits and keeps nothing else.
class ROTOR_API NullSink final : public EngineSink {
 public:
  void execute(CogOp const& op) override;
  void commit(CommitKind kind) override;

  /// Commands executed so far.
  Orb::U64 commands() const noexcept { return commands_; }
  /// Commits of either kind so far.
  Orb::U64 commits() const noexcept { return commits_; }
  /// Sets both counts back to zero.
  void clear() noexcept { commands_ = commits_ = 0; }

 private:
  Orb::U64 commands_ = 0;
  Orb::U64 commits_ = 0;
};

}  // namespace Rib
