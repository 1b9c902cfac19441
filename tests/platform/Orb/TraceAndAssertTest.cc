// Trace lines reach the installed sink only, and cost nothing when they are
// filtered out; failed assertions say which condition broke.
#include <gtest/gtest.h>

#include <cstdio>
#include <locale>
#include <string>
#include <vector>

#include "DecimalCommaLocale.h"
#include "Orb/Assert.h"
#include "Orb/Trace.h"

namespace Orb {
namespace {

// Keeps what it receives; echoes it to standard error for the death test.
struct CapturingSink : TraceSink {
  explicit CapturingSink(int max = 9, bool echo = false) : max(max), echo(echo) {}
  int maxLevel() const override { return max; }
  void traceLine(int level, std::string_view file, int line, std::string_view text) override {
    lines.push_back(std::to_string(level) + " " + std::string(file) + ":" + std::to_string(line) +
                    " " + std::string(text));
    if (echo) std::fprintf(stderr, "sink %s\n", lines.back().c_str());
  }
  int max;
  bool echo;
  std::vector<std::string> lines;
};

// Installs a sink for one test and puts the previous one back.
class SinkScope {
 public:
  explicit SinkScope(TraceSink* sink) : previous_(traceSinkIs(sink)) {}
  ~SinkScope() { traceSinkIs(previous_); }

 private:
  TraceSink* previous_;
};

TEST(Trace, SinkReceivesLevelBaseFileNameLineAndText) {
  CapturingSink sink;
  SinkScope scope(&sink);
  int const line = __LINE__ + 1;
  ORB_TRACE(3, "mtu " << 1500 << " on " << std::string("eth0"));
  EXPECT_EQ(sink.lines, std::vector<std::string>{"3 TraceAndAssertTest.cc:" + std::to_string(line) +
                                                 " mtu 1500 on eth0"});
}

// Traces read the same whatever the host's global C++ locale groups digits
// or writes decimals as.
TEST(Trace, NumbersIgnoreTheGlobalLocale) {
  std::string const german = TestSupport::decimalCommaLocale();
  if (german.empty()) GTEST_SKIP() << "no locale with a decimal comma could be had";
  CapturingSink sink;
  SinkScope scope(&sink);
  std::locale const previous = std::locale::global(std::locale(german));
  ORB_TRACE(3, 12345 << " " << 1.5);
  std::locale::global(previous);
  ASSERT_EQ(1u, sink.lines.size());
  EXPECT_TRUE(sink.lines[0].ends_with(" 12345 1.5")) << sink.lines[0];
}

TEST(Trace, FilteredLinesAreNeverFormatted) {
  int formatted = 0;
  {
    SinkScope none(nullptr);
    ORB_TRACE(0, ++formatted);
  }
  CapturingSink sink(4);
  SinkScope scope(&sink);
  ORB_TRACE(5, ++formatted);
  EXPECT_EQ(formatted, 0);
  ORB_TRACE(4, ++formatted);
  EXPECT_EQ(formatted, 1);
  EXPECT_EQ(sink.lines.size(), 1u);
}

TEST(AssertDeathTest, FailedConditionIsTracedAtLevelZeroPrintedAndAborts) {
  CapturingSink sink(9, true);
  EXPECT_DEATH(
      {
        traceSinkIs(&sink);
        ORB_ASSERT(2 < 1);
      },
      "sink 0 TraceAndAssertTest.cc:[0-9]+ Assertion failed: 2 < 1\n"
      "Assertion failed: 2 < 1 \\(TraceAndAssertTest.cc:[0-9]+\\)");
}

}  // namespace
}  // namespace Orb
