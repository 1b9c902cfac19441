// Assertions for programming errors: the failed condition's text is traced at
// level 0 and written to standard error, then the process aborts.
#pragma once

#include "Orb/Api.h"

namespace Orb {

[[noreturn]] ROTOR_API void assertionFailed(char const* condition, char const* file,
                                            int line) noexcept;

}  // namespace Orb

/// Aborts with the text of `cond` when it does not hold. Always on: the
/// library's invariants guard the engine, not just the tests.
#define ORB_ASSERT(cond) \
  ((cond) ? static_cast<void>(0) : ::Orb::assertionFailed(#cond, __FILE__, __LINE__))
