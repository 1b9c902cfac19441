// Compiles an AS-path expression under the two dialects that stand for the
// regular-expression modes.
#include "AsPathRegex.h"

#include <regex.h>

#include <algorithm>
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

// Both compilers descend one call per group, and libstdc++ one per term as
// well: a long enough expression runs them out of stack (100000 plain
// characters crash std::regex). Longer expressions are invalid in both modes
// without compiling; an AS-path expression is a few dozen characters.
constexpr std::size_t kMaxExpressionBytes = 1024;

std::size_t saturatingAdd(std::size_t a, std::size_t b) {
  return a + b < kStateLimit ? a + b : kStateLimit;
}
std::size_t saturatingTimes(std::size_t a, std::size_t b) {
  return b == 0 || a < kStateLimit / b ? a * b : kStateLimit;
}

// glibc's regcomp copies a repeated subexpression once per repetition ("x+"
// becomes "xx*", "x{3}" "xxx"), so stacked or nested repetitions grow it
// exponentially: "x++++..." doubles with each '+' until memory runs out.
// The optional copies of a bounded interval cost more: "x{,n}" nests n
// optional copies, and the closure regcomp stores for each reaches every
// later one, so memory grows with n squared ("0{,8000}" takes 500 MB).
// The size of a POSIX extended expression with every repetition written out
// and every such closure counted, up to the same state limit as std::regex's
// NFA.
class ExpandedSize {
 public:
  explicit ExpandedSize(std::string const& expression) : e_(expression) {}

  std::size_t whole() {
    std::size_t size = alternatives();
    while (at_ < e_.size()) {  // an unmatched ')' is an ordinary character
      ++at_;
      size = saturatingAdd(size, saturatingAdd(1, alternatives()));
    }
    return size;
  }

 private:
  std::size_t alternatives() {
    std::size_t size = sequence();
    while (at_ < e_.size() && e_[at_] == '|') {
      ++at_;
      size = saturatingAdd(size, saturatingAdd(1, sequence()));
    }
    return size;
  }

  std::size_t sequence() {
    std::size_t size = 0;
    while (at_ < e_.size() && e_[at_] != '|' && e_[at_] != ')')
      size = saturatingAdd(size, repeated(atom()));
    return size;
  }

  std::size_t atom() {
    char const c = e_[at_++];
    if (c == '\\') {
      if (at_ < e_.size()) ++at_;
    } else if (c == '[') {
      if (at_ < e_.size() && e_[at_] == '^') ++at_;
      if (at_ < e_.size() && e_[at_] == ']') ++at_;  // a leading ']' is a member
      while (at_ < e_.size() && e_[at_] != ']')
        ++at_;
      if (at_ < e_.size()) ++at_;
    } else if (c == '(') {
      std::size_t const inside = alternatives();
      if (at_ < e_.size()) ++at_;
      return saturatingAdd(inside, 1);
    }
    return 1;
  }

  std::size_t repeated(std::size_t size) {
    while (at_ < e_.size()) {
      char const c = e_[at_];
      if (c == '*' || c == '?') {
        size = saturatingAdd(size, 1);
      } else if (c == '+') {
        size = saturatingAdd(saturatingTimes(size, 2), 1);
      } else if (c == '{') {
        Interval const copies = interval();
        if (copies.all == 0) return size;  // not an interval: a '{' of its own
        std::size_t const closures =
            saturatingTimes(size, saturatingTimes(copies.optional, copies.optional));
        size = saturatingAdd(saturatingAdd(saturatingTimes(size, copies.all), closures), 1);
        continue;
      } else {
        return size;
      }
      ++at_;
    }
    return size;
  }

  struct Interval {
    std::size_t all = 0;       // copies written out, 0 when there is no interval
    std::size_t optional = 0;  // of them, the ones past the lower bound
  };

  // The copies the interval at `at_` makes, moving past it.
  Interval interval() {
    std::size_t const start = at_++;
    std::size_t const low = number();
    Interval copies{low, 0};
    if (at_ < e_.size() && e_[at_] == ',') {
      std::size_t const highStart = ++at_;
      std::size_t const high = number();
      copies.all = std::max(low, high) + 1;
      if (at_ != highStart && high > low) copies.optional = high - low;  // "{m,}" is a star
    }
    if (at_ >= e_.size() || e_[at_] != '}') {
      at_ = start;
      return {};
    }
    ++at_;
    copies.all = std::max<std::size_t>(copies.all, 1);
    return copies;
  }

  std::size_t number() {
    std::size_t value = 0;
    for (; at_ < e_.size() && isDigit(e_[at_]); ++at_)
      value = saturatingAdd(saturatingTimes(value, 10), static_cast<std::size_t>(e_[at_] - '0'));
    return value;
  }

  std::string const& e_;
  std::size_t at_ = 0;
};

bool compilesAsPosixExtended(std::string const& expression) {
  if (ExpandedSize(expression).whole() >= kStateLimit) return false;
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
  if (expression.size() > kMaxExpressionBytes) return {false, false};
  return {compilesAsPosixExtended(expression), compilesAsEcmaScript(expression)};
}

}  // namespace Scenario
