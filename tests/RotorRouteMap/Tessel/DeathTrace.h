// For death tests: trace lines written to standard error, so the expected
// output can name the error line that comes before an assertion.
#pragma once

#include <cstdio>
#include <string_view>

#include "Orb/Trace.h"

namespace TesselTest {

class StderrTrace final : public Orb::TraceSink {
 public:
  void traceLine(int level, std::string_view, int, std::string_view text) override {
    std::fprintf(stderr, "%d %.*s\n", level, static_cast<int>(text.size()), text.data());
  }
};

/// Runs `body` with every trace line on standard error; meant to be the
/// statement of EXPECT_DEATH, so the sink never outlives the dying child.
template <class F>
void withTraceOnStderr(F&& body) {
  StderrTrace sink;
  Orb::TraceSink* previous = Orb::traceSinkIs(&sink);
  body();
  Orb::traceSinkIs(previous);
}

}  // namespace TesselTest
