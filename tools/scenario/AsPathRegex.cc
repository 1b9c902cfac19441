// Compiles an AS-path expression under the two dialects that stand for the
// regular-expression modes.
#include "AsPathRegex.h"

#include <regex.h>

#include <cstddef>
#include <regex>

namespace Scenario {

namespace {

// libstdc++ reads a brace count or a back-reference number into a long
// without an overflow check: a count past it is undefined behaviour, and in
// practice wraps into a small one that compiles ("a{2147483648}"). No count
// or reference at or past the NFA state limit can compile, since every
// repetition and every group takes a state, so such an expression is
// refused before std::regex reads it.
#ifdef _GLIBCXX_REGEX_STATE_LIMIT
constexpr std::size_t kStateLimit = _GLIBCXX_REGEX_STATE_LIMIT;
#else
constexpr std::size_t kStateLimit = 100000;
#endif

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Whether the decimal number at `at` (or none) stays below the state limit;
// moves `at` past it.
bool smallNumberAt(std::string const& expression, std::size_t& at) {
  std::size_t value = 0;
  for (; at < expression.size() && isDigit(expression[at]); ++at) {
    value = value * 10 + static_cast<std::size_t>(expression[at] - '0');
    if (value >= kStateLimit) return false;
  }
  return true;
}

// Whether every brace count and back-reference is below the state limit.
// Braces inside a bracket expression are literal; a back-reference there is
// refused by std::regex anyway.
bool countsBelowStateLimit(std::string const& expression) {
  bool inBrackets = false;
  for (std::size_t at = 0; at < expression.size();) {
    char const c = expression[at++];
    if (c == '\\') {
      std::size_t const escaped = at;
      if (!smallNumberAt(expression, at)) return false;
      if (at == escaped && at < expression.size()) ++at;  // "\{" and the like: literal
    } else if (inBrackets) {
      inBrackets = c != ']';
    } else if (c == '[') {
      inBrackets = true;
    } else if (c == '{') {
      if (!smallNumberAt(expression, at)) return false;
      if (at < expression.size() && expression[at] == ',' && !smallNumberAt(expression, ++at))
        return false;
    }
  }
  return true;
}

bool compilesAsPosixExtended(std::string const& expression) {
  regex_t compiled;
  if (regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0) return false;
  regfree(&compiled);
  return true;
}

bool compilesAsEcmaScript(std::string const& expression) {
  if (!countsBelowStateLimit(expression)) return false;
  try {
    std::regex compiled(expression, std::regex::ECMAScript);
    return true;
  } catch (std::regex_error const&) {
    return false;
  }
}

}  // namespace

RegexValidity regexValidity(std::string const& expression) {
  return {compilesAsPosixExtended(expression), compilesAsEcmaScript(expression)};
}

}  // namespace Scenario
