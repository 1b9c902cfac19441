// Rib::CogOp and Rib::CogCommit: one engine command, its execution, and the
// two ways to commit what was executed.
#pragma once

#include "Rib/CogTagArray.h"
#include "Rib/CogValueTagArray.h"

namespace Rib {

/// One engine command: an operation name, the path of the node it acts on,
/// its values, and whether it removes the node.
class CogOp : public Orb::Object {
 public:
  CogOp(Orb::String name, RibPath path) : name_(std::move(name)), path_(std::move(path)) {}

  Orb::String const& name() const noexcept { return name_; }
  RibPath const& path() const noexcept { return path_; }

  Orb::Ptr<CogValueTagArray> values;
  bool isDelete = false;

  /// Sets one u32 value on the command itself (creating its value array when
  /// it has none). The third argument is reserved and always 0.
  void doSetU32(Orb::U32 tag, Orb::U32 value, Orb::U32 reserved);
  /// Hands the command to the engine's pending transaction. The engine takes
  /// a copy; the command may be dropped or changed afterwards.
  void doExecute();
  /// Commits everything executed so far and waits for the engine.
  void doCommit();

 private:
  Orb::String name_;
  RibPath path_;
};

/// A new command with that name and path, no values, not a deletion.
Orb::Ptr<CogOp> CogOpIs(Orb::String name, RibPath path);

struct CogCommit {
  /// Commits everything executed so far as one transaction.
  static void doCommit();
};

}  // namespace Rib
