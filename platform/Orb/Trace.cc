// The process-wide trace sink.
#include "Orb/Trace.h"

#include <cstring>

namespace Orb {
namespace detail {
TraceSink* traceInstalled = nullptr;
}  // namespace detail
using detail::traceInstalled;

TraceSink* traceSinkIs(TraceSink* sink) noexcept {
  TraceSink* old = traceInstalled;
  traceInstalled = sink;
  return old;
}

TraceSink* traceSink() noexcept {
  return traceInstalled;
}

std::string_view baseName(char const* path) noexcept {
  char const* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

TraceLine::~TraceLine() {
  if (traceInstalled) traceInstalled->traceLine(level_, baseName(file_), line_, os_.str());
}

}  // namespace Orb
