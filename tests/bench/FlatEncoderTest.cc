// The flat-encoder yardstick: it encodes commands only, every field of them,
// into exactly the room it set aside, and its allocating variant allocates
// once per command; the recording helper sees what the library sends.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AllocCounter.h"
#include "FlatEncoder.h"
#include "PerCommand.h"
#include "Rib/CogOp.h"

namespace {

using Rib::RecordedCommand;

RecordedCommand command(char const* line) {
  return Rib::parseCommandLine(line);
}

constexpr char const* kBase =
    R"(routeMapSeq [512 576="R" 578=10] 0:u32=10 1:u8=2 2:flag=true 3:str="x" )"
    R"(4:ip=10.0.0.1 5:ip6=2001:db8::1 6:u32s=[1,2,3] 7:reset)";

/// The bytes of `line` encoded alone.
std::vector<unsigned char> encoded(char const* line) {
  Bench::FlatEncoder encoder({command(line)});
  std::size_t const n = encoder.encode(0, 1);
  return {encoder.data(), encoder.data() + n};
}

TEST(FlatEncoder, EncodesCommandsAndDropsCommits) {
  Bench::FlatEncoder encoder(
      {command(kBase), RecordedCommand::of(Rib::CommitKind::transaction), command("x [] delete")});
  EXPECT_EQ(encoder.commands(), 2u);
  EXPECT_EQ(encoder.encode(0, 2), encoder.bytes());
  EXPECT_EQ(encoder.encode(1, 2) + encoder.encode(0, 1), encoder.bytes());
}

TEST(FlatEncoder, EveryFieldOfACommandReachesTheBytes) {
  std::vector<unsigned char> const base = encoded(kBase);
  // Each variant changes one field of the base command and nothing else.
  std::string const b = kBase;
  auto variant = [&](std::string const& from, std::string const& to) {
    std::string line = b;
    line.replace(line.find(from), from.size(), to);
    return line;
  };
  for (std::string const& line : {
           variant("routeMapSeq", "routeMapSeX"),
           variant("[512", "[513"),
           variant("576=\"R\"", "577=\"R\""),
           variant("\"R\"", "\"S\""),
           variant("578=10", "578=11"),
           variant("0:u32=10", "0:u32=11"),
           variant("1:u8=2", "1:u8=3"),
           variant("flag=true", "flag=false"),
           variant("\"x\"", "\"y\""),
           variant("10.0.0.1", "10.0.0.2"),
           variant("db8::1", "db8::2"),
           variant("[1,2,3]", "[1,2,4]"),
           variant("7:reset", "8:reset"),
           b + " delete",
       }) {
    EXPECT_NE(encoded(line.c_str()), base) << line;
  }
}

TEST(FlatEncoder, AllocatedVariantAllocatesOncePerCommand) {
  Bench::FlatEncoder encoder({command(kBase), command("x [] 0:u32=1"), command("y [1] delete")});
  Bench::AllocCounter counter;
  std::size_t const written = encoder.encodeEachAllocated(0, 3);
  counter.pause();
  EXPECT_EQ(written, encoder.bytes());
  EXPECT_EQ(counter.stats().allocs, 3u);
  EXPECT_EQ(counter.stats().frees, 3u);
  EXPECT_EQ(counter.stats().bytes, encoder.bytes());
}

TEST(Yardstick, RecordsWhatIsSentAndTimesBothEncoders) {
  auto const records = Bench::recordingOf([] {
    for (Orb::U32 i = 0; i < 3; ++i) {
      auto op = Rib::CogOpIs("probe", Rib::CogTagArrayIs());
      op->doSetU32(0, i, 0);
      op->doExecute();
    }
    Rib::CogCommit::doCommit();
  });
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(Rib::commandLine(records[2]), "probe [] 0:u32=2");
  Bench::Yardstick const y = Bench::yardstickOf(records);
  EXPECT_EQ(y.commands, 3u);
  EXPECT_GT(y.flatNs, 0);
  EXPECT_GT(y.mallocNs, 0);
}

}  // namespace
