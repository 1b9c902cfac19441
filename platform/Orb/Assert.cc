// Reporting of failed assertions.
#include "Orb/Assert.h"

#include <cstdio>
#include <cstdlib>

#include "Orb/Trace.h"

namespace Orb {

void assertionFailed(char const* condition, char const* file, int line) noexcept {
  std::string_view base = baseName(file);
  if (TraceSink* sink = traceSink()) {
    std::string text = std::string("Assertion failed: ") + condition;
    sink->traceLine(0, base, line, text);
  }
  std::fprintf(stderr, "Assertion failed: %s (%.*s:%d)\n", condition, static_cast<int>(base.size()),
               base.data(), line);
  std::fflush(stderr);
  std::abort();
}

}  // namespace Orb
