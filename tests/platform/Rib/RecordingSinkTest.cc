// Delivery of commands and commits to the installed sink, and what the
// recording and counting sinks make of them.
#include "Rib/RecordingSink.h"

#include <gtest/gtest.h>

#include "Rib/NullSink.h"

namespace Rib {
namespace {

Orb::Ptr<CogOp> opModeOp() {
  RibPath path = CogTagArrayIs();
  path->doPushPath(256);
  auto op = CogOpIs("RouteMapSetOpMode", path);
  op->values = CogValueTagArrayIs();
  return op;
}

class RecordingSinkTest : public ::testing::Test {
 protected:
  RecordingSink sink;
  ScopedEngineSink installed{sink};
};

TEST_F(RecordingSinkTest, RecordsCommandsAsTheyWereWhenExecuted) {
  long const liveBefore = Orb::Object::liveObjects();
  {
    auto op = opModeOp();
    op->values->doPushU32(18, 1);
    op->doExecute();
    // The library reuses commands: changes after execution belong to the next one.
    op->values->doPushFlag(19, true);
    op->path()->doPushU32(257, 7);
    op->isDelete = true;
    op->doExecute();
  }
  EXPECT_EQ(sink.text(),
            "RouteMapSetOpMode [256] 18:u32=1\n"
            "RouteMapSetOpMode [256 257=7] 18:u32=1 19:flag=true delete\n");
  EXPECT_EQ(parseCommandText(sink.text()), sink.records());
  EXPECT_EQ(Orb::Object::liveObjects(), liveBefore) << "records must not hold the command";
}

TEST_F(RecordingSinkTest, BothCommitKindsAppearInTheStream) {
  auto op = opModeOp();
  op->doExecute();
  CogCommit::doCommit();
  op->doCommit();
  EXPECT_EQ(sink.text(), "RouteMapSetOpMode [256]\ncommit\ncommit sync\n");
  EXPECT_EQ(sink.commits(), 2u);
  sink.clear();
  EXPECT_EQ(sink.text(), "");
  EXPECT_EQ(sink.commits(), 0u);
}

TEST_F(RecordingSinkTest, SetU32ReplacesTheValueUnderItsTagInPlace) {
  auto op = opModeOp();
  op->values->doPushU32(18, 1);
  op->values->doPushFlag(19, true);
  op->values->doPushU8(18, 3);
  op->doSetU32(18, 2, 0);
  op->doSetU32(20, 4, 0);
  op->doExecute();
  EXPECT_EQ(sink.text(), "RouteMapSetOpMode [256] 18:u32=2 19:flag=true 20:u32=4\n");
}

TEST(EngineSinkTest, ScopedSinksNestAndRestoreThePreviousOne) {
  ASSERT_EQ(engineSink(), nullptr);
  RecordingSink outer;
  NullSink inner;  // counts what it is given
  auto op = opModeOp();
  {
    ScopedEngineSink outerScope(outer);
    op->doExecute();
    {
      ScopedEngineSink innerScope(inner);
      op->doExecute();
      CogCommit::doCommit();
      op->doCommit();
    }
    op->doCommit();
  }
  EXPECT_EQ(engineSink(), nullptr);
  op->doExecute();  // without a sink, goes nowhere
  EXPECT_EQ(outer.text(), "RouteMapSetOpMode [256]\ncommit sync\n");
  EXPECT_EQ(inner.commands(), 1u);
  EXPECT_EQ(inner.commits(), 2u);
}

}  // namespace
}  // namespace Rib
