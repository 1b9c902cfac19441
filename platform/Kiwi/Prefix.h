// Kiwi::Prefix, Kiwi::Ip6Prefix and Kiwi::IpAddrWithFullMask: an address with
// a length or a mask, with their usual text forms.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Kiwi/IpAddr.h"
#include "Orb/Api.h"

namespace Kiwi {

/// An IPv4 prefix ("10.0.0.0/8"). The address is kept as given; host bits
/// are not cleared.
class ROTOR_API Prefix {
 public:
  constexpr Prefix() = default;
  /// Raises Orb::RangeError naming "length" when it is above 32.
  Prefix(IpAddr address, Orb::U32 length);
  static Prefix fromString(std::string_view text);

  constexpr IpAddr address() const noexcept { return address_; }
  constexpr Orb::U32 length() const noexcept { return length_; }
  std::string stringValue() const;

  friend constexpr auto operator<=>(Prefix const&, Prefix const&) = default;

 private:
  IpAddr address_;
  Orb::U32 length_ = 0;
};

/// An IPv6 prefix ("2001:db8::/32").
class ROTOR_API Ip6Prefix {
 public:
  constexpr Ip6Prefix() = default;
  /// Raises Orb::RangeError naming "length" when it is above 128.
  Ip6Prefix(Ip6Addr address, Orb::U32 length);
  static Ip6Prefix fromString(std::string_view text);

  constexpr Ip6Addr const& address() const noexcept { return address_; }
  constexpr Orb::U32 length() const noexcept { return length_; }
  std::string stringValue() const;

  friend constexpr auto operator<=>(Ip6Prefix const&, Ip6Prefix const&) = default;

 private:
  Ip6Addr address_;
  Orb::U32 length_ = 0;
};

/// An IPv4 address with a full (contiguous, not wildcard) mask, both in host
/// order. Text form "10.1.0.0/16"; "10.1.0.0/255.255.0.0" is read as well.
class ROTOR_API IpAddrWithFullMask {
 public:
  constexpr IpAddrWithFullMask() = default;
  /// Raises Orb::RangeError naming "mask" when the mask is not contiguous.
  IpAddrWithFullMask(IpAddr address, Orb::U32 maskHostOrder);
  static IpAddrWithFullMask fromString(std::string_view text);
  static Orb::U32 maskOfLength(Orb::U32 length) noexcept;

  constexpr IpAddr address() const noexcept { return address_; }
  /// The mask in host order (255.255.0.0 is 0xffff0000).
  constexpr Orb::U32 mask() const noexcept { return mask_; }
  Orb::U32 maskLength() const noexcept;
  std::string stringValue() const;

  friend constexpr auto operator<=>(IpAddrWithFullMask const&, IpAddrWithFullMask const&) = default;

 private:
  IpAddr address_;
  Orb::U32 mask_ = 0;
};

ROTOR_API std::ostream& operator<<(std::ostream& os, Prefix const& p);
ROTOR_API std::ostream& operator<<(std::ostream& os, Ip6Prefix const& p);
ROTOR_API std::ostream& operator<<(std::ostream& os, IpAddrWithFullMask const& a);

}  // namespace Kiwi
