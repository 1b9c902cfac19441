// Text forms of addresses, prefixes and masks: what is read, how it prints,
// and what is refused with which message.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Kiwi/IpAddr.h"
#include "Kiwi/Prefix.h"
#include "Orb/RangeError.h"

namespace {

using Kiwi::Ip6Addr;
using Kiwi::Ip6Prefix;
using Kiwi::IpAddr;
using Kiwi::IpAddrWithFullMask;
using Kiwi::Prefix;

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

TEST(IpAddrText, DottedQuadRoundTrips) {
  for (char const* text : {"0.0.0.0", "10.0.0.1", "192.168.254.7", "255.255.255.255"}) {
    EXPECT_EQ(IpAddr::fromString(text).stringValue(), text);
  }
  EXPECT_EQ(IpAddr::fromString("10.1.2.3").value(), 0x0a010203u);
  EXPECT_EQ(IpAddr::fromString("010.001.000.9"), IpAddr(0x0a010009u));
}

TEST(IpAddrText, MalformedQuadsAreRejectedNamingTheText) {
  for (char const* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1..3.4", "1.2.3.4.", "+1.2.3.4",
                           "1.2.3.4 ", "0001.2.3.4", "1.2.3.x", "1:2:3:4"}) {
    EXPECT_EQ(errorOf([&] { IpAddr::fromString(text); }),
              "IpAddr: '" + std::string(text) + "' is not a dotted-quad address")
        << text;
  }
}

TEST(IpAddrText, NetworkOrderPutsTheFirstOctetFirstInMemory) {
  Orb::U32 wire = IpAddr::fromString("10.20.30.40").networkOrder();
  unsigned char bytes[4];
  std::memcpy(bytes, &wire, sizeof bytes);
  EXPECT_EQ(bytes[0], 10);
  EXPECT_EQ(bytes[1], 20);
  EXPECT_EQ(bytes[2], 30);
  EXPECT_EQ(bytes[3], 40);
}

TEST(Ip6AddrText, PrintsTheCanonicalForm) {
  struct Case {
    char const* in;
    char const* out;
  };
  for (Case c : {
           Case{"2001:0db8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},
           Case{"2001:DB8:AbCd::", "2001:db8:abcd::"},
           Case{"::", "::"},
           Case{"::1", "::1"},
           Case{"1::", "1::"},
           // The first of two equally long runs is compressed.
           Case{"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
           // The longer run wins even when it comes second.
           Case{"1:0:0:2:0:0:0:3", "1:0:0:2::3"},
           // A lone zero group is written out, never as "::".
           Case{"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
           Case{"1::2:3:4:5:6:7", "1:0:2:3:4:5:6:7"},
           Case{"::ffff:10.0.0.1", "::ffff:10.0.0.1"},
           Case{"::ffff:a00:1", "::ffff:10.0.0.1"},
           // Only the mapped range is printed with a dotted quad.
           Case{"::10.0.0.1", "::a00:1"},
           Case{"1:2:3:4:5:6:1.2.3.4", "1:2:3:4:5:6:102:304"},
       }) {
    EXPECT_EQ(Ip6Addr::fromString(c.in).stringValue(), c.out) << c.in;
  }
}

TEST(Ip6AddrText, MalformedTextIsRejected) {
  for (char const* text :
       {"", ":", ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7:8::",
        "::1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:", ":1:2:3:4:5:6:7:8", "12345::", "g::", "::1.2.3",
        "::1.2.3.4:5", "1.2.3.4::", "1:2:3:4:5:6:7:1.2.3.4", "fe80::1%eth0", " ::1"}) {
    std::string const error = errorOf([&] { Ip6Addr::fromString(text); });
    EXPECT_EQ(error.rfind("Ip6Addr: '" + std::string(text) + "' is not an IPv6 address", 0), 0u)
        << text << " gave: " << error;
  }
}

TEST(PrefixText, KeepsHostBitsAndRoundTrips) {
  Prefix p = Prefix::fromString("10.1.2.3/8");
  EXPECT_EQ(p.address(), IpAddr(0x0a010203u));
  EXPECT_EQ(p.length(), 8u);
  EXPECT_EQ(p.stringValue(), "10.1.2.3/8");
  EXPECT_EQ(Prefix::fromString("0.0.0.0/0").stringValue(), "0.0.0.0/0");
  EXPECT_EQ(Ip6Prefix::fromString("2001:DB8:0:0::/32").stringValue(), "2001:db8::/32");
  EXPECT_EQ(Ip6Prefix::fromString("::/128").length(), 128u);
}

TEST(PrefixText, ErrorsNameTheFieldAtFault) {
  EXPECT_EQ(errorOf([] { Prefix(IpAddr(), 33); }), "length: 33 is above 32");
  EXPECT_EQ(errorOf([] { Ip6Prefix(Ip6Addr(), 129); }), "length: 129 is above 128");
  EXPECT_EQ(errorOf([] { Prefix::fromString("10.0.0/8"); }),
            "address: IpAddr: '10.0.0' is not a dotted-quad address");
  for (char const* text :
       {"10.0.0.0/33", "10.0.0.0/+8", "10.0.0.0/", "10.0.0.0", "10.0.0.0/99999999999"}) {
    EXPECT_EQ(errorOf([&] { Prefix::fromString(text); }).rfind("length: ", 0), 0u) << text;
  }
  EXPECT_EQ(errorOf([] { Ip6Prefix::fromString("1::2::3/64"); }).rfind("address: Ip6Addr: ", 0),
            0u);
  EXPECT_EQ(errorOf([] { Ip6Prefix::fromString("::/129"); }).rfind("length: ", 0), 0u);
}

TEST(IpAddrWithFullMaskText, ReadsLengthOrDottedMaskAndPrintsLength) {
  auto a = IpAddrWithFullMask::fromString("10.1.0.0/255.255.0.0");
  EXPECT_EQ(a.mask(), 0xffff0000u);
  EXPECT_EQ(a.maskLength(), 16u);
  EXPECT_EQ(a.stringValue(), "10.1.0.0/16");
  EXPECT_EQ(IpAddrWithFullMask::fromString("10.1.0.0/16"), a);
  EXPECT_EQ(IpAddrWithFullMask::fromString("1.2.3.4/0.0.0.0").stringValue(), "1.2.3.4/0");
  EXPECT_EQ(IpAddrWithFullMask::fromString("1.2.3.4/32").mask(), 0xffffffffu);
  EXPECT_EQ(IpAddrWithFullMask::maskOfLength(0), 0u);
  EXPECT_EQ(IpAddrWithFullMask::maskOfLength(1), 0x80000000u);
}

TEST(IpAddrWithFullMaskText, NonContiguousOrMalformedMaskIsRejected) {
  for (char const* text : {"10.0.0.0/255.0.255.0", "10.0.0.0/0.255.255.255", "10.0.0.0/255.255.0.1",
                           "10.0.0.0/255.255.0", "10.0.0.0"}) {
    EXPECT_EQ(errorOf([&] { IpAddrWithFullMask::fromString(text); }).rfind("mask: ", 0), 0u)
        << text;
  }
  EXPECT_EQ(errorOf([] { IpAddrWithFullMask(IpAddr(), 0xff00ff00u); }).rfind("mask: ", 0), 0u);
  EXPECT_EQ(errorOf([] { IpAddrWithFullMask::fromString("10.0.0.0/33"); }).rfind("length: ", 0),
            0u);
}

}  // namespace
