// Intrusive reference counting: the base of every shared runtime object, and
// the process-wide switch that makes counting atomic.
#pragma once

#include <atomic>

#include "Orb/Api.h"
#include "Orb/Types.h"

namespace Orb {

namespace detail {
// Read on every count change, so it is a plain exported flag rather than a
// call; written only by threadSafePtrsIs.
ROTOR_API extern std::atomic<bool> threadSafe;
ROTOR_API extern std::atomic<long> liveCount;

// Single-threaded mode changes a count with a plain load and store (no locked
// instruction); the thread-safe mode with an atomic read-modify-write.
template <class T>
inline T countAdd(std::atomic<T>& count, T delta) noexcept {
  if (threadSafe.load(std::memory_order_relaxed))
    return count.fetch_add(delta, std::memory_order_acq_rel) + delta;
  T const now = count.load(std::memory_order_relaxed) + delta;
  count.store(now, std::memory_order_relaxed);
  return now;
}
}  // namespace detail

/// Turns atomic reference counting on or off for the whole process. Off (the
/// default) suits the agent's single event thread; a host that shares objects
/// between threads turns it on before it creates any.
ROTOR_API void threadSafePtrsIs(bool on) noexcept;
inline bool threadSafePtrs() noexcept {
  return detail::threadSafe.load(std::memory_order_relaxed);
}

/// A reference-counted object; it deletes itself when its last `Ptr` goes.
class ROTOR_API Object {
 public:
  Object(Object const&) = delete;
  Object& operator=(Object const&) = delete;

  void newRef() const noexcept { detail::countAdd<U32>(refs_, 1); }
  void deleteRef() const noexcept {
    if (detail::countAdd<U32>(refs_, U32(-1)) == 0) lastReferenceGone();
  }
  U32 references() const noexcept { return refs_.load(std::memory_order_relaxed); }

  /// Objects alive in the process; tests compare it before and after a flow
  /// to catch leaks and cycles.
  static long liveObjects() noexcept { return detail::liveCount.load(std::memory_order_relaxed); }

 protected:
  Object() noexcept { detail::countAdd<long>(detail::liveCount, 1); }
  virtual ~Object() { detail::countAdd<long>(detail::liveCount, -1); }
  /// Runs when the last reference goes; the default deletes the object. A
  /// type that must act on the whole object first (no virtual call reaches
  /// the derived part from a destructor) does so here, then deletes it.
  virtual void lastReferenceGone() const noexcept;

 private:
  mutable std::atomic<U32> refs_{0};
};

}  // namespace Orb
