// L3::VrfName: the name of a VRF, at most 100 bytes.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>

#include "Orb/Api.h"
#include "Orb/String.h"

namespace L3 {

class ROTOR_API VrfName {
 public:
  static constexpr std::size_t maxLength = 100;

  VrfName() = default;
  /// Raises Orb::RangeError "VrfName::value::bytes > VrfName::maxLength not
  /// allowed" when `value` is longer than `maxLength` bytes.
  VrfName(Orb::String value);
  VrfName(char const* value) : VrfName(Orb::String(value)) {}

  Orb::String const& value() const noexcept { return value_; }
  bool empty() const noexcept { return value_.empty(); }

  friend bool operator==(VrfName const&, VrfName const&) = default;
  friend auto operator<=>(VrfName const&, VrfName const&) = default;

 private:
  Orb::String value_;
};

ROTOR_API std::ostream& operator<<(std::ostream& os, VrfName const& v);

}  // namespace L3
