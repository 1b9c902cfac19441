// Text forms of addresses, prefixes and masks: what is read, how it prints,
// and what is refused with which message.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "Kiwi/IpAddr.h"
#include "Kiwi/Prefix.h"
#include "Orb/RangeError.h"

namespace {

using Kiwi::Ip6Addr;
using Kiwi::Ip6Prefix;
using Kiwi::IpAddr;
using Kiwi::IpAddrWithFullMask;
using Kiwi::Prefix;
using testing::StartsWith;

// The RangeError message `f` raises, or "" when it raises nothing.
template <typename F>
std::string errorOf(F f) {
  try {
    f();
  } catch (Orb::RangeError const& e) {
    return e.what();
  }
  return "";
}

TEST(IpAddrText, DottedQuadsRoundTripGoOnTheWireFirstOctetFirstAndMalformedOnesAreNamed) {
  for (char const* text : {"0.0.0.0", "192.168.254.7", "255.255.255.255"})
    EXPECT_EQ(IpAddr::fromString(text).stringValue(), text);
  EXPECT_EQ(IpAddr::fromString("010.001.000.9"), IpAddr(0x0a010009u));
  Orb::U32 const wire = IpAddr::fromString("10.20.30.40").networkOrder();
  unsigned char const firstOctetFirst[] = {10, 20, 30, 40};
  EXPECT_EQ(0, std::memcmp(&wire, firstOctetFirst, sizeof wire));
  for (char const* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1..3.4", "1.2.3.4.", "+1.2.3.4",
                           "1.2.3.4 ", "0001.2.3.4", "1.2.3.x", "1:2:3:4"}) {
    EXPECT_EQ(errorOf([&] { IpAddr::fromString(text); }),
              "IpAddr: '" + std::string(text) + "' is not a dotted-quad address");
  }
}

TEST(Ip6AddrText, PrintsTheCanonicalForm) {
  std::pair<char const*, char const*> const cases[] = {
      {"2001:0db8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},
      {"2001:DB8:AbCd::", "2001:db8:abcd::"},
      {"::", "::"},
      {"::1", "::1"},
      {"1::", "1::"},
      // The first of two equally long runs is compressed.
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
      // The longer run wins even when it comes second.
      {"1:0:0:2:0:0:0:3", "1:0:0:2::3"},
      // A lone zero group is written out, never as "::".
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
      {"1::2:3:4:5:6:7", "1:0:2:3:4:5:6:7"},
      {"::ffff:10.0.0.1", "::ffff:10.0.0.1"},
      {"::ffff:a00:1", "::ffff:10.0.0.1"},
      // Only the mapped range is printed with a dotted quad.
      {"::10.0.0.1", "::a00:1"},
      {"1:2:3:4:5:6:1.2.3.4", "1:2:3:4:5:6:102:304"},
  };
  for (auto [in, out] : cases)
    EXPECT_EQ(Ip6Addr::fromString(in).stringValue(), out) << in;
}

TEST(Ip6AddrText, MalformedTextIsRejected) {
  for (char const* text :
       {"", ":", ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7:8::",
        "::1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:", ":1:2:3:4:5:6:7:8", "12345::", "g::", "::1.2.3",
        "::1.2.3.4:5", "1.2.3.4::", "1:2:3:4:5:6:7:1.2.3.4", "fe80::1%eth0", " ::1"}) {
    EXPECT_THAT(errorOf([&] { Ip6Addr::fromString(text); }),
                StartsWith("Ip6Addr: '" + std::string(text) + "' is not an IPv6 address"));
  }
}

TEST(PrefixText, KeepsHostBitsRoundTripsAndNamesTheFieldAtFault) {
  EXPECT_EQ(Prefix::fromString("10.1.2.3/8"), Prefix(IpAddr(0x0a010203u), 8));
  EXPECT_EQ(Prefix::fromString("10.1.2.3/8").stringValue(), "10.1.2.3/8");
  EXPECT_EQ(Ip6Prefix::fromString("2001:DB8:0:0::/32").stringValue(), "2001:db8::/32");

  EXPECT_EQ(errorOf([] { Prefix(IpAddr(), 33); }), "length: 33 is above 32");
  EXPECT_EQ(errorOf([] { Ip6Prefix(Ip6Addr(), 129); }), "length: 129 is above 128");
  EXPECT_EQ(errorOf([] { Prefix::fromString("10.0.0/8"); }),
            "address: IpAddr: '10.0.0' is not a dotted-quad address");
  for (char const* text :
       {"10.0.0.0/33", "10.0.0.0/+8", "10.0.0.0/", "10.0.0.0", "10.0.0.0/99999999999"})
    EXPECT_THAT(errorOf([&] { Prefix::fromString(text); }), StartsWith("length: ")) << text;
  EXPECT_THAT(errorOf([] { Ip6Prefix::fromString("1::2::3/64"); }), StartsWith("address: "));
  EXPECT_THAT(errorOf([] { Ip6Prefix::fromString("::/129"); }), StartsWith("length: "));
}

TEST(IpAddrWithFullMaskText, ReadsLengthOrDottedMaskPrintsLengthAndRefusesHoles) {
  auto a = IpAddrWithFullMask::fromString("10.1.0.0/255.255.0.0");
  EXPECT_EQ(a.mask(), 0xffff0000u);
  EXPECT_EQ(a.stringValue(), "10.1.0.0/16");
  EXPECT_EQ(IpAddrWithFullMask::fromString("10.1.0.0/16"), a);
  EXPECT_EQ(IpAddrWithFullMask::fromString("1.2.3.4/0.0.0.0").stringValue(), "1.2.3.4/0");
  EXPECT_EQ(IpAddrWithFullMask::fromString("1.2.3.4/32").mask(), 0xffffffffu);
  EXPECT_EQ(IpAddrWithFullMask::maskOfLength(0), 0u);

  for (char const* text : {"10.0.0.0/255.0.255.0", "10.0.0.0/0.255.255.255", "10.0.0.0/255.255.0.1",
                           "10.0.0.0/255.255.0", "10.0.0.0"})
    EXPECT_THAT(errorOf([&] { IpAddrWithFullMask::fromString(text); }), StartsWith("mask: "))
        << text;
  EXPECT_THAT(errorOf([] { IpAddrWithFullMask(IpAddr(), 0xff00ff00u); }), StartsWith("mask: "));
  EXPECT_THAT(errorOf([] { IpAddrWithFullMask::fromString("10.0.0.0/33"); }),
              StartsWith("length: "));
}

}  // namespace
