// The seam between the engine command library and whatever stands for the
// engine: the agent's engine connection, a recorder, an engine model.
#pragma once

#include "Orb/Api.h"
#include "Rib/CogOp.h"

namespace Rib {

enum class CommitKind : Orb::U8 {
  transaction,  // Rib::CogCommit::doCommit
  synchronous,  // Rib::CogOp::doCommit: commits and waits for the engine
};

class ROTOR_API EngineSink {
 public:
  virtual ~EngineSink() = default;
  /// A command executed; `op` is valid only during the call.
  virtual void execute(CogOp const& op) = 0;
  virtual void commit(CommitKind kind) = 0;
};

/// Installs `sink` (nullptr: commands go nowhere) and returns the previous one.
ROTOR_API EngineSink* engineSinkIs(EngineSink* sink) noexcept;
ROTOR_API EngineSink* engineSink() noexcept;

/// Installs a second sink that sees every command and commit after the
/// engine sink does (nullptr: none) and returns the previous one. The library
/// keeps its record of what it sent there, whichever sink the agent installs.
ROTOR_API EngineSink* engineMirrorIs(EngineSink* mirror) noexcept;
ROTOR_API EngineSink* engineMirror() noexcept;

/// Installs a sink for the lifetime of the guard, then puts the previous back.
class ROTOR_API ScopedEngineSink {
 public:
  explicit ScopedEngineSink(EngineSink& sink) : previous_(engineSinkIs(&sink)) {}
  ~ScopedEngineSink() { engineSinkIs(previous_); }
  ScopedEngineSink(ScopedEngineSink const&) = delete;
  ScopedEngineSink& operator=(ScopedEngineSink const&) = delete;

 private:
  EngineSink* previous_;
};

}  // namespace Rib
