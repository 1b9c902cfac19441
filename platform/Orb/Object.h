// Intrusive reference counting: the base of every shared runtime object, and
// the process-wide switch that makes counting atomic.
#pragma once

#include <atomic>

#include "Orb/Types.h"

namespace Orb {

/// Turns atomic reference counting on or off for the whole process. Off (the
/// default) suits the agent's single event thread; a host that shares objects
/// between threads turns it on before it creates any.
void threadSafePtrsIs(bool on) noexcept;
bool threadSafePtrs() noexcept;

/// A reference-counted object; it deletes itself when its last `Ptr` goes.
class Object {
 public:
  Object(Object const&) = delete;
  Object& operator=(Object const&) = delete;

  void newRef() const noexcept;
  void deleteRef() const noexcept;
  U32 references() const noexcept { return refs_.load(std::memory_order_relaxed); }

  /// Objects alive in the process; tests compare it before and after a flow
  /// to catch leaks and cycles.
  static long liveObjects() noexcept;

 protected:
  Object() noexcept;
  virtual ~Object();
  /// Runs when the last reference goes; the default deletes the object. A
  /// type that must act on the whole object first (no virtual call reaches
  /// the derived part from a destructor) does so here, then deletes it.
  virtual void lastReferenceGone() const noexcept;

 private:
  mutable std::atomic<U32> refs_{0};
};

}  // namespace Orb
