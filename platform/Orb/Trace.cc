// The process-wide trace sink.
#include "Orb/Trace.h"

#include <cstring>

namespace Orb {
namespace {
TraceSink* installed = nullptr;
}

TraceSink* traceSinkIs(TraceSink* sink) noexcept {
  TraceSink* old = installed;
  installed = sink;
  return old;
}

TraceSink* traceSink() noexcept {
  return installed;
}

bool traceEnabled(int level) noexcept {
  return installed && level <= installed->maxLevel();
}

std::string_view baseName(char const* path) noexcept {
  char const* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

TraceLine::~TraceLine() {
  if (installed) installed->traceLine(level_, baseName(file_), line_, os_.str());
}

}  // namespace Orb
