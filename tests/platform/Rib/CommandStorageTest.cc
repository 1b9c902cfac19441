// The storage of commands: what spills past the inline room reads back the
// same, replaced values keep their place, and recycled command objects stay
// correct when reference counting is made thread-safe.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Rib/CommandText.h"
#include "Rib/RecordingSink.h"

namespace Rib {
namespace {

TEST(CommandStorage, PathsAndValuesPastTheInlineRoomReadBackWhole) {
  long const liveBefore = Orb::Object::liveObjects();
  RecordingSink sink;
  ScopedEngineSink installed(sink);
  {
    std::string const longKey(300, 'k');
    std::string const longName(70, 'n');
    RibPath path = CogTagArrayIs();
    for (Orb::U32 i = 0; i < 20; ++i) {
      path->doPushPath(i);
      path->doPushString(100 + i, i == 3 ? std::string_view(longKey) : std::string_view("ab"));
    }
    auto op = CogOpIs(longName, path);
    op->values = CogValueTagArrayIs();
    std::vector<Orb::U32> words(40);
    for (Orb::U32 i = 0; i < words.size(); ++i)
      words[i] = i * 7;
    for (Orb::U32 i = 0; i < 10; ++i)
      op->values->doPushString(i, std::string(i * 13, char('a' + i)));
    op->values->doPushScalar(10, static_cast<Orb::U32>(words.size()), words.data());
    op->values->doPushIp6Addr(11, Kiwi::Ip6Addr(Kiwi::Ip6Addr::Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10,
                                                                     11, 12, 13, 14, 15, 16}));
    op->doExecute();

    RecordedCommand const& r = sink.records().at(0);
    EXPECT_EQ(r.name.str(), longName);
    ASSERT_EQ(r.path.size(), 40u);
    EXPECT_EQ(r.path[7].text.str(), longKey);
    EXPECT_EQ(r.path[39].tag, 119u);
    ASSERT_EQ(r.values.size(), 12u);
    EXPECT_EQ(std::get<Orb::String>(r.values[9].data).str(), std::string(117, 'j'));
    EXPECT_EQ(std::get<U32s>(r.values[10].data), words);
    EXPECT_EQ(std::get<Kiwi::Ip6Addr>(r.values[11].data).bytes()[15], 16);
    // The text form reads back to the same record.
    EXPECT_EQ(parseCommandLine(commandLine(r)), r);
  }
  EXPECT_EQ(Orb::Object::liveObjects(), liveBefore);
}

TEST(CommandStorage, SetValueReplacesInPlaceAndDropsLaterDuplicates) {
  auto op = CogOpIs("op", CogTagArrayIs());
  op->values = CogValueTagArrayIs();
  op->values->doPushU32(1, 10);
  op->values->doPushString(2, "two");
  op->values->doPushU32(1, 11);
  op->values->doPushFlag(3, true);
  op->doSetU32(1, 99, 0);
  op->doSetU32(4, 5, 0);
  EXPECT_EQ(commandLine(RecordedCommand::of(*op)),
            "op [] 1:u32=99 2:str=\"two\" 3:flag=true 4:u32=5");
}

// With thread-safe counting on, command objects bypass the single-threaded
// free lists: threads that build, share and drop commands at once must leave
// exact counts and no object behind.
TEST(CommandStorage, CommandsMadeAndDroppedOnSeveralThreadsWithThreadSafeCounting) {
  long const liveBefore = Orb::Object::liveObjects();
  Orb::threadSafePtrsIs(true);
  {
    RibPath shared = CogTagArrayIs();
    shared->doPushPath(512);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&shared, t] {
        for (int i = 0; i < 20000; ++i) {
          auto op = CogOpIs("routeMapSeq", shared);
          op->values = CogValueTagArrayIs();
          op->values->doPushU32(0, static_cast<Orb::U32>(t * i));
          RibPath own = CogTagArrayIs();
          own->doPushString(576, "R");
          auto second = CogOpIs("routeMap", own);
        }
      });
    }
    for (auto& thread : threads)
      thread.join();
    EXPECT_EQ(shared->references(), 1u);
  }
  Orb::threadSafePtrsIs(false);
  EXPECT_EQ(Orb::Object::liveObjects(), liveBefore);
}

}  // namespace
}  // namespace Rib
