// Text forms and range checks of IPv4 and IPv6 prefixes and of IPv4 addresses
// with a mask. Errors name the part of the text that is wrong.
#include "Kiwi/Prefix.h"

#include <bit>
#include <ostream>

#include "Orb/RangeError.h"

namespace Kiwi {

namespace {

struct Halves {
  std::string_view address;
  std::string_view rest;
};

Halves splitAtSlash(std::string_view text, char const* missing) {
  std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) {
    throw Orb::RangeError(std::string(missing) + ": missing in '" + std::string(text) + "'");
  }
  return {text.substr(0, slash), text.substr(slash + 1)};
}

void checkLength(Orb::U32 length, Orb::U32 max) {
  if (length > max) {
    throw Orb::RangeError("length: " + std::to_string(length) + " is above " + std::to_string(max));
  }
}

// Plain decimal digits only; the range is checked by the caller, so any value
// that cannot fit is reported as too large rather than wrapped.
Orb::U32 parseLength(std::string_view text, Orb::U32 max) {
  if (text.empty()) throw Orb::RangeError("length: missing");
  Orb::U32 v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') {
      throw Orb::RangeError("length: '" + std::string(text) + "' is not a decimal number");
    }
    v = v * 10 + static_cast<Orb::U32>(c - '0');
    if (v > max) {
      throw Orb::RangeError("length: '" + std::string(text) + "' is above " + std::to_string(max));
    }
  }
  return v;
}

template <typename Addr>
Addr parseAddress(std::string_view text) {
  try {
    return Addr::fromString(text);
  } catch (Orb::RangeError const& e) {
    throw e.within("address");
  }
}

}  // namespace

Prefix::Prefix(IpAddr address, Orb::U32 length) : address_(address), length_(length) {
  checkLength(length, 32);
}

Prefix Prefix::fromString(std::string_view text) {
  auto [address, length] = splitAtSlash(text, "length");
  IpAddr a = parseAddress<IpAddr>(address);
  return Prefix(a, parseLength(length, 32));
}

std::string Prefix::stringValue() const {
  return address_.stringValue() + '/' + std::to_string(length_);
}

Ip6Prefix::Ip6Prefix(Ip6Addr address, Orb::U32 length) : address_(address), length_(length) {
  checkLength(length, 128);
}

Ip6Prefix Ip6Prefix::fromString(std::string_view text) {
  auto [address, length] = splitAtSlash(text, "length");
  Ip6Addr a = parseAddress<Ip6Addr>(address);
  return Ip6Prefix(a, parseLength(length, 128));
}

std::string Ip6Prefix::stringValue() const {
  return address_.stringValue() + '/' + std::to_string(length_);
}

IpAddrWithFullMask::IpAddrWithFullMask(IpAddr address, Orb::U32 maskHostOrder)
    : address_(address), mask_(maskHostOrder) {
  // Contiguous means the inverted mask is a run of low ones, and adding one
  // to such a run clears every bit it had.
  Orb::U32 const inverted = ~maskHostOrder;
  if ((inverted & (inverted + 1)) != 0) {
    throw Orb::RangeError("mask: " + IpAddr(maskHostOrder).stringValue() +
                          " is not contiguous ones followed by zeros");
  }
}

IpAddrWithFullMask IpAddrWithFullMask::fromString(std::string_view text) {
  auto [address, rest] = splitAtSlash(text, "mask");
  IpAddr a = parseAddress<IpAddr>(address);
  if (rest.find('.') == std::string_view::npos) {
    return IpAddrWithFullMask(a, maskOfLength(parseLength(rest, 32)));
  }
  IpAddr mask;
  try {
    mask = IpAddr::fromString(rest);
  } catch (Orb::RangeError const& e) {
    throw e.within("mask");
  }
  return IpAddrWithFullMask(a, mask.value());
}

Orb::U32 IpAddrWithFullMask::maskOfLength(Orb::U32 length) noexcept {
  // Shifting a 32-bit value by 32 is undefined, so both ends are spelled out.
  if (length == 0) return 0;
  if (length >= 32) return 0xffffffffu;
  return 0xffffffffu << (32 - length);
}

Orb::U32 IpAddrWithFullMask::maskLength() const noexcept {
  return static_cast<Orb::U32>(std::popcount(mask_));
}

std::string IpAddrWithFullMask::stringValue() const {
  return address_.stringValue() + '/' + std::to_string(maskLength());
}

std::ostream& operator<<(std::ostream& os, Prefix const& p) {
  return os << p.stringValue();
}

std::ostream& operator<<(std::ostream& os, Ip6Prefix const& p) {
  return os << p.stringValue();
}

std::ostream& operator<<(std::ostream& os, IpAddrWithFullMask const& a) {
  return os << a.stringValue();
}

}  // namespace Kiwi
