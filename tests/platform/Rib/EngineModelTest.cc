// What the engine model makes of a command stream: the tree it builds, when
// commands take effect, how values merge, are replaced or go, and how two
// models are printed and compared.
#include "Rib/EngineModel.h"

#include <gtest/gtest.h>

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

TEST(EngineModelTest, WritingCreatesBareAncestorsAndMergesValuesByTag) {
  EngineModel model = modelOf(
      "routeMapSeq [512 576=\"R\" 577 578=10] 1:flag=true 0:u32=10\n"
      "setIntValue [512 576=\"R\" 577 578=10] 19:u32=5 3:u32=1 3:u32=2\n"
      "setIntValue [512 576=\"R\" 577 578=10] 1:flag=false 19:reset 7:reset\n"
      "commit\n");
  EXPECT_EQ(model.stateText(),
            "512\n"
            "  576=\"R\"\n"
            "    577\n"
            "      578=10 0:u32=10 1:flag=false 3:u32=2 (setIntValue)\n");
  EXPECT_EQ(model.nodes(), 4u);

  // The root is a node like any other, but only when written, and not counted.
  model = modelOf("mode [] 16:u32=2\nx [602] 0:u32=1\ncommit\n");
  EXPECT_EQ(model.stateText(), "[] 16:u32=2 (mode)\n602 0:u32=1 (x)\n");
  EXPECT_EQ(model.nodes(), 1u);
  feed(model, "wipe [] delete\ncommit\n");
  EXPECT_EQ(model.stateText(), "");
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

TEST(EngineModelTest, DeleteTakesTheSubtreeAndTheContainersItLeavesEmpty) {
  // R comes into being as an ancestor and is written afterwards; R2 never is.
  EngineModel model = modelOf(
      "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10\n"
      "subRouteMap [512 576=\"R\" 577 578=10 622=\"S\"] 1:str=\"S\"\n"
      "routeMap [512 576=\"R\"] 0:str=\"R\"\n"
      "routeMapSeq [512 576=\"R\" 577 578=1] 0:u32=1\n"
      "ExtCommSetLinkBwOpts [512 576=\"R2\" 577 578=10 601] 29:reset\n"
      "x [1 2]\n"
      "y [1 2 3] 0:u32=1\n"
      "commit\n");
  std::string const x = "1\n  2 (x)\n";
  std::string const r = "512\n  576=\"R\" 0:str=\"R\" (routeMap)\n";
  std::string const seq1 = "    577\n      578=1 0:u32=1 (routeMapSeq)\n";
  std::string const seq10 =
      "      578=10 0:u32=10 (routeMapSeq)\n        622=\"S\" 1:str=\"S\" (subRouteMap)\n";
  std::string const r2 =
      "  576=\"R2\"\n    577\n      578=10\n        601 (ExtCommSetLinkBwOpts)\n";
  struct Step {
    char const* deletes;
    std::string state;
  };
  Step const steps[] = {
      {"d [1 2 3] delete\n", x + r + seq1 + seq10 + r2},
      // Values on a delete mean nothing; deleting what is not there does nothing.
      {"d [512 576=\"R\" 577 578=10] 0:u32=99 delete\nd [512 534=\"A\"] delete\n"
       "d [512 576=\"R\" 577 578=7] delete\nd [7 8] delete\n",
       x + r + seq1 + r2},
      {"d [512 576=\"R2\" 577 578=10] delete\n", x + r + seq1},
      {"d [512 576=\"R\" 577 578=1] delete\n", x + r},
      {"d [512 576=\"R\"] delete\n", x},
  };
  for (Step const& step : steps) {
    feed(model, std::string(step.deletes) + "commit\n");
    EXPECT_EQ(model.stateText(), step.state) << step.deletes;
  }
  // A node written again after its container went brings the container back,
  // bare, and it goes again with it.
  feed(model,
       "routeMapSeq [512 576=\"R\" 577 578=1]\ncommit\nd [512 576=\"R\" 577 578=1] delete\n"
       "commit\n");
  EXPECT_EQ(model.stateText(), x);
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
  EXPECT_EQ(model.pendingCommands().size(), 2u);

  CogCommit::doCommit();
  EXPECT_EQ(model.stateText(), "256 18:u32=2 (RouteMapSetOpMode)\n");
  EXPECT_TRUE(model.pendingCommands().empty());

  op->isDelete = true;
  op->doExecute();
  EXPECT_EQ(model.stateText(), "256 18:u32=2 (RouteMapSetOpMode)\n");
  op->doCommit();
  EXPECT_EQ(model.stateText(), "");
  EXPECT_EQ(model.commits(), 2u);

  op->doExecute();
  model.clear();
  EXPECT_TRUE(model.pendingCommands().empty());
  EXPECT_EQ(model.commits(), 0u);
}

TEST(EngineModelTest, StateTextOrdersSiblingsTheSameWhateverTheOrderOfWriting) {
  auto const records = parseCommandText(
      "a [1000] 0:u32=1\na [602 517=\"b\"]\na [602 517=\"B\"]\na [602 517=\"a\" 518=10]\n"
      "a [602 517=\"a\" 518=2]\na [602 517=7]\na [602 516=\"z\"]\na [602 603]\n"
      "a [602] 2:ip6=::1 1:u8=3\ncommit\n");
  EngineModel forward;
  EngineModel backward;
  for (std::size_t i = 0; i < records.size(); ++i) {
    forward.apply(records[i]);
    backward.apply(records[records.size() - 1 - i]);  // the commit comes first
  }
  backward.commit(CommitKind::transaction);
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

TEST(EngineModelTest, ModelsCompareByValuesAndWrittenNodesNotByTheLastWriter) {
  EngineModel const a = modelOf("routeMapSeq [1 2] 0:u32=1\ncommit\n");
  EngineModel const b = modelOf("setIntValue [1 2] 0:u32=1\ncommit\n");
  EXPECT_EQ(a, b);
  EXPECT_EQ(diff(a, b), "");
  EXPECT_TRUE(changedNodes(a, b).empty());

  // A written container outlives its children; a bare one does not.
  EngineModel const written = modelOf("x [1]\nrouteMapSeq [1 2] 0:u32=1\ncommit\n");
  EXPECT_NE(a, written);
  EXPECT_EQ(diff(a, written), "- 1\n+ 1 (x)\n");
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
  EXPECT_EQ(diff(EngineModel(), modelOf("x [1]\ncommit\n")), "+ 1 (x)\n");
}

}  // namespace
}  // namespace Rib
