// Trace lines reach the installed sink only, and cost nothing when they are
// filtered out; failed assertions say which condition broke.
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "Orb/Assert.h"
#include "Orb/Trace.h"

namespace Orb {
namespace {

struct Captured {
  int level;
  std::string file;
  int line;
  std::string text;
  bool operator==(Captured const&) const = default;
};

std::ostream& operator<<(std::ostream& os, Captured const& c) {
  return os << c.level << " " << c.file << ":" << c.line << " " << c.text;
}

class CapturingSink : public TraceSink {
 public:
  explicit CapturingSink(int maxLevel = 9) : maxLevel_(maxLevel) {}
  int maxLevel() const override { return maxLevel_; }
  void traceLine(int level, std::string_view file, int line, std::string_view text) override {
    lines.push_back({level, std::string(file), line, std::string(text)});
  }
  std::vector<Captured> lines;

 private:
  int maxLevel_;
};

// Installs a sink for one test and puts the previous one back.
class SinkScope {
 public:
  explicit SinkScope(TraceSink* sink) : previous_(traceSinkIs(sink)) {}
  ~SinkScope() { traceSinkIs(previous_); }

 private:
  TraceSink* previous_;
};

struct CountsFormatting {
  int* count;
};
std::ostream& operator<<(std::ostream& os, CountsFormatting const& c) {
  ++*c.count;
  return os << "counted";
}

TEST(Trace, SinkReceivesLevelBaseFileNameLineAndText) {
  CapturingSink sink;
  SinkScope scope(&sink);
  int const line = __LINE__ + 1;
  ORB_TRACE(3, "mtu " << 1500 << " on " << std::string("eth0"));
  ORB_TRACE(0, "severe");
  EXPECT_EQ(sink.lines,
            (std::vector<Captured>{{3, "TraceAndAssertTest.cc", line, "mtu 1500 on eth0"},
                                   {0, "TraceAndAssertTest.cc", line + 1, "severe"}}));
}

TEST(Trace, LinesAboveTheSinkLevelAreNotFormatted) {
  CapturingSink sink(4);
  SinkScope scope(&sink);
  int formatted = 0;
  ORB_TRACE(5, CountsFormatting{&formatted});
  ORB_TRACE(9, CountsFormatting{&formatted});
  EXPECT_EQ(formatted, 0);
  EXPECT_TRUE(sink.lines.empty());
  ORB_TRACE(4, CountsFormatting{&formatted});
  EXPECT_EQ(formatted, 1);
  ASSERT_EQ(sink.lines.size(), 1u);
  EXPECT_EQ(sink.lines[0].text, "counted");
  EXPECT_TRUE(traceEnabled(4));
  EXPECT_FALSE(traceEnabled(5));
}

TEST(Trace, WithoutASinkNothingIsFormatted) {
  SinkScope scope(nullptr);
  int formatted = 0;
  ORB_TRACE(0, CountsFormatting{&formatted});
  EXPECT_EQ(formatted, 0);
  EXPECT_FALSE(traceEnabled(0));
  EXPECT_EQ(traceSink(), nullptr);
}

TEST(Trace, InstallingReturnsThePreviousSink) {
  CapturingSink first;
  CapturingSink second;
  SinkScope scope(&first);
  EXPECT_EQ(traceSinkIs(&second), &first);
  EXPECT_EQ(traceSink(), &second);
  EXPECT_EQ(traceSinkIs(&first), &second);
}

TEST(Trace, BaseNameDropsTheDirectories) {
  EXPECT_EQ(baseName("/build/x/platform/Orb/Trace.cc"), "Trace.cc");
  EXPECT_EQ(baseName("Trace.cc"), "Trace.cc");
  EXPECT_EQ(baseName("dir/"), "");
}

// Writes what it receives to standard error, where the death test looks.
class StderrSink : public TraceSink {
 public:
  void traceLine(int level, std::string_view file, int, std::string_view text) override {
    std::fprintf(stderr, "sink %d %.*s %.*s\n", level, static_cast<int>(file.size()), file.data(),
                 static_cast<int>(text.size()), text.data());
  }
};

TEST(AssertDeathTest, FailedConditionIsPrintedAndAborts) {
  EXPECT_DEATH(ORB_ASSERT(1 == 2), "Assertion failed: 1 == 2 \\(TraceAndAssertTest.cc:[0-9]+\\)");
}

TEST(AssertDeathTest, FailedConditionIsTracedAtLevelZero) {
  StderrSink sink;
  EXPECT_DEATH(
      {
        traceSinkIs(&sink);
        ORB_ASSERT(2 < 1);
      },
      "sink 0 TraceAndAssertTest.cc Assertion failed: 2 < 1");
}

TEST(Assert, HoldingConditionDoesNothing) {
  int evaluated = 0;
  ORB_ASSERT(++evaluated == 1);
  EXPECT_EQ(evaluated, 1);
}

}  // namespace
}  // namespace Orb
