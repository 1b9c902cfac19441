// Kiwi::IpAddr and Kiwi::Ip6Addr: IPv4 and IPv6 addresses with their usual
// text forms.
#pragma once

#include <array>
#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/Types.h"

namespace Kiwi {

/// An IPv4 address, held as a number in host byte order.
class ROTOR_API IpAddr {
 public:
  constexpr IpAddr() = default;
  constexpr explicit IpAddr(Orb::U32 hostOrder) : v_(hostOrder) {}
  /// Parses a dotted quad ("10.0.0.1"); anything else raises Orb::RangeError.
  static IpAddr fromString(std::string_view text);

  constexpr Orb::U32 value() const noexcept { return v_; }
  /// The address in network byte order, as it goes on the wire.
  Orb::U32 networkOrder() const noexcept;
  std::string stringValue() const;

  friend constexpr auto operator<=>(IpAddr, IpAddr) = default;

 private:
  Orb::U32 v_ = 0;
};

/// An IPv6 address as its sixteen bytes in network order.
class ROTOR_API Ip6Addr {
 public:
  using Bytes = std::array<Orb::U8, 16>;
  constexpr Ip6Addr() = default;
  constexpr explicit Ip6Addr(Bytes b) : b_(b) {}
  /// Parses the text forms of RFC 4291 (with "::" and a trailing dotted
  /// quad); anything else raises Orb::RangeError.
  static Ip6Addr fromString(std::string_view text);

  constexpr Bytes const& bytes() const noexcept { return b_; }
  /// The canonical text form of RFC 5952 (lower case, longest run of two or
  /// more zero groups as "::", the first such run on a tie).
  std::string stringValue() const;

  friend constexpr auto operator<=>(Ip6Addr const&, Ip6Addr const&) = default;

 private:
  Bytes b_{};
};

ROTOR_API std::ostream& operator<<(std::ostream& os, IpAddr a);
ROTOR_API std::ostream& operator<<(std::ostream& os, Ip6Addr const& a);

}  // namespace Kiwi
