// Orb::Key: the element of a collection that a notification is about.
#pragma once

#include <any>
#include <iosfwd>
#include <variant>

#include "Orb/Api.h"
#include "Orb/String.h"
#include "Orb/Types.h"

namespace Orb {

/// No key (a scalar attribute), a number, a name, or a value of another key
/// type (for collections keyed by records).
class ROTOR_API Key {
 public:
  Key() = default;
  Key(U32 v) : v_(v) {}
  Key(Name v) : v_(std::move(v)) {}
  Key(char const* v) : v_(Name(v)) {}
  template <class T>
  static Key of(T v) {
    Key k;
    k.v_ = std::any(std::move(v));
    return k;
  }

  bool isNone() const noexcept { return std::holds_alternative<std::monostate>(v_); }
  bool isU32() const noexcept { return std::holds_alternative<U32>(v_); }
  bool isName() const noexcept { return std::holds_alternative<Name>(v_); }
  U32 u32() const { return std::get<U32>(v_); }
  Name const& name() const { return std::get<Name>(v_); }
  /// The key as a T, or null when it holds something else.
  template <class T>
  T const* as() const {
    auto* a = std::get_if<std::any>(&v_);
    return a ? std::any_cast<T>(a) : nullptr;
  }

 private:
  std::variant<std::monostate, U32, Name, std::any> v_;
};

ROTOR_API std::ostream& operator<<(std::ostream& os, Key const& k);

}  // namespace Orb
