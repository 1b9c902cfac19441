// What the harnesses share: a property that must hold for every input, which
// stops the run with both sides printed when it does not.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace Fuzz {

/// Every byte outside 0x20..0x7e as \xHH, so a finding prints whole.
inline std::string shown(std::string_view text) {
  static char const hex[] = "0123456789abcdef";
  std::string out;
  for (unsigned char c : text) {
    if (c >= 0x20 && c <= 0x7e && c != '\\') {
      out += static_cast<char>(c);
    } else {
      out += "\\x";
      out += hex[c >> 4];
      out += hex[c & 0xf];
    }
  }
  return out;
}

/// A finding: says what broke and aborts, which libFuzzer reports as a crash
/// and saves the input.
[[noreturn]] inline void finding(std::string const& what) {
  std::fprintf(stderr, "fuzz finding: %s\n", what.c_str());
  std::fflush(stderr);
  std::abort();
}

/// `expected` and `actual` must be the same text.
inline void requireSame(std::string_view what, std::string_view expected, std::string_view actual) {
  if (expected == actual) return;
  finding(std::string(what) + "\n  expected: " + shown(expected) +
          "\n  actual:   " + shown(actual));
}

}  // namespace Fuzz
