// The canonical command line: how each piece is written, and that reading a
// line back gives the same record and nothing but canonical text is accepted.
#include "Rib/CommandText.h"

#include <gtest/gtest.h>

namespace Rib {
namespace {

// path: 512 576="R" 577 578=10, the shape of a route map sequence
RibPath sequencePath(Orb::String map, Orb::U32 seq) {
  RibPath path = CogTagArrayIs();
  path->doPushPath(512);
  path->doPushString(576, std::move(map));
  path->doPushPath(577);
  path->doPushU32(578, seq);
  return path;
}

Orb::Ptr<CogOp> opWithValues(Orb::String name, RibPath path) {
  auto op = CogOpIs(std::move(name), std::move(path));
  op->values = CogValueTagArrayIs();
  return op;
}

// One value of every kind, in an order different from the variant's.
Orb::Ptr<CogOp> everyKind() {
  auto op = opWithValues("everyKind", sequencePath("M", 4294967295u));
  CogValueTagArray& v = *op->values;
  v.doPushReset(9);
  v.doPushU32(0, 4294967295u);
  v.doPushU8(1, 255);
  v.doPushFlag(2, false);
  v.doPushString(3, "x y");
  v.doPushIpAddr(4, Kiwi::IpAddr(0x0a000001));
  v.doPushIp6Addr(5, Kiwi::Ip6Addr({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}));
  Orb::U32 numbers[] = {1, 2, 3};
  v.doPushScalar(6, 3, numbers);
  v.doPushScalar(7, 0, nullptr);
  return op;
}

std::string const everyKindLine =
    "everyKind [512 576=\"M\" 577 578=4294967295] 9:reset 0:u32=4294967295 1:u8=255 "
    "2:flag=false 3:str=\"x y\" 4:ip=10.0.0.1 5:ip6=2001:db8::1:0:0:1 6:u32s=[1,2,3] 7:u32s=[]";

std::string parseError(std::string_view line) {
  try {
    parseCommandLine(line);
  } catch (Orb::RangeError const& e) {
    return e.what();
  }
  return "(parsed)";
}

TEST(CommandLineTest, WritesLibraryCommands) {
  auto seq = opWithValues("routeMapSeq", sequencePath("R", 10));
  seq->values->doPushU32(0, 10);
  seq->values->doPushFlag(1, true);
  EXPECT_EQ(commandLine(RecordedCommand::of(*seq)),
            "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true");

  RibPath mapPath = CogTagArrayIs();
  mapPath->doPushPath(512);
  mapPath->doPushString(576, "R");
  auto del = CogOpIs("deleteRouteMap", mapPath);
  del->isDelete = true;
  EXPECT_EQ(commandLine(RecordedCommand::of(*del)), "deleteRouteMap [512 576=\"R\"] delete");

  RibPath communityPath = sequencePath("M", 1);
  communityPath->doPushPath(601);
  auto bytes = opWithValues("setStrValue", communityPath);
  bytes->values->doPushString(18, Orb::String(std::string("\x01\0\0\0", 4)));
  EXPECT_EQ(commandLine(RecordedCommand::of(*bytes)),
            "setStrValue [512 576=\"M\" 577 578=1 601] 18:str=\"\\x01\\x00\\x00\\x00\"");
}

TEST(CommandLineTest, WritesEveryValueKindInPushOrder) {
  EXPECT_EQ(commandLine(RecordedCommand::of(*everyKind())), everyKindLine);
}

TEST(CommandLineTest, EscapesQuotesBackslashesAndBinaryBytesInKeysAndValues) {
  std::string const awkward("q\"b\\n\n\x7f\xff~ \0", 11);
  RibPath path = CogTagArrayIs();
  path->doPushString(576, awkward);
  auto op = opWithValues("s", path);
  op->values->doPushString(0, awkward);
  std::string const quoted = R"("q\"b\\n\x0a\x7f\xff~ \x00")";
  EXPECT_EQ(commandLine(RecordedCommand::of(*op)), "s [576=" + quoted + "] 0:str=" + quoted);
}

TEST(CommandLineTest, EmptyOrMissingPathAndValues) {
  auto bare = CogOpIs("bare", nullptr);
  EXPECT_EQ(commandLine(RecordedCommand::of(*bare)), "bare []");
  bare->isDelete = true;
  EXPECT_EQ(commandLine(RecordedCommand::of(*bare)), "bare [] delete");

  auto op = opWithValues("clear", CogTagArrayIs());
  op->values->doPushReset(3);
  op->isDelete = true;
  EXPECT_EQ(commandLine(RecordedCommand::of(*op)), "clear [] 3:reset delete");
}

TEST(CommandLineTest, Commits) {
  EXPECT_EQ(commandLine(RecordedCommand::of(CommitKind::transaction)), "commit");
  EXPECT_EQ(commandLine(RecordedCommand::of(CommitKind::synchronous)), "commit sync");
}

TEST(ParseCommandLineTest, ReadsBackTheSameRecord) {
  RecordedCommand const every = RecordedCommand::of(*everyKind());
  EXPECT_EQ(parseCommandLine(everyKindLine), every);
  EXPECT_EQ(parseCommandLine("commit"), RecordedCommand::of(CommitKind::transaction));
  EXPECT_EQ(parseCommandLine("commit sync"), RecordedCommand::of(CommitKind::synchronous));
}

TEST(ParseCommandLineTest, LineParseLineIsIdentity) {
  for (std::string const& line : {
           everyKindLine,
           std::string("routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true"),
           std::string(R"(s [576="q\"b\\n\x0a\x7f\xff~ \x00" 0] 0:str="" 1:str="\\")"),
           std::string("deleteRouteMap [512 576=\"R\"] delete"),
           std::string("x [] 0:ip=0.0.0.0 1:ip6=:: 2:reset delete"),
           std::string("x []"),
           std::string("commit [] 0:u8=0"),  // a command that happens to be named commit
           std::string("commit"),
           std::string("commit sync"),
       }) {
    EXPECT_EQ(commandLine(parseCommandLine(line)), line);
  }
}

TEST(ParseCommandLineTest, RejectsMalformedTextSayingWhatAndWhere) {
  struct Case {
    std::string line;
    std::string error;
  };
  for (Case const& c : std::initializer_list<Case>{
           {"", "expected a command name at offset 0"},
           {"x", "expected \" [\" at offset 1"},
           {"x [512", "expected \" \" or \"]\" after a path element at offset 6"},
           {"x [512=\"R]", "expected a closing quote at offset 7"},
           {"x []  0:u32=1", "expected a decimal number at offset 5"},
           {"x [] 0:u64=1",
            "expected a value kind (reset, u32, u8, flag, str, ip, ip6 or u32s) "
            "at offset 7"},
           {"x [] 0:u32=1x",
            "expected \" \" before a value, \" delete\" or the end of the line "
            "at offset 12"},
           {"x [] 0:u8=256", "expected a number from 0 to 255 at offset 10"},
           {"x [] 0:flag=1", "expected true or false at offset 12"},
           {"x [] 0:ip=10.0.1", "expected an IPv4 address at offset 10"},
           {"x [] 0:ip6=2001:db8::g", "expected an IPv6 address at offset 11"},
           {"x [] 0:u32s=[1;2]", "expected \",\" or \"]\" in a number list at offset 14"},
           {"x [] delete 0:u32=1", "expected the end of the text at offset 11"},
           {"commit sync now", "expected the end of the text at offset 11"},
       }) {
    EXPECT_EQ(parseError(c.line), c.error) << c.line;
  }
}

TEST(ParseCommandLineTest, RejectsSecondSpellingsOfTheSameValue) {
  EXPECT_EQ(parseError("x [578=010]"), "expected the canonical text 10 at offset 7");
  EXPECT_EQ(parseError("x [] 0:u32=-0"), "expected the canonical text 0 at offset 11");
  EXPECT_EQ(parseError(R"(x [] 0:str="\x4a")"), "expected the canonical text \"J\" at offset 11");
  EXPECT_EQ(parseError(R"(x [] 0:str="\x0A")"),
            "expected the canonical text \"\\x0a\" at offset 11");
  EXPECT_EQ(parseError("x [] 0:ip6=2001:DB8::1"),
            "expected the canonical text 2001:db8::1 at offset 11");
  EXPECT_EQ(parseError("x [] 0:ip6=2001:db8:0:0:0:0:0:1"),
            "expected the canonical text 2001:db8::1 at offset 11");
}

TEST(ParseCommandTextTest, ReadsLinesAndNamesTheFailingOne) {
  auto records = parseCommandText("x [] 0:u32=1\ncommit sync\ncommit\n");
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(commandLine(records[0]) + "|" + commandLine(records[1]) + "|" + commandLine(records[2]),
            "x [] 0:u32=1|commit sync|commit");
  EXPECT_TRUE(parseCommandText("").empty());

  auto error = [](std::string_view text) {
    try {
      parseCommandText(text);
    } catch (Orb::RangeError const& e) {
      return std::string(e.what());
    }
    return std::string("(parsed)");
  };
  EXPECT_EQ(error("commit\nx [] 0:flag=no\n"), "line 2: expected true or false at offset 12");
  EXPECT_EQ(error("commit\ncommit"), "line 2: expected a line end after the last line");
}

}  // namespace
}  // namespace Rib
