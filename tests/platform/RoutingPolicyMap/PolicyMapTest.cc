// The policy map model: each collection notifies its own attribute with the
// policy name, a requester notifies only real changes of its reasons, and the
// state text lists every reason.
#include <gtest/gtest.h>

#include <locale>
#include <sstream>
#include <string>

#include "DecimalCommaLocale.h"
#include "Orb/RangeError.h"
#include "RoutingPolicyMap/PolicyMap.h"

namespace {

using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::Requester;

/// "attribute:key" per notification.
class Log final : public Orb::Notifiee {
 public:
  explicit Log(Orb::Ptr<Orb::Entity const> e) : Notifiee(std::move(e)) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const& key) override {
    std::ostringstream out;
    out << attribute << ":";
    if (auto const* r = key.as<Requester>()) {
      out << *r;
    } else {
      out << key;
    }
    text += out.str() + "\n";
  }
  std::string text;
};

TEST(PolicyMapModel, CollectionsNotifyTheirOwnAttributeAndReasonsOnlyRealChanges) {
  long const liveBefore = Orb::Object::liveObjects();
  {
    auto pmap = PolicyMap::create("pmap");
    Log mapLog(pmap);
    auto rm = pmap->routeMapIs("R");
    EXPECT_EQ(rm, pmap->routeMapIs("R")) << "an existing entry is returned, not made again";
    pmap->dynamicPrefixListIs("D");
    pmap->redistributedDynPfxIs("X");
    pmap->redistributedDynPfxDel("X");
    pmap->redistributedDynPfxDel("X");
    EXPECT_EQ("1:R\n2:D\n3:X\n3:X\n", mapLog.text);

    Log reasonLog(rm);
    Requester const r{RoutingPolicyMap::pluginTypeRouting, RoutingPolicyMap::cliModeRouteMap,
                      "sub-route-map", "A seqNo 10"};
    rm->reasonIs(r);
    rm->reasonIs(r);
    rm->reasonDel(r);
    rm->reasonDel(r);
    std::string const line = "1:plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\"\n";
    EXPECT_EQ(line + line, reasonLog.text);

    rm->reasonIs(r);
    EXPECT_EQ(
        "routeMap \"R\" plugin=1 mode=6 cli=\"sub-route-map\" key=\"A seqNo 10\"\n"
        "dynamicPrefixList \"D\"\n",
        RoutingPolicyMap::stateText(*pmap));
  }
  EXPECT_EQ(liveBefore, Orb::Object::liveObjects());
}

// The text form the tools print and compare ignores the global locale.
TEST(PolicyMapModel, StateTextIgnoresTheGlobalLocale) {
  std::string const german = TestSupport::decimalCommaLocale();
  if (german.empty()) GTEST_SKIP() << "no locale with a decimal comma could be had";
  auto pmap = PolicyMap::create("p");
  pmap->routeMapIs("A")->reasonIs(
      {RoutingPolicyMap::PluginType(1234), RoutingPolicyMap::CliMode(2), "cli", "key"});
  std::locale const previous = std::locale::global(std::locale(german));
  std::string const text = RoutingPolicyMap::stateText(*pmap);
  std::locale::global(previous);
  EXPECT_EQ("routeMap \"A\" plugin=1234 mode=2 cli=\"cli\" key=\"key\"\n", text);
}

TEST(PolicyMapModel, PolicyTypeReadsNamesAndNumbers) {
  EXPECT_EQ(RoutingPolicyMap::policyTypeDynamicPrefixList,
            RoutingPolicyMap::policyTypeFromStrep("dynamicPrefixList"));
  EXPECT_EQ(RoutingPolicyMap::policyTypeRedistributedDynPfx,
            RoutingPolicyMap::policyTypeFromStrep("2"));
  EXPECT_THROW(RoutingPolicyMap::policyTypeFromStrep("rm"), Orb::RangeError);
}

}  // namespace
