// What the engine model makes of a command stream: the tree it builds, when
// commands take effect, how values merge or are replaced, and how two models
// are printed and compared.
#include "Rib/EngineModel.h"

#include <gtest/gtest.h>

#include "Rib/RecordingSink.h"

namespace Rib {
namespace {

// Executes and commits a canonical stream as the library would.
void feed(EngineModel& model, std::string_view text) {
  for (RecordedCommand const& record : parseCommandText(text))
    model.apply(record);
}

EngineModel modelOf(std::string_view text) {
  EngineModel model;
  feed(model, text);
  return model;
}

std::vector<std::string> linesOf(std::vector<RecordedCommand> const& records) {
  std::vector<std::string> lines;
  for (RecordedCommand const& r : records)
    lines.push_back(commandLine(r));
  return lines;
}

std::string const seq10 = R"(512 576="R" 577 578=10)";

TEST(EngineModelTest, WritingCreatesTheNodeAndItsAncestorsAndMergesValuesByTag) {
  EngineModel model =
      modelOf("routeMapSeq [" + seq10 + "] 1:flag=true 0:u32=10\n" + "setIntValue [" + seq10 +
              "] 19:u32=5 3:u32=1 3:u32=2\n" + "setIntValue [" + seq10 +
              "] 1:flag=false 19:reset 7:reset\n" + "commit\n");
  EXPECT_EQ(model.stateText(),
            "512\n"
            "  576=\"R\"\n"
            "    577\n"
            "      578=10 0:u32=10 1:flag=false 3:u32=2 (setIntValue)\n");
  EXPECT_EQ(model.nodes(), 4u);
}

TEST(EngineModelTest, ReAddedListEntryKeepsOnlyItsNewValues) {
  std::string const entry = "doAddIpPrefixListEntry [512 603 515=\"P\" 516=5] 9:u32=5 ";
  EngineModel model = modelOf(entry + "8:flag=true 6:u32=8 7:u32=8\ncommit\n" + entry +
                              "8:flag=false 6:u32=16\ncommit\n");
  EXPECT_EQ(model.stateText(),
            "512\n"
            "  603\n"
            "    515=\"P\"\n"
            "      516=5 6:u32=16 8:flag=false 9:u32=5 (doAddIpPrefixListEntry)\n");
}

TEST(EngineModelTest, DeleteRemovesTheNodeAndEverythingBelowItAndNothingElse) {
  EngineModel model = modelOf(
      "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10\n"
      "subRouteMap [512 576=\"R\" 577 578=10 622=\"S\"] 1:str=\"S\"\n"
      "routeMapSeq [512 576=\"R\" 577 578=1] 0:u32=1\n"
      "routeMapSeq [512 576=\"R2\" 577 578=10] 0:u32=10\n"
      "commit\n"
      "deleteRouteMap [512 576=\"R\" 577 578=10] 0:u32=99 delete\n"
      "commit\n");
  std::string const remaining =
      "512\n"
      "  576=\"R\"\n"
      "    577\n"
      "      578=1 0:u32=1 (routeMapSeq)\n"
      "  576=\"R2\"\n"
      "    577\n"
      "      578=10 0:u32=10 (routeMapSeq)\n";
  EXPECT_EQ(model.stateText(), remaining);

  feed(model,
       "deleteAsPathList [512 534=\"/policy/asplist not_a_funny_name\"] delete\n"
       "delCommunityListEntry [512 528 529=\"/policy/commlist L\" 530 531=\".L16\"] delete\n"
       "commit sync\n");
  EXPECT_EQ(model.stateText(), remaining);

  feed(model, "deleteRouteMap [512 576=\"R\"] delete\ncommit\n");
  EXPECT_EQ(model.stateText(),
            "512\n"
            "  576=\"R2\"\n"
            "    577\n"
            "      578=10 0:u32=10 (routeMapSeq)\n");
  EXPECT_EQ(model.nodes(), 4u);
  EXPECT_EQ(model.commits(), 4u);
}

TEST(EngineModelTest, EmptyPathNamesTheRootThatHoldsEverything) {
  EngineModel model = modelOf("mode [] 16:u32=2\nx [602] 0:u32=1\ncommit\n");
  EXPECT_EQ(model.stateText(), "[] 16:u32=2 (mode)\n602 0:u32=1 (x)\n");
  EXPECT_EQ(model.nodes(), 1u);
  feed(model, "wipe [] delete\ncommit\n");
  EXPECT_EQ(model.stateText(), "");
}

TEST(EngineModelTest, CommandsTakeEffectInOrderAtTheNextCommitOfEitherKind) {
  EngineModel model;
  ScopedEngineSink installed(model);
  RibPath path = CogTagArrayIs();
  path->doPushPath(256);
  auto op = CogOpIs("RouteMapSetOpMode", path);
  op->doSetU32(18, 1, 0);
  op->doExecute();
  op->doSetU32(18, 2, 0);  // the engine took a copy: this is the next command
  op->doExecute();
  EXPECT_EQ(model.stateText(), "");
  EXPECT_EQ(linesOf(model.pendingCommands()),
            (std::vector<std::string>{"RouteMapSetOpMode [256] 18:u32=1",
                                      "RouteMapSetOpMode [256] 18:u32=2"}));

  CogCommit::doCommit();
  EXPECT_EQ(model.stateText(), "256 18:u32=2 (RouteMapSetOpMode)\n");
  EXPECT_TRUE(model.pendingCommands().empty());

  op->isDelete = true;
  op->doExecute();
  EXPECT_EQ(model.stateText(), "256 18:u32=2 (RouteMapSetOpMode)\n");
  op->doCommit();
  EXPECT_EQ(model.stateText(), "");
  EXPECT_EQ(model.commits(), 2u);

  op->isDelete = false;
  op->doExecute();
  model.clear();
  EXPECT_EQ(model.stateText(), "");
  EXPECT_TRUE(model.pendingCommands().empty());
  EXPECT_EQ(model.commits(), 0u);
}

TEST(EngineModelTest, StateTextOrdersSiblingsTheSameWhateverTheOrderOfWriting) {
  std::vector<std::string> const commands = {
      "a [1000] 0:u32=1\n",         "a [602 517=\"b\"]\n",
      "a [602 517=\"B\"]\n",        "a [602 517=\"a\" 518=10]\n",
      "a [602 517=\"a\" 518=2]\n",  "a [602 517=7]\n",
      "a [602 516=\"z\"]\n",        "a [602 603]\n",
      "a [602] 2:ip6=::1 1:u8=3\n",
  };
  EngineModel forward;
  EngineModel backward;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    feed(forward, commands[i]);
    feed(backward, commands[commands.size() - 1 - i]);
  }
  feed(forward, "commit\n");
  feed(backward, "commit\n");
  std::string const expected =
      "602 1:u8=3 2:ip6=::1 (a)\n"
      "  603 (a)\n"
      "  516=\"z\" (a)\n"
      "  517=7 (a)\n"
      "  517=\"B\" (a)\n"
      "  517=\"a\"\n"
      "    518=2 (a)\n"
      "    518=10 (a)\n"
      "  517=\"b\" (a)\n"
      "1000 0:u32=1 (a)\n";
  EXPECT_EQ(forward.stateText(), expected);
  EXPECT_EQ(backward.stateText(), expected);
  EXPECT_EQ(forward, backward);
}

TEST(EngineModelTest, DiffShowsChangedLinesBelowTheirUnchangedParents) {
  std::string const common =
      "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10\n"
      "routeMapSeq [512 576=\"R\" 577 578=20] 0:u32=20\n"
      "routeMapSeq [512 576=\"S\" 577 578=1] 0:u32=1\n";
  EngineModel a = modelOf(common +
                          "routeMapSeq [512 576=\"R\" 577 578=20] 0:u32=20 1:flag=true\n"
                          "routeMapSeq [512 576=\"T\" 577 578=1] 0:u32=1\n"
                          "commit\n");
  EngineModel b = modelOf(common +
                          "subRouteMap [512 576=\"R\" 577 578=10 622=\"S\"] 1:str=\"S\"\n"
                          "setIntValue [512 576=\"R\" 577 578=20] 0:u32=20\n"
                          "commit\n");
  EXPECT_NE(a, b);
  EXPECT_EQ(diff(a, b),
            "  512\n"
            "    576=\"R\"\n"
            "      577\n"
            "        578=10 0:u32=10 (routeMapSeq)\n"
            "+         622=\"S\" 1:str=\"S\" (subRouteMap)\n"
            "-       578=20 0:u32=20 1:flag=true (routeMapSeq)\n"
            "+       578=20 0:u32=20 (setIntValue)\n"
            "-   576=\"T\"\n"
            "-     577\n"
            "-       578=1 0:u32=1 (routeMapSeq)\n");
  EXPECT_EQ(diff(a, a), "");
  EXPECT_EQ(diff(EngineModel(), modelOf("x [1]\ncommit\n")), "+ 1 (x)\n");
}

// Hands the stream to a model and a recorder at once.
struct TeeSink final : EngineSink {
  EngineModel model;
  RecordingSink recording;
  void execute(CogOp const& op) override {
    model.execute(op);
    recording.execute(op);
  }
  void commit(CommitKind kind) override {
    model.commit(kind);
    recording.commit(kind);
  }
};

TEST(EngineModelTest, ReplayingTheRecordedStreamBuildsTheSameModel) {
  TeeSink direct;
  {
    ScopedEngineSink installed(direct);
    RibPath set = CogTagArrayIs();
    set->doPushPath(512);
    set->doPushPath(526);
    set->doPushString(527, "/policy/commset .L10");
    auto op = CogOpIs("addCommunitySet", set);
    op->values = CogValueTagArrayIs();
    op->values->doPushString(0, ".L10");
    Orb::U32 const words[] = {1, 2};
    op->values->doPushScalar(2, 2, words);
    op->doExecute();
    CogCommit::doCommit();
    op->values = CogValueTagArrayIs();
    op->values->doPushString(4, "^1:");
    op->doExecute();
    op->doCommit();
    op->isDelete = true;
    op->doExecute();
  }
  EngineModel replayed = modelOf(direct.recording.text());
  EXPECT_EQ(replayed, direct.model) << diff(direct.model, replayed);
  EXPECT_EQ(replayed.pendingCommands(), direct.model.pendingCommands());
  EXPECT_EQ(replayed.stateText(),
            "512\n"
            "  526\n"
            "    527=\"/policy/commset .L10\" 4:str=\"^1:\" (addCommunitySet)\n");
}

}  // namespace
}  // namespace Rib
