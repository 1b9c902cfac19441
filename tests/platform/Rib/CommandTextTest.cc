// The canonical command line: how each piece is written, and that reading a
// line back gives the same record and nothing but canonical text is accepted.
#include "Rib/CommandText.h"

#include <gtest/gtest.h>

namespace Rib {
namespace {

std::string lineOf(CogOp const& op) {
  return commandLine(RecordedCommand::of(op));
}

template <typename Parse>
std::string parseError(Parse parse, std::string_view text) {
  try {
    parse(text);
  } catch (Orb::RangeError const& e) {
    return e.what();
  }
  return "(parsed)";
}

TEST(CommandLineTest, EveryValueKindIsWrittenInPushOrderAndReadsBackAsTheSameRecord) {
  // Quotes, backslashes and bytes outside printable ASCII are escaped, in keys
  // as in values.
  std::string const awkward("q\"b\\n\n\x7f\xff~ \0", 11);
  RibPath path = CogTagArrayIs();
  path->doPushPath(512);
  path->doPushString(576, awkward);
  path->doPushU32(578, 4294967295u);
  auto op = CogOpIs("everyKind", path);
  op->values = CogValueTagArrayIs();
  CogValueTagArray& v = *op->values;
  v.doPushReset(9);
  v.doPushU32(0, 4294967295u);
  v.doPushU8(1, 255);
  v.doPushFlag(2, false);
  v.doPushString(3, awkward);
  v.doPushIpAddr(4, Kiwi::IpAddr(0x0a000001));
  v.doPushIp6Addr(5, Kiwi::Ip6Addr({0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}));
  Orb::U32 numbers[] = {1, 2, 3};
  v.doPushScalar(6, 3, numbers);
  v.doPushScalar(7, 0, nullptr);
  std::string const line =
      R"(everyKind [512 576="q\"b\\n\x0a\x7f\xff~ \x00" 578=4294967295] 9:reset )"
      R"(0:u32=4294967295 1:u8=255 2:flag=false 3:str="q\"b\\n\x0a\x7f\xff~ \x00" )"
      R"(4:ip=10.0.0.1 5:ip6=2001:db8::1:0:0:1 6:u32s=[1,2,3] 7:u32s=[])";
  EXPECT_EQ(lineOf(*op), line);
  EXPECT_EQ(parseCommandLine(line), RecordedCommand::of(*op));
}

TEST(CommandLineTest, MissingPathAndValuesAreEmpty) {
  auto bare = CogOpIs("bare", nullptr);
  bare->isDelete = true;
  EXPECT_EQ(lineOf(*bare), "bare [] delete");
}

TEST(ParseCommandLineTest, LineParseLineIsIdentity) {
  for (std::string const line : {
           "routeMapSeq [512 576=\"R\" 577 578=10] 0:u32=10 1:flag=true",
           R"(s [576="" 0] 0:str="" 1:str="\\")",
           "x [] 0:ip=0.0.0.0 1:ip6=:: 2:reset delete",
           "x []",
           "commit [] 0:u8=0",  // a command that happens to be named commit
           "commit",
           "commit sync",
       }) {
    EXPECT_EQ(commandLine(parseCommandLine(line)), line);
  }
}

TEST(ParseCommandLineTest, RejectsMalformedAndSecondSpellingsSayingWhatAndWhere) {
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
            "expected a value kind (reset, u32, u8, flag, str, ip, ip6 or u32s) at offset 7"},
           {"x [] 0:u32=1x",
            "expected \" \" before a value, \" delete\" or the end of the line at offset 12"},
           {"x [] 0:u8=256", "expected a number from 0 to 255 at offset 10"},
           {"x [] 0:flag=1", "expected true or false at offset 12"},
           {"x [] 0:ip=10.0.1", "expected an IPv4 address at offset 10"},
           {"x [] 0:ip6=2001:db8::g", "expected an IPv6 address at offset 11"},
           {"x [] 0:u32s=[1;2]", "expected \",\" or \"]\" in a number list at offset 14"},
           {"commit sync now", "expected the end of the text at offset 11"},
           {"x [578=010]", "expected the canonical text 10 at offset 7"},
           {R"(x [] 0:str="\x4a")", "expected the canonical text \"J\" at offset 11"},
           {R"(x [] 0:str="\x0A")", "expected the canonical text \"\\x0a\" at offset 11"},
           {"x [] 0:ip6=2001:db8:0:0:0:0:0:1",
            "expected the canonical text 2001:db8::1 at offset 11"},
       }) {
    EXPECT_EQ(parseError(parseCommandLine, c.line), c.error) << c.line;
  }
}

TEST(ParseCommandTextTest, ReadsLinesAndNamesTheFailingOne) {
  EXPECT_EQ(parseCommandText("x [] 0:u32=1\ncommit sync\ncommit\n"),
            (std::vector<RecordedCommand>{parseCommandLine("x [] 0:u32=1"),
                                          RecordedCommand::of(CommitKind::synchronous),
                                          RecordedCommand::of(CommitKind::transaction)}));
  EXPECT_EQ(parseError(parseCommandText, "commit\nx [] 0:flag=no\n"),
            "line 2: expected true or false at offset 12");
  EXPECT_EQ(parseError(parseCommandText, "commit\ncommit"),
            "line 2: expected a line end after the last line");
}

}  // namespace
}  // namespace Rib
