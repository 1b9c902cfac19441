// What the library registers with the runtime's type registry: its type
// names, text conversion of its value types, and checked generic actions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <any>
#include <string>
#include <string_view>
#include <vector>

#include "Harness.h"
#include "Orb/TypeRegistry.h"
#include "TesselUtil/CommSetClauseText.h"

namespace {

using Acl::commSetDelete_;
using Tessel::Cog;
using Tessel::CommSetClauseInMapEntry;
using Tessel::MapEntryCommSetClause;
using testing::StartsWith;

constexpr char kKey[] = "Tessel::MapEntryCommSetClause";
constexpr char kRecord[] = "Tessel::CommSetClauseInMapEntry";
constexpr char kFamily[] = "Tessel::Cog::PrefixListFamily";

// The message of the RangeError that `f` raises, or "" when it raises none.
template <class F>
std::string rangeError(F f) {
  try {
    f();
  } catch (Orb::RangeError const& e) {
    return e.what();
  }
  return "";
}

using TypeRegistrationTest = TesselTest::EngineTest;

TEST_F(TypeRegistrationTest, LibraryRegistersEveryTypeItBuilds) {
  // Every type the library registers, and nothing else.
  std::vector<std::string> expected = {
      "RibDynamicPrefixList::Cog",
      "RibDynamicPrefixList::DynPfxConfigSm",
      "RibDynamicPrefixList::OrbDynamicPrefixList",
      "Tessel::AclConfigSm",
      "Tessel::AclListConfigSm",
      "Tessel::IpAclConfigSm",
      "Tessel::Cog",
      "Tessel::Cog::PrefixListFamily",
      "Tessel::CommListUsers",
      "Tessel::CommSetClauseInMapEntry",
      "Tessel::CommSetClauseMapEntryColl",
      "Tessel::MapEntryCommSetClause",
      "Tessel::OrbRouteMap",
      "Tessel::OrbSeqMapEntry",
      "Tessel::PeerFilterConfigSm",
      "Tessel::Root",
      "Tessel::RouteMapConfigSm",
      "Tessel::VrfStatusSm",
  };
  std::sort(expected.begin(), expected.end());
  std::vector<std::string> library;
  for (std::string const& name : Orb::TypeRegistry::instance().typeNames()) {
    if (name.starts_with("Tessel::") || name.starts_with("RibDynamicPrefixList::"))
      library.push_back(name);
  }
  EXPECT_EQ(expected, library);
}

TEST_F(TypeRegistrationTest, ValueTypesGoFromTextAndBackThroughTheRegistry) {
  auto const& registry = Orb::TypeRegistry::instance();
  MapEntryCommSetClause const key("M", 4294967295u, commSetDelete_);
  std::string const keyText = registry.valueToStrep(kKey, key);
  EXPECT_EQ(Tessel::valueToStrep(key), keyText);
  EXPECT_EQ(key, std::any_cast<MapEntryCommSetClause>(registry.valueFromStrep(kKey, keyText)));

  auto commSet = Routing::RouteMap::CommunitySet::create({Acl::commSetAdd_, true, {"A"}, {}});
  CommSetClauseInMapEntry const record(key, commSet);
  std::string const recordText = registry.valueToStrep(kRecord, record);
  EXPECT_EQ(Tessel::valueToStrep(record), recordText);
  EXPECT_EQ(record,
            std::any_cast<CommSetClauseInMapEntry>(registry.valueFromStrep(kRecord, recordText)));

  for (Cog::PrefixListFamily family : {Cog::ipv4, Cog::ipv6}) {
    std::string const text = registry.valueToStrep(kFamily, family);
    EXPECT_EQ(Tessel::valueToStrep(family), text);
    EXPECT_EQ(family, std::any_cast<Cog::PrefixListFamily>(registry.valueFromStrep(kFamily, text)));
  }
}

TEST_F(TypeRegistrationTest, RegistryConversionErrorsNameTheFieldAtFault) {
  auto const& registry = Orb::TypeRegistry::instance();
  std::string const record =
      Tessel::valueToStrep(CommSetClauseInMapEntry({"M", 10, commSetDelete_}, nullptr));
  // The record with one field's text swapped for a bad one.
  auto swapped = [](std::string const& text, std::string_view field, std::string_view bad) {
    auto const at = text.find(field);
    if (at == std::string::npos) return "(no " + std::string(field) + " in " + text + ")";
    std::string out = text.substr(0, at);
    out += bad;
    out.append(text, at + field.size());
    return out;
  };
  std::string const badSeqno = swapped(record, "10", "x");
  EXPECT_THAT(rangeError([&] { registry.valueFromStrep(kRecord, badSeqno); }),
              StartsWith("mapEntryClause: mapSeqno: "));
  std::string const badFlag =
      swapped(Tessel::valueToStrep(MapEntryCommSetClause("M", 10, commSetDelete_)), "commSetDelete",
              "sideways");
  EXPECT_THAT(rangeError([&] { registry.valueFromStrep(kKey, badFlag); }), StartsWith("flag: "));
  EXPECT_EQ("PrefixListFamily: unknown value 'ipv5'",
            rangeError([&] { registry.valueFromStrep(kFamily, "ipv5"); }));
  EXPECT_NE("", rangeError([&] { registry.valueFromStrep(kFamily, "ipv4 "); }));

  // Types that hold no values, and values of the wrong type, are refused.
  EXPECT_NE("", rangeError([&] { registry.valueFromStrep("Tessel::Root", "x"); }));
  EXPECT_NE("", rangeError([&] { registry.valueToStrep(kFamily, std::any(7)); }));
}

TEST_F(TypeRegistrationTest, CogActionOnAnotherObjectIsRefusedAndSendsNothing) {
  auto users = Tessel::CommListUsers::create("comm-list-users");
  EXPECT_FALSE(Orb::TypeRegistry::instance().doAction("Tessel::Cog", "doSyncCommit", *users));
  EXPECT_EQ("", sent());
  EXPECT_THAT(trace.text,
              testing::HasSubstr("0 Error: action doSyncCommit of Tessel::Cog refused"));
}

}  // namespace
