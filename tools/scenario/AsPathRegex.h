// Whether an AS-path expression compiles under each regular-expression mode,
// decided the way a configuration writer would: by compiling it.
#pragma once

#include <string>

namespace Scenario {

/// The two validity flags of an AS-path entry.
struct RegexValidity {
  /// Mode 0: POSIX extended expressions, as the C library's regcomp reads
  /// them with REG_EXTENDED.
  bool mode0 = false;
  /// Mode 1: ECMAScript expressions, as std::regex reads them.
  bool mode1 = false;
};

/// Expressions the compilers cannot be trusted with are invalid in both modes
/// without compiling: longer than 1024 bytes (they run out of stack), or
/// larger, once every repetition is written out, than std::regex's NFA state
/// limit (counts past it, or "x++++..." that regcomp grows exponentially).
RegexValidity regexValidity(std::string const& expression);

}  // namespace Scenario
