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

RegexValidity regexValidity(std::string const& expression);

}  // namespace Scenario
