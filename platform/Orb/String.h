// Orb::String and Orb::Name: immutable, comparable, hashable text.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/Hash.h"

namespace Orb {

/// Immutable text. Comparison is byte-wise, so order does not depend on the
/// locale.
class ROTOR_API String {
 public:
  String() = default;
  String(char const* s) : s_(s ? s : "") {}
  String(std::string s) : s_(std::move(s)) {}
  String(std::string_view s) : s_(s) {}

  std::string const& str() const noexcept { return s_; }
  std::string_view view() const noexcept { return s_; }
  /// Lets a String go wherever a string_view is taken, without a copy.
  operator std::string_view() const noexcept { return s_; }
  char const* c_str() const noexcept { return s_.c_str(); }
  std::size_t size() const noexcept { return s_.size(); }
  bool empty() const noexcept { return s_.empty(); }

  HashValue hash(HashValue seed = 0) const noexcept { return hashOf(view(), seed); }

  friend bool operator==(String const& a, String const& b) noexcept { return a.s_ == b.s_; }
  friend std::strong_ordering operator<=>(String const& a, String const& b) noexcept {
    return a.s_.compare(b.s_) <=> 0;
  }
  friend String operator+(String const& a, String const& b) { return String(a.s_ + b.s_); }
  friend String operator+(String const& a, char const* b) { return String(a.s_ + b); }
  friend String operator+(char const* a, String const& b) { return String(a + b.s_); }

  /// printf-style formatting into a new String.
  static String format(char const* fmt, ...) __attribute__((format(printf, 1, 2)));

 private:
  std::string s_;
};

ROTOR_API std::ostream& operator<<(std::ostream& os, String const& s);

/// A String used as a key: names key the named collections and entities.
class ROTOR_API Name : public String {
 public:
  using String::String;
  Name() = default;
  Name(String const& s) : String(s) {}
};

template <>
struct Hasher<String> {
  HashValue operator()(String const& k) const noexcept { return k.hash(0); }
};
template <>
struct Hasher<Name> {
  HashValue operator()(Name const& k) const noexcept { return k.hash(0); }
};

}  // namespace Orb
