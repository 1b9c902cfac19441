// Interface naming: the default mapping's rules and replacing it with the
// host's own.
#include <gtest/gtest.h>

#include <string>

#include "Kiwi/IntfName.h"

namespace {

using Kiwi::intfNameMapIs;
using Kiwi::platIntfToKernelIntf;

TEST(DefaultIntfNameMap, AbbreviatesOrLowerCasesTheLeadingWordAndReplacesSlashes) {
  Kiwi::DefaultIntfNameMap const map;
  EXPECT_EQ(map.kernelName("Ethernet1/2"), "eth1_2");
  EXPECT_EQ(map.kernelName("Vlan10"), "vlan10");
  EXPECT_EQ(map.kernelName("Loopback0"), "lo0");
  EXPECT_EQ(map.kernelName("PORT-CHANNEL5/1.100"), "po5_1.100");
  EXPECT_EQ(map.kernelName("Management1"), "mgmt1");
  EXPECT_EQ(map.kernelName("Tunnel7"), "tun7");
  EXPECT_EQ(map.kernelName("Ethernet"), "eth");
  // Only the leading word is lower-cased.
  EXPECT_EQ(map.kernelName("Recirc3/1Ab"), "recirc3_1Ab");
  // A word that merely starts like a known one is not abbreviated.
  EXPECT_EQ(map.kernelName("EthernetX1"), "ethernetx1");
  // A hyphen that ends the word belongs to the rest.
  EXPECT_EQ(map.kernelName("Vlan-10"), "vlan-10");
  EXPECT_EQ(map.kernelName("1/2"), "1_2");
  EXPECT_EQ(map.kernelName(""), "");
}

class Prefixed final : public Kiwi::IntfNameMap {
 public:
  std::string kernelName(std::string_view configured) const override {
    return "host-" + std::string(configured);
  }
};

TEST(IntfNameMapSeam, InstalledMappingIsUsedUntilTheDefaultIsRestored) {
  EXPECT_EQ(platIntfToKernelIntf("Ethernet3"), "eth3");
  Prefixed const host;
  Kiwi::IntfNameMap const* const original = intfNameMapIs(&host);
  ASSERT_NE(original, nullptr);
  EXPECT_EQ(platIntfToKernelIntf("Ethernet3"), "host-Ethernet3");
  EXPECT_EQ(intfNameMapIs(nullptr), &host);
  EXPECT_EQ(platIntfToKernelIntf("Ethernet3"), "eth3");
  // Restoring hands back the default itself, so it can be reinstalled later.
  EXPECT_EQ(intfNameMapIs(nullptr), original);
}

}  // namespace
