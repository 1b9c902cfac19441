// Range check and printing of VRF names.
#include "L3/VrfName.h"

#include <ostream>

#include "Orb/RangeError.h"

namespace L3 {

VrfName::VrfName(Orb::String value) : value_(std::move(value)) {
  if (value_.size() > maxLength) {
    throw Orb::RangeError("VrfName::value::bytes > VrfName::maxLength not allowed");
  }
}

std::ostream& operator<<(std::ostream& os, VrfName const& v) {
  return os << v.value();
}

}  // namespace L3
