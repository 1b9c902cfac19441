// Rib::RecordingSink: an engine sink that keeps every command and commit, for
// tests and tools that compare what the library sent with what was expected.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Orb/Api.h"
#include "Rib/CommandText.h"
#include "Rib/EngineSink.h"

namespace Rib {

/// Records the command stream in order. Commands are copied when executed,
/// as the engine does, so later changes to their values do not show.
class ROTOR_API RecordingSink final : public EngineSink {
 public:
  void execute(CogOp const& op) override;
  void commit(CommitKind kind) override;

  /// Commands and commits in the order they arrived.
  std::vector<RecordedCommand> const& records() const noexcept { return records_; }
  /// The canonical line of every record.
  std::vector<std::string> lines() const;
  /// All canonical lines, each ending in '\n'.
  std::string text() const;
  /// Commits of either kind seen so far.
  std::size_t commits() const noexcept { return commits_; }
  /// Forgets everything recorded.
  void clear() noexcept;

 private:
  std::vector<RecordedCommand> records_;
  std::size_t commits_ = 0;
};

}  // namespace Rib
