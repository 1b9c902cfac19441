// The runtime's range error: raised by value types and text parsers when a
// value lies outside what the type allows.
#pragma once

#include "Orb/Api.h"

#include <stdexcept>
#include <string>

namespace Orb {

class ROTOR_API RangeError : public std::range_error {
 public:
  explicit RangeError(std::string const& what) : std::range_error(what) {}
  /// The same error reported again under the attribute it was read for, as
  /// "<attribute>: <what>".
  RangeError within(std::string const& attribute) const {
    return RangeError(attribute + ": " + what());
  }
};

}  // namespace Orb
