// Text forms of values: quoting of strings, and a reader that takes a text
// form apart piece by piece with range errors naming what was expected.
#pragma once

#include <string>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/RangeError.h"
#include "Orb/String.h"
#include "Orb/Types.h"

namespace Orb {

/// `s` in double quotes; `\` and `"` are escaped with a backslash and every
/// byte below 0x20 or above 0x7e is written as \xHH (lower-case hex), so
/// binary values print exactly and read back the same.
ROTOR_API std::string quote(std::string_view s);
/// The quoted text form of a String.
ROTOR_API std::string valueToStrep(String const& s);
/// A pointer's text form: "0x" and lower-case hex digits ("0x0" for null).
ROTOR_API std::string pointerToStrep(void const* p);

/// Reads a text form from left to right. Every failure raises a RangeError
/// that says what was expected where.
class ROTOR_API TextReader {
 public:
  explicit TextReader(std::string_view text) : text_(text) {}

  /// Consumes `literal` exactly.
  void expect(std::string_view literal);
  /// Consumes `literal` when it comes next.
  bool accept(std::string_view literal);
  /// A quoted string as `quote` writes it.
  String readQuoted();
  U32 readU32();
  /// A whole number in decimal, possibly negative.
  long long readInteger();
  /// A pointer text as `pointerToStrep` writes it.
  std::uintptr_t readPointer();
  /// Characters up to (not including) the first of `stops`, or the end.
  std::string_view readUntil(std::string_view stops);
  void expectEnd();
  bool atEnd() const noexcept { return pos_ == text_.size(); }
  std::size_t position() const noexcept { return pos_; }

 private:
  [[noreturn]] void fail(std::string const& expected) const;
  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace Orb
