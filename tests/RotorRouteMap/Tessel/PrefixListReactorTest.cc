// The prefix-list side of the list reactor: list nodes before entries, entry
// changes batched until the list's version, removal without per-entry deletes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Harness.h"
#include "Orb/HashMap.h"
#include "Tessel/AclListConfigSm.h"

namespace {

using Acl::Ipv6PrefixList;
using Acl::PrefixList;

PrefixList::Entry entry(Orb::U32 seqno, char const* prefix, Orb::U32 ge = 0, Orb::U32 le = 0,
                        Acl::MatchPermit action = Acl::permit) {
  return {seqno, action, Kiwi::Prefix::fromString(prefix), ge, le};
}

std::string listPath(std::string const& id) {
  return "512 603 515=\"" + id + "\"";
}
std::string addList(std::string const& name, char const* op = "doAddIpPrefixList") {
  return std::string(op) + " [" + listPath(name) + "] 0:str=\"" + name + "\"\n";
}
std::string addEntry(std::string const& id, Orb::U32 seqno, std::string const& rest,
                     char const* op = "doAddIpPrefixListEntry") {
  return std::string(op) + " [" + listPath(id) + " 516=" + std::to_string(seqno) +
         "] 9:u32=" + std::to_string(seqno) + " " + rest + "\n";
}
/// The stream with the commands of each committed batch sorted: a version
/// sends its entries in the order of a hash set, which is the engine's
/// business, not the test's.
std::string batchesSorted(std::string const& text) {
  std::string out;
  std::vector<std::string> batch;
  std::string::size_type from = 0;
  while (from < text.size()) {
    auto to = text.find('\n', from);
    std::string line = text.substr(from, to - from + 1);
    from = to + 1;
    if (line != "commit\n") {
      batch.push_back(line);
      continue;
    }
    std::sort(batch.begin(), batch.end());
    for (auto const& l : batch)
      out += l;
    out += line;
    batch.clear();
  }
  for (auto const& l : batch)
    out += l;
  return out;
}

class PrefixListReactorTest : public TesselTest::RootTest {
 protected:
  PrefixListReactorTest() {
    giveAllInputs();
    sent();
  }
  Tessel::AclListConfigSm* sm() const { return root->vrfStatusSm()->aclListConfigSm(); }
  /// A list P with entries 10, 20 and 30, already sent.
  Orb::Ptr<PrefixList> sentList() {
    auto list = aclListConfig->prefixListIs("P");
    list->prefixEntryIs(entry(10, "10.0.0.0/8"));
    list->prefixEntryIs(entry(20, "10.1.0.0/16"));
    list->prefixEntryIs(entry(30, "10.2.0.0/16"));
    list->versionInc();
    sent();
    return list;
  }
};

// The streams of entry batches, both families and removal are pinned by the
// golden prefix-list scenarios.
TEST_F(PrefixListReactorTest, RemovedListTakesItsReactor) {
  auto list = sentList();
  aclListConfig->prefixListDel("P");
  sent();
  EXPECT_EQ(nullptr, sm()->orbPrefixList("P"));
  EXPECT_NE(std::string::npos, trace.text.find("\n1 Del prefix-list P"));
  list->versionInc();
  EXPECT_EQ("", sent()) << "the retired reactor no longer watches the list";
}

TEST_F(PrefixListReactorTest, ExistingListsAreReplayedWhenAnInputComesBack) {
  auto list = sentList();
  // Not yet versioned, and the highest number: the replay's walk ends there.
  list->prefixEntryIs(entry(4294967295u, "10.4.0.0/16"));
  aclListConfig->ipv6PrefixListIs("A");
  sent();
  root->aclConfigIs(nullptr);
  EXPECT_EQ("", sent());
  root->aclConfigIs(aclConfig);
  std::string const expected =
      addList("P") + "commit\n" + addList(".ipv6.A", "doAddIpv6PrefixList") + "commit\n" +
      batchesSorted(addEntry("P", 10, "8:flag=true 0:ip=10.0.0.0 2:u32=8 6:u32=8 7:u32=8") +
                    addEntry("P", 20, "8:flag=true 0:ip=10.1.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    addEntry("P", 30, "8:flag=true 0:ip=10.2.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    addEntry("P", 4294967295u,
                             "8:flag=true 0:ip=10.4.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    "commit\n") +
      "commit\n" + "commit\n";  // the AS-path lists, sent at initialization
  std::string const stream = sent();
  // The route-map reactor's mode comes first.
  auto const at = stream.find("doAddIpPrefixList");
  ASSERT_NE(std::string::npos, at) << stream;
  EXPECT_EQ(expected, batchesSorted(stream.substr(at)));
}

TEST_F(PrefixListReactorTest, ReplayWalkGoesOnAboveItsPlaceWhenTheListChangesUnderIt) {
  auto list = sentList();
  root->aclConfigIs(nullptr);
  sent();
  // Whoever hears the replay note entry 10 removes that very entry and adds
  // one below and one above it.
  struct Meddler final : Orb::TraceSink {
    Orb::Ptr<PrefixList> list;
    bool done = false;
    void traceLine(int, std::string_view, int, std::string_view line) override {
      if (done || line.find("handlePrefixEntry(U32 seqno) name: P seqno: 10") == line.npos) return;
      done = true;
      list->prefixEntryDel(10);
      list->prefixEntryIs(entry(5, "10.5.0.0/16"));
      list->prefixEntryIs(entry(15, "10.6.0.0/16"));
    }
  } meddler;
  meddler.list = list;
  Orb::traceSinkIs(&meddler);
  root->aclConfigIs(aclConfig);
  Orb::traceSinkIs(&trace);
  ASSERT_TRUE(meddler.done);
  std::string const stream = sent();
  auto const at = stream.find("doAddIpPrefixList ");
  ASSERT_NE(std::string::npos, at) << stream;
  EXPECT_EQ(addList("P") + "commit\n" +
                batchesSorted(
                    addEntry("P", 15, "8:flag=true 0:ip=10.6.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    addEntry("P", 20, "8:flag=true 0:ip=10.1.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    addEntry("P", 30, "8:flag=true 0:ip=10.2.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    addEntry("P", 5, "8:flag=true 0:ip=10.5.0.0 2:u32=16 6:u32=16 7:u32=16") +
                    "doDelIpPrefixListEntry [" + listPath("P") + " 516=10] delete\n" + "commit\n"),
            batchesSorted(stream.substr(
                at, stream.find("commit\n", stream.find("commit\n", at) + 1) + 7 - at)));
}

// Large batches are looked up in key order (by a radix sort above 32,768
// numbers, by a walk or by searches below); the engine must still get every
// noted number once, in the set's own order, with the entry as it is now.
TEST_F(PrefixListReactorTest, LargeBatchesSendEveryNumberInTheSetsOrder) {
  constexpr Orb::U32 kEntries = 40000;
  auto list = aclListConfig->prefixListIs("P");
  auto entryOf = [](Orb::U32 seqno, Orb::U32 le) {
    return PrefixList::Entry{seqno, Acl::permit, Kiwi::Prefix(Kiwi::IpAddr(seqno << 8), 24), 0, le};
  };
  // The batch's expected stream: one add or delete per number, in the order
  // a set of those numbers iterates.
  auto expected = [&](std::vector<Orb::U32> const& numbers) {
    Orb::HashMap<Orb::U32, bool> set;
    for (Orb::U32 n : numbers)
      set.set(n, true);
    std::vector<std::string> lines;
    for (auto const& [seqno, modified] : set) {
      auto const* e = list->prefixEntry(seqno);
      lines.push_back(e ? "add " + std::to_string(seqno) + " le " + std::to_string(e->le)
                        : "del " + std::to_string(seqno));
    }
    return lines;
  };
  auto actual = [&] {
    std::vector<std::string> lines;
    for (Rib::RecordedCommand const& r : engine.records()) {
      if (r.kind != Rib::RecordedCommand::Kind::command ||
          r.name.view().find("Entry") == r.name.view().npos)
        continue;
      std::string const seqno = std::to_string(r.path.back().number);
      lines.push_back(r.isDelete ? "del " + seqno
                                 : "add " + seqno + " le " +
                                       std::to_string(std::get<Orb::U32>(r.values.back().data)));
    }
    engine.clear();
    return lines;
  };

  // Numbers up to 280,000, so both 16-bit halves of a number matter.
  std::vector<Orb::U32> all;
  for (Orb::U32 seqno = 7; seqno <= 7 * kEntries; seqno += 7) {
    list->prefixEntryIs(entryOf(seqno, 25));
    all.push_back(seqno);
  }
  list->versionInc();  // 40,000 numbers: radix sort and walk
  EXPECT_EQ(expected(all), actual());

  std::vector<Orb::U32> some;  // 310 numbers: a search each
  for (Orb::U32 seqno = 700; seqno <= 210000; seqno += 700) {
    list->prefixEntryIs(entryOf(seqno, 26));
    some.push_back(seqno);
  }
  for (Orb::U32 seqno = 35; seqno <= 665; seqno += 70) {
    list->prefixEntryDel(seqno);
    some.push_back(seqno);
  }
  list->versionInc();
  EXPECT_EQ(expected(some), actual());

  std::vector<Orb::U32> many;  // 12,000 numbers, some removed: a walk
  for (Orb::U32 seqno = 21; seqno <= 252000; seqno += 21) {
    if (seqno % 2 == 0) {
      list->prefixEntryDel(seqno);
    } else {
      list->prefixEntryIs(entryOf(seqno, 27));
    }
    many.push_back(seqno);
  }
  list->versionInc();
  EXPECT_EQ(expected(many), actual());
}

TEST_F(PrefixListReactorTest, PausedListReactorPausesItsListReactors) {
  auto list = sentList();
  sm()->hasNotificationActiveIs(false);
  EXPECT_FALSE(sm()->orbPrefixList("P")->hasNotificationActive());
  list->prefixEntryIs(entry(40, "10.4.0.0/16"));
  list->versionInc();
  aclListConfig->prefixListIs("Q");
  EXPECT_EQ("", sent());
  sm()->hasNotificationActiveIs(true);
  EXPECT_TRUE(sm()->orbPrefixList("P")->hasNotificationActive());
}

}  // namespace
