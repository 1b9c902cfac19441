// The trace facility: numbered levels, file and line on every line, and a sink
// the host installs. Level 0 is the most severe, 9 the most verbose; handler
// entry traces at 8, deletions at 1, command details at 7 and 9.
#pragma once

#include "Orb/Api.h"

#include <locale>
#include <sstream>
#include <string_view>

namespace Orb {

/// Receives trace lines. Tests capture them; tools print them. Without an
/// installed sink nothing is traced and nothing is formatted.
class ROTOR_API TraceSink {
 public:
  virtual ~TraceSink() = default;
  /// Lines above this level are not formatted at all.
  virtual int maxLevel() const { return 9; }
  virtual void traceLine(int level, std::string_view file, int line, std::string_view text) = 0;
};

/// Installs `sink` (or none, with nullptr) and returns the previous one.
ROTOR_API TraceSink* traceSinkIs(TraceSink* sink) noexcept;
ROTOR_API TraceSink* traceSink() noexcept;
namespace detail {
// Read inline by every trace point, so a disabled trace costs one load.
ROTOR_API extern TraceSink* traceInstalled;
}  // namespace detail

inline bool traceEnabled(int level) noexcept {
  TraceSink* const sink = detail::traceInstalled;
  return sink != nullptr && level <= sink->maxLevel();
}

/// Builds one trace line and hands it to the sink when it goes out of scope.
class ROTOR_API TraceLine {
 public:
  /// Numbers read the same whatever locale the host runs in.
  TraceLine(int level, char const* file, int line) : level_(level), file_(file), line_(line) {
    os_.imbue(std::locale::classic());
  }
  TraceLine(TraceLine const&) = delete;
  TraceLine& operator=(TraceLine const&) = delete;
  ~TraceLine();
  template <class T>
  TraceLine& operator<<(T const& v) {
    os_ << v;
    return *this;
  }

 private:
  int level_;
  char const* file_;
  int line_;
  std::ostringstream os_;
};

/// The file's base name: trace lines carry no build directory, so they read
/// the same on every machine.
ROTOR_API std::string_view baseName(char const* path) noexcept;

}  // namespace Orb

/// Traces `a << b << ...` at `level` with this file and line.
#define ORB_TRACE(level, ...)                                    \
  do {                                                           \
    if (::Orb::traceEnabled(level)) {                            \
      ::Orb::TraceLine orbTraceLine_(level, __FILE__, __LINE__); \
      orbTraceLine_ << __VA_ARGS__;                              \
    }                                                            \
  } while (0)
