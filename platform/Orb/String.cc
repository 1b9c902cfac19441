// Formatting and stream output of Orb::String.
#include "Orb/String.h"

#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace Orb {

String String::format(char const* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(nullptr, 0, fmt, copy);
  va_end(copy);
  std::string out(n > 0 ? static_cast<std::size_t>(n) : 0, '\0');
  if (n > 0) std::vsnprintf(out.data(), out.size() + 1, fmt, args);
  va_end(args);
  return String(std::move(out));
}

std::ostream& operator<<(std::ostream& os, String const& s) {
  return os << s.str();
}

}  // namespace Orb
