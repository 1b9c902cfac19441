// Text forms of the runtime's 32-bit enumerations: the value's name where it
// has one, its decimal number otherwise, and parsing of either.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Orb/RangeError.h"
#include "Orb/Types.h"

namespace Orb {

template <class E>
struct EnumName {
  E value;
  char const* text;
};

template <class E>
std::string enumToStrep(E v, std::span<EnumName<E> const> names) {
  for (auto const& n : names) {
    if (n.value == v) return n.text;
  }
  return std::to_string(static_cast<U32>(v));
}

/// Reads a name of `names` or a decimal number; anything else is a range
/// error that names the enumeration.
template <class E>
E enumFromStrep(std::string_view text, std::span<EnumName<E> const> names, char const* type) {
  for (auto const& n : names) {
    if (text == n.text) return n.value;
  }
  if (!text.empty() && text.size() <= 10 && text.find_first_not_of("0123456789") == text.npos) {
    unsigned long long v = std::stoull(std::string(text));
    if (v <= 0xffffffffULL) return static_cast<E>(static_cast<U32>(v));
  }
  throw RangeError(std::string(type) + ": unknown value '" + std::string(text) + "'");
}

}  // namespace Orb
