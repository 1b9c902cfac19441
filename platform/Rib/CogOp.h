// Rib::CogOp and Rib::CogCommit: one engine command, its execution, and the
// two ways to commit what was executed.
#pragma once

#include <string_view>

#include "Orb/Api.h"
#include "Orb/InlineVector.h"
#include "Rib/CogTagArray.h"
#include "Rib/CogValueTagArray.h"

namespace Rib {

/// One engine command: an operation name, the path of the node it acts on,
/// its values, and whether it removes the node. Commands are made and dropped
/// once per engine command, so their storage is recycled and the name is
/// kept inline.
class ROTOR_API CogOp : public Orb::Object {
 public:
  CogOp(std::string_view name, RibPath path) : path_(std::move(path)) {
    name_.append(name.data(), name.size());
  }

  std::string_view name() const noexcept { return {name_.data(), name_.size()}; }
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

  static void* operator new(std::size_t size) { return recycler.take(size); }
  static void operator delete(void* block, std::size_t size) noexcept {
    recycler.give(block, size);
  }

 private:
  Orb::InlineVector<char, 32> name_;
  RibPath path_;
  static Orb::Recycler recycler;
};

/// A new command with that name and path, no values, not a deletion.
inline Orb::Ptr<CogOp> CogOpIs(std::string_view name, RibPath path) {
  return Orb::make<CogOp>(name, std::move(path));
}

struct ROTOR_API CogCommit {
  /// Commits everything executed so far as one transaction.
  static void doCommit();
};

}  // namespace Rib
