// Quoting and piecewise reading of text forms.
#include "Orb/Text.h"

#include <cstdio>

namespace Orb {

std::string quote(std::string_view s) {
  static char const hex[] = "0123456789abcdef";
  std::string out;
  out.reserve(s.size() + 2);
  out += '"';
  for (char ch : s) {
    auto c = static_cast<unsigned char>(ch);
    if (c == '\\' || c == '"') {
      out += '\\';
      out += ch;
    } else if (c < 0x20 || c > 0x7e) {
      out += "\\x";
      out += hex[c >> 4];
      out += hex[c & 0xf];
    } else {
      out += ch;
    }
  }
  out += '"';
  return out;
}

std::string valueToStrep(String const& s) {
  return quote(s.view());
}

std::string pointerToStrep(void const* p) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "0x%llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(p)));
  return buf;
}

void TextReader::fail(std::string const& expected) const {
  throw RangeError("expected " + expected + " at offset " + std::to_string(pos_));
}

void TextReader::expect(std::string_view literal) {
  if (!accept(literal)) fail(quote(literal));
}

bool TextReader::accept(std::string_view literal) {
  if (text_.substr(pos_).substr(0, literal.size()) != literal) return false;
  pos_ += literal.size();
  return true;
}

namespace {
int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
}  // namespace

String TextReader::readQuoted() {
  if (pos_ >= text_.size() || text_[pos_] != '"') fail("a quoted string");
  std::string out;
  std::size_t i = pos_ + 1;
  while (i < text_.size() && text_[i] != '"') {
    char c = text_[i];
    if (c != '\\') {
      out += c;
      ++i;
      continue;
    }
    // A backslash with nothing after it leaves the string unclosed.
    if (i + 1 >= text_.size()) fail("a closing quote");
    char e = text_[i + 1];
    if (e == '\\' || e == '"') {
      out += e;
      i += 2;
    } else if (e == 'x' && i + 3 < text_.size() && hexDigit(text_[i + 2]) >= 0 &&
               hexDigit(text_[i + 3]) >= 0) {
      out += static_cast<char>(hexDigit(text_[i + 2]) * 16 + hexDigit(text_[i + 3]));
      i += 4;
    } else {
      pos_ = i;
      fail("an escape \\\\, \\\" or \\xHH");
    }
  }
  if (i >= text_.size()) fail("a closing quote");
  pos_ = i + 1;
  return String(std::move(out));
}

long long TextReader::readInteger() {
  std::size_t start = pos_;
  bool negative = accept("-");
  unsigned long long v = 0;
  std::size_t digits = 0;
  while (pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9') {
    v = v * 10 + static_cast<unsigned>(text_[pos_] - '0');
    if (v > (1ULL << 40)) {
      pos_ = start;
      fail("a number of at most 32 bits");
    }
    ++pos_;
    ++digits;
  }
  if (digits == 0) {
    pos_ = start;
    fail("a decimal number");
  }
  return negative ? -static_cast<long long>(v) : static_cast<long long>(v);
}

U32 TextReader::readU32() {
  std::size_t start = pos_;
  long long v = readInteger();
  if (v < 0 || v > 0xffffffffLL) {
    pos_ = start;
    fail("a number from 0 to 4294967295");
  }
  return static_cast<U32>(v);
}

std::uintptr_t TextReader::readPointer() {
  expect("0x");
  std::uintptr_t v = 0;
  std::size_t digits = 0;
  while (pos_ < text_.size() && hexDigit(text_[pos_]) >= 0) {
    v = v * 16 + static_cast<std::uintptr_t>(hexDigit(text_[pos_]));
    ++pos_;
    if (++digits > 2 * sizeof(std::uintptr_t)) fail("a pointer");
  }
  if (digits == 0) fail("hexadecimal digits");
  return v;
}

std::string_view TextReader::readUntil(std::string_view stops) {
  std::size_t end = text_.find_first_of(stops, pos_);
  if (end == std::string_view::npos) end = text_.size();
  std::string_view out = text_.substr(pos_, end - pos_);
  pos_ = end;
  return out;
}

void TextReader::expectEnd() {
  if (!atEnd()) fail("the end of the text");
}

}  // namespace Orb
