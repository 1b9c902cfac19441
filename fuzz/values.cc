// Fuzzes the text forms of the value types: addresses, prefixes and masks,
// VRF names, quoted strings, the enumerations and the prefix-list family. A
// text that reads prints as a text that reads back to the same value and
// prints the same (the printed form is canonical); range errors are the only
// way to refuse, and nothing crashes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>

#include "Acl/Config.h"
#include "Acl/Enums.h"
#include "FuzzCheck.h"
#include "Kiwi/IntfName.h"
#include "Kiwi/Prefix.h"
#include "L3/VrfName.h"
#include "Orb/Text.h"
#include "Routing/RouteMap/Types.h"
#include "RoutingPolicyMap/Types.h"
#include "Tessel/Cog.h"

namespace {

// `T::fromString` and `stringValue`: canonical text, same value.
template <class T>
void address(char const* type, std::string_view text) {
  T value;
  try {
    value = T::fromString(text);
  } catch (Orb::RangeError const&) {
    return;
  }
  std::string const printed = value.stringValue();
  T again;
  try {
    again = T::fromString(printed);
  } catch (Orb::RangeError const& e) {
    Fuzz::finding(std::string(type) + ": printed text is refused: " + printed + ": " + e.what());
  }
  if (!(again == value))
    Fuzz::finding(std::string(type) + ": " + printed + " reads back as " + again.stringValue());
  Fuzz::requireSame(std::string(type) + " prints canonically", printed, again.stringValue());
}

// An enumeration read by name or number and written by name where it has one.
template <class E, class Read>
void enumeration(char const* type, std::string_view text, Read read) {
  E value;
  try {
    value = read(text);
  } catch (Orb::RangeError const&) {
    return;
  }
  using Acl::valueToStrep;
  using Routing::RouteMap::valueToStrep;
  using RoutingPolicyMap::valueToStrep;
  using Tessel::valueToStrep;
  std::string const printed = valueToStrep(value);
  E again;
  try {
    again = read(printed);
  } catch (Orb::RangeError const& e) {
    Fuzz::finding(std::string(type) + ": printed text is refused: " + printed + ": " + e.what());
  }
  if (again != value) Fuzz::finding(std::string(type) + ": " + printed + " reads back otherwise");
}

void quoted(std::string_view text) {
  // Any bytes quote and read back exactly.
  std::string const q = Orb::quote(text);
  Orb::TextReader in(q);
  Orb::String back;
  try {
    back = in.readQuoted();
    in.expectEnd();
  } catch (Orb::RangeError const& e) {
    Fuzz::finding("a quoted text is refused: " + Fuzz::shown(q) + ": " + e.what());
  }
  Fuzz::requireSame("a quoted text reads back as the bytes quoted", text, back.view());

  // And a quoted text that reads, quoted again, reads to the same bytes.
  Orb::TextReader given(text);
  try {
    Orb::String const s = given.readQuoted();
    std::string const requoted = Orb::quote(s.view());
    Orb::TextReader again(requoted);
    Fuzz::requireSame("a read quoted text quotes and reads back", s.view(),
                      again.readQuoted().view());
  } catch (Orb::RangeError const&) {
  }
  // The other readers refuse with range errors only.
  for (auto read :
       {+[](Orb::TextReader& r) { r.readU32(); }, +[](Orb::TextReader& r) { r.readInteger(); },
        +[](Orb::TextReader& r) { r.readPointer(); }}) {
    Orb::TextReader r(text);
    try {
      read(r);
      r.expectEnd();
    } catch (Orb::RangeError const&) {
    }
  }
}

void vrfName(std::string_view text) {
  try {
    L3::VrfName const name{Orb::String(text)};
    Fuzz::requireSame("a VRF name keeps its bytes", text, name.value().view());
    if (text.size() > L3::VrfName::maxLength) Fuzz::finding("a VRF name past the limit is taken");
    std::ostringstream os;
    os << name;
  } catch (Orb::RangeError const&) {
    if (text.size() <= L3::VrfName::maxLength) Fuzz::finding("a VRF name within the limit refused");
  }
}

void prefixListFamily(std::string_view text, Orb::U32 number) {
  enumeration<Tessel::Cog::PrefixListFamily>("PrefixListFamily", text,
                                             Tessel::prefixListFamilyFromStrep);
  try {
    auto const family = Tessel::PrefixListFamilyInstance(text);
    if (family != Tessel::prefixListFamilyFromStrep(text))
      Fuzz::finding("the family's two readers disagree on " + Fuzz::shown(text));
  } catch (Orb::RangeError const&) {
  }
  auto const family = Tessel::PrefixListFamilyInstance(number);
  if (Tessel::prefixListFamilyFromStrep(Tessel::valueToStrep(family)) != family)
    Fuzz::finding("the family of " + std::to_string(number) + " does not read back");
  (void)Tessel::stringValue(family);
  try {
    (void)Tessel::sequenceToValue<Tessel::Cog::PrefixListFamily>(number);
  } catch (Orb::RangeError const&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(data), size);
  Orb::U32 number = 0;
  std::memcpy(&number, data, size < sizeof number ? size : sizeof number);

  address<Kiwi::IpAddr>("IpAddr", text);
  address<Kiwi::Ip6Addr>("Ip6Addr", text);
  address<Kiwi::Prefix>("Prefix", text);
  address<Kiwi::Ip6Prefix>("Ip6Prefix", text);
  address<Kiwi::IpAddrWithFullMask>("IpAddrWithFullMask", text);
  enumeration<Acl::MatchPermit>("MatchPermit", text, Acl::matchPermitFromStrep);
  enumeration<Acl::BGPOrigin>("BGPOrigin", text, Acl::bgpOriginFromStrep);
  enumeration<Acl::CommSetFlag>("CommSetFlag", text, Acl::commSetFlagFromStrep);
  enumeration<Acl::RegexMode>("RegexMode", text, Acl::regexModeFromStrep);
  enumeration<Acl::ExtCommLinkBandwidthSetFlag>("ExtCommLinkBandwidthSetFlag", text,
                                                Acl::lbwFlagFromStrep);
  enumeration<Acl::AclType>("AclType", text, Acl::aclTypeFromStrep);
  enumeration<Routing::RouteMap::RouteMapOpModeType>("RouteMapOpModeType", text,
                                                     Routing::RouteMap::routeMapOpModeFromStrep);
  enumeration<RoutingPolicyMap::PolicyType>("PolicyType", text,
                                            RoutingPolicyMap::policyTypeFromStrep);
  prefixListFamily(text, number);
  quoted(text);
  vrfName(text);
  (void)Kiwi::platIntfToKernelIntf(text);
  return 0;
}
