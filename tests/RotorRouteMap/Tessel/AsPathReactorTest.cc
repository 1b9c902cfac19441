// The AS-path side of the list reactor: entries sent as they come and
// committed at the version, lists withdrawn whole while an entry is invalid
// under the current mode, and mode changes that pass through an engine
// without AS-path lists.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "Harness.h"
#include "Tessel/AclListConfigSm.h"

namespace {

using Acl::AsPathEntry;
using Acl::AsPathList;
using ::testing::HasSubstr;

std::string listPath(std::string const& name) {
  return "512 534 535=\"/policy/asplist " + name + "\"";
}
std::string addList(std::string const& name) {
  return "addAsPathList [" + listPath(name) + "] 0:str=\"" + name + "\"\n";
}
std::string delList(std::string const& name) {
  return "deleteAsPathList [" + listPath(name) + "] delete\n";
}
std::string entryPath(std::string const& name, Orb::U32 seqno) {
  return listPath(name) + " 536 537=\"" + std::to_string(seqno) + "/asplist/entry\"";
}
/// A permit entry of origin igp, as `entry` makes them.
std::string addEntry(std::string const& name, Orb::U32 seqno) {
  return "addAsPathListEntry [" + entryPath(name, seqno) + "] 0:u32=" + std::to_string(seqno) +
         " 1:str=\"_" + std::to_string(seqno) + "_\" 2:u32=257 3:flag=true\n";
}
std::string delEntry(std::string const& name, Orb::U32 seqno) {
  return "delAsPathListEntry [" + entryPath(name, seqno) + "] delete\n";
}
std::string const syncCommit = delList("not_a_funny_name") + "commit sync\n";
std::string const commit = "commit\n";

/// A permit entry matching "_SEQNO_", with its validity under modes 0 and 1.
AsPathEntry entry(Orb::U32 seqno, bool valid0 = true, bool valid1 = true) {
  std::string regex = "_";
  regex += std::to_string(seqno);
  regex += '_';
  return {seqno, regex, Acl::permit, Acl::originIgp, valid0, valid1};
}

class AsPathReactorTest : public TesselTest::RootTest {
 protected:
  AsPathReactorTest() {
    giveAllInputs();
    sent();
  }
  Tessel::AclListConfigSm* sm() const { return root->vrfStatusSm()->aclListConfigSm(); }
  Tessel::OrbPathList* reactor(char const* name) const { return sm()->orbPathList(name); }
  /// The trace lines since the last call, without the command operations'.
  std::string reactorTrace() {
    std::string out;
    std::size_t at = 0;
    while (at < trace.text.size()) {
      std::size_t const end = std::min(trace.text.find('\n', at + 1), trace.text.size());
      std::string const line = trace.text.substr(at, end - at);
      if (line.find("Tessel::Cog::") == std::string::npos) out += line;
      at = end;
    }
    trace.text.clear();
    return out;
  }
  /// A list with valid entries of these numbers, sent and committed.
  Orb::Ptr<AsPathList> sentList(char const* name, std::initializer_list<Orb::U32> seqnos) {
    auto list = aclListConfig->asPathListIs(name);
    for (Orb::U32 s : seqnos)
      list->pathEntryIs(entry(s));
    list->versionInc();
    sent();
    return list;
  }
  /// List A with entries 10 and 20, deactivated by entry 15 (invalid under
  /// mode 0).
  Orb::Ptr<AsPathList> deactivatedList() {
    auto list = sentList("A", {10, 20});
    list->pathEntryIs(entry(15, false));
    sent();
    return list;
  }
};

// The streams of entries, versions and removals are pinned by the golden
// as-path scenarios.
TEST_F(AsPathReactorTest, ListsAreTracedAndTheirReactorGoesWithThem) {
  sentList("A", {10});
  aclListConfig->asPathListDel("A");
  EXPECT_THAT(trace.text, HasSubstr("\n8 Add as-path A\n"));
  EXPECT_THAT(trace.text, HasSubstr("\n1 Delete as-path A\n"));
  EXPECT_EQ(nullptr, reactor("A"));
}

TEST_F(AsPathReactorTest, InvalidEntryWithdrawsTheListUntilTheLastInvalidEntryGoes) {
  auto list = sentList("A", {10, 20});
  trace.text.clear();
  list->pathEntryIs(entry(15, false));
  EXPECT_EQ(delEntry("A", 10) + delEntry("A", 15) + delEntry("A", 20) + commit, sent());
  EXPECT_EQ(
      "\n8 void Tessel::OrbPathList::handlePathEntry(U32 seqno) seqno: 15"
      "\n8 adding as-path entry to an invalid ACL: seqno: 15 as-path-list:A"
      "\n1 Deactivate as-path ACL: A"
      "\n1 void Tessel::OrbPathList::doDelPathListEntriesFromRotor( A )",
      reactorTrace());
  // While withdrawn, valid entries and further invalid ones send nothing.
  list->pathEntryIs(entry(30));
  list->pathEntryIs(entry(40, false));
  list->versionInc();
  EXPECT_EQ(commit, sent());
  EXPECT_FALSE(sm()->aspathListValidRegex("A"));
  list->pathEntryDel(15);
  EXPECT_EQ("", sent()) << "entry 40 still holds the list back";
  list->pathEntryDel(20);
  EXPECT_EQ(delEntry("A", 20), sent()) << "a valid entry's removal goes all the same";
  list->pathEntryDel(40);
  EXPECT_EQ(addEntry("A", 10) + addEntry("A", 30) + commit, sent());
  EXPECT_TRUE(reactor("A")->inapplicableSeqno().empty());
}

TEST_F(AsPathReactorTest, RewritingTheOnlyInvalidEntryWithdrawsTheListAgain) {
  auto list = deactivatedList();
  list->pathEntryIs(entry(15, false));
  EXPECT_EQ("", sent()) << "an identical entry is no change";
  // The set still holds one number, so the list is withdrawn once more.
  list->pathEntryIs({15, "(15", Acl::permit, Acl::originIgp, false, false});
  EXPECT_EQ(delEntry("A", 10) + delEntry("A", 15) + delEntry("A", 20) + commit, sent());
}

TEST_F(AsPathReactorTest, CorrectingTheInvalidEntryInPlaceLeavesTheListWithdrawn) {
  auto list = deactivatedList();
  list->pathEntryIs(entry(15));
  list->versionInc();
  EXPECT_EQ(commit, sent());
  EXPECT_TRUE(sm()->aspathListValidRegex("A")) << "the configuration is valid again";
  EXPECT_TRUE(reactor("A")->inapplicableSeqno().contains(15)) << "but the reactor keeps it out";
}

TEST_F(AsPathReactorTest, PausedListReactorPausesItsAsPathListReactors) {
  auto list = sentList("A", {10});
  sm()->hasNotificationActiveIs(false);
  list->pathEntryIs(entry(20));
  aclListConfig->regexModeIs(Acl::regexModeString);
  EXPECT_EQ("", sent());
  sm()->hasNotificationActiveIs(true);
  list->versionInc();
  EXPECT_EQ(commit, sent());
}

TEST_F(AsPathReactorTest, ModeChangeEmptiesTheEngineThenSendsTheModeThenTheValidLists) {
  sentList("A", {10});
  auto b = sentList("B", {10, 20});
  b->pathEntryIs(entry(20, true, false));
  aclListConfig->asPathListIs("E");
  sent();
  trace.text.clear();
  aclListConfig->regexModeIs(Acl::regexModeString);
  EXPECT_EQ(delList("A") + delList("B") + delList("E") + syncCommit + commit +
                "AsPathRegexMode [256] 16:u32=2\n" + commit +  //
                addList("E") + addList("B") + addList("A") + addEntry("A", 10) + commit,
            sent())
      << "removals walk the configuration by name, re-evaluation the list reactors by the "
         "hash order of their names";
  EXPECT_EQ(
      "\n8 void Tessel::AclListConfigSm::handleRegexMode() switching to 1"
      "\n1 deleting all as-path ACLs"
      "\n8 reconfiguring only valid as-path ACLs"
      "\n8 void Tessel::OrbPathList::reevaluatePathList() name: E"
      "\n7 void Tessel::OrbPathList::doAddPathListEntriesToRotor( E )"
      "\n8 void Tessel::OrbPathList::reevaluatePathList() name: B"
      "\n9 As-path ACL: inapplicable entry: 20 as-path ACL: B"
      "\n8 as-path ACL is deactivated after regex mode change: B"
      "\n8 void Tessel::OrbPathList::reevaluatePathList() name: A"
      "\n7 void Tessel::OrbPathList::doAddPathListEntriesToRotor( A )",
      reactorTrace());
  EXPECT_EQ(1u, reactor("B")->inapplicableSeqno().size());

  // A mode other than 0 and 1 holds back every list but the empty one.
  aclListConfig->regexModeIs(Acl::RegexMode(7));
  EXPECT_TRUE(sm()->aspathListValidRegex("E"));
  EXPECT_FALSE(sm()->aspathListValidRegex("A"));
  EXPECT_TRUE(sm()->aspathListValidRegex("absent"));
}

TEST_F(AsPathReactorTest, EntryValidityFollowsTheModesFlagAndNoOtherMode) {
  std::tuple<bool, bool, Orb::U32, bool> const cases[] = {
      {true, false, 0, true}, {true, false, 1, false}, {false, true, 0, false},
      {false, true, 1, true}, {true, true, 2, false},  {true, true, 0xffffffff, false},
  };
  for (auto [valid0, valid1, mode, valid] : cases) {
    EXPECT_EQ(valid, Tessel::aspathEntryValidRegex(entry(10, valid0, valid1), Acl::RegexMode(mode)))
        << valid0 << valid1 << " mode " << mode;
  }
}

}  // namespace
