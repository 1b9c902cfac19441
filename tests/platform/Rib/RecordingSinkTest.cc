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
  return CogOpIs("RouteMapSetOpMode", path);
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
    op->values = CogValueTagArrayIs();
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
  EXPECT_EQ(Orb::Object::liveObjects(), liveBefore) << "records must not hold the command";
}

TEST_F(RecordingSinkTest, BothCommitKindsAppearInTheStream) {
  auto op = opModeOp();
  op->doExecute();
  CogCommit::doCommit();
  op->doExecute();
  op->doCommit();
  EXPECT_EQ(sink.lines(), (std::vector<std::string>{"RouteMapSetOpMode [256]", "commit",
                                                    "RouteMapSetOpMode [256]", "commit sync"}));
  EXPECT_EQ(sink.commits(), 2u);

  sink.clear();
  EXPECT_EQ(sink.text(), "");
  EXPECT_EQ(sink.commits(), 0u);
}

TEST_F(RecordingSinkTest, SetU32PrintsLikeAPushedU32AndReplacesItsTag) {
  auto set = opModeOp();
  set->doSetU32(18, 1, 0);
  set->doExecute();
  auto pushed = opModeOp();
  pushed->values = CogValueTagArrayIs();
  pushed->values->doPushU32(18, 1);
  pushed->doExecute();

  // Replacing keeps the value's place and leaves no second value under the tag.
  auto replaced = opModeOp();
  replaced->values = CogValueTagArrayIs();
  replaced->values->doPushU32(18, 1);
  replaced->values->doPushFlag(19, true);
  replaced->values->doPushU8(18, 3);
  replaced->doSetU32(18, 2, 0);
  replaced->doSetU32(20, 4, 0);
  replaced->doExecute();

  EXPECT_EQ(sink.text(),
            "RouteMapSetOpMode [256] 18:u32=1\n"
            "RouteMapSetOpMode [256] 18:u32=1\n"
            "RouteMapSetOpMode [256] 18:u32=2 19:flag=true 20:u32=4\n");
}

TEST_F(RecordingSinkTest, TextReadsBackAsTheRecords) {
  auto op = opModeOp();
  op->values = CogValueTagArrayIs();
  op->values->doPushString(0, Orb::String(std::string("\"\0\\", 3)));
  op->values->doPushIp6Addr(1, Kiwi::Ip6Addr());
  op->doExecute();
  CogCommit::doCommit();
  EXPECT_EQ(parseCommandText(sink.text()), sink.records());
}

TEST(EngineSinkTest, WithoutASinkCommandsGoNowhere) {
  ASSERT_EQ(engineSink(), nullptr);
  RecordingSink notInstalled;
  auto op = opModeOp();
  op->doExecute();
  op->doCommit();
  CogCommit::doCommit();
  EXPECT_EQ(notInstalled.records().size(), 0u);
}

TEST(EngineSinkTest, ScopedSinksNestAndRestoreThePreviousOne) {
  RecordingSink outer;
  RecordingSink inner;
  auto op = opModeOp();
  {
    ScopedEngineSink outerScope(outer);
    op->doExecute();
    {
      ScopedEngineSink innerScope(inner);
      CogCommit::doCommit();
    }
    op->doCommit();
  }
  EXPECT_EQ(engineSink(), nullptr);
  op->doExecute();
  EXPECT_EQ(outer.text(), "RouteMapSetOpMode [256]\ncommit sync\n");
  EXPECT_EQ(inner.text(), "commit\n");
}

TEST(NullSinkTest, CountsCommandsAndCommitsOfBothKinds) {
  NullSink sink;
  ScopedEngineSink installed(sink);
  auto op = opModeOp();
  op->doExecute();
  op->doExecute();
  op->doCommit();
  CogCommit::doCommit();
  EXPECT_EQ(sink.commands(), 2u);
  EXPECT_EQ(sink.commits(), 2u);
  sink.clear();
  EXPECT_EQ(sink.commands() + sink.commits(), 0u);
}

}  // namespace
}  // namespace Rib
