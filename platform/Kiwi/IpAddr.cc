// Reading and writing the text forms of IPv4 and IPv6 addresses. Parsing is
// strict: configuration that merely looks like an address must not slip in.
#include "Kiwi/IpAddr.h"

#include <cstring>
#include <optional>
#include <ostream>
#include <vector>

#include "Orb/RangeError.h"

namespace Kiwi {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The dotted quad as a host-order number, or nothing when the text is not
// exactly four decimal fields of one to three digits, each at most 255.
std::optional<Orb::U32> parseDottedQuad(std::string_view text) {
  Orb::U32 result = 0;
  std::size_t pos = 0;
  for (int field = 0; field < 4; ++field) {
    if (field > 0) {
      if (pos >= text.size() || text[pos] != '.') return std::nullopt;
      ++pos;
    }
    std::size_t start = pos;
    Orb::U32 v = 0;
    while (pos < text.size() && isDigit(text[pos]) && pos - start < 3) {
      v = v * 10 + static_cast<Orb::U32>(text[pos] - '0');
      ++pos;
    }
    if (pos == start || v > 255) return std::nullopt;
    // A fourth digit would have been left unread; it is not a separator.
    if (pos < text.size() && isDigit(text[pos])) return std::nullopt;
    result = (result << 8) | v;
  }
  if (pos != text.size()) return std::nullopt;
  return result;
}

[[noreturn]] void badIp6(std::string_view text, char const* why) {
  throw Orb::RangeError("Ip6Addr: '" + std::string(text) + "' is not an IPv6 address (" + why +
                        ")");
}

std::vector<std::string_view> splitColons(std::string_view part) {
  std::vector<std::string_view> fields;
  if (part.empty()) return fields;
  std::size_t start = 0;
  for (;;) {
    std::size_t colon = part.find(':', start);
    if (colon == std::string_view::npos) {
      fields.push_back(part.substr(start));
      return fields;
    }
    fields.push_back(part.substr(start, colon - start));
    start = colon + 1;
  }
}

}  // namespace

IpAddr IpAddr::fromString(std::string_view text) {
  auto v = parseDottedQuad(text);
  if (!v) {
    throw Orb::RangeError("IpAddr: '" + std::string(text) + "' is not a dotted-quad address");
  }
  return IpAddr(*v);
}

Orb::U32 IpAddr::networkOrder() const noexcept {
  // Laying the bytes out most significant first and reading them back as a
  // native number gives htonl's result whatever the host's byte order.
  unsigned char const bytes[4] = {
      static_cast<unsigned char>(v_ >> 24), static_cast<unsigned char>(v_ >> 16),
      static_cast<unsigned char>(v_ >> 8), static_cast<unsigned char>(v_)};
  Orb::U32 out;
  std::memcpy(&out, bytes, sizeof out);
  return out;
}

std::string IpAddr::stringValue() const {
  std::string out;
  for (int shift = 24; shift >= 0; shift -= 8) {
    if (shift != 24) out += '.';
    out += std::to_string((v_ >> shift) & 0xff);
  }
  return out;
}

Ip6Addr Ip6Addr::fromString(std::string_view text) {
  std::size_t gap = text.find("::");
  bool const hasGap = gap != std::string_view::npos;
  std::vector<std::string_view> head;
  std::vector<std::string_view> tail;
  if (hasGap) {
    if (text.find("::", gap + 1) != std::string_view::npos) badIp6(text, "more than one '::'");
    head = splitColons(text.substr(0, gap));
    tail = splitColons(text.substr(gap + 2));
  } else {
    head = splitColons(text);
  }

  // Only the very last field of the text may be a dotted quad, standing for
  // the low 32 bits.
  std::vector<std::string_view>& last = hasGap ? tail : head;
  std::optional<Orb::U32> quad;
  if (!last.empty() && last.back().find('.') != std::string_view::npos) {
    quad = parseDottedQuad(last.back());
    if (!quad) badIp6(text, "bad trailing dotted quad");
    last.pop_back();
  }

  std::size_t const groups = head.size() + tail.size() + (quad ? 2 : 0);
  if (!hasGap && groups != 8) badIp6(text, "not eight groups");
  if (hasGap && groups > 7) badIp6(text, "too many groups around '::'");

  auto groupValue = [&](std::string_view field) -> Orb::U32 {
    if (field.empty() || field.size() > 4) badIp6(text, "a group needs one to four hex digits");
    Orb::U32 v = 0;
    for (char c : field) {
      int h = hexValue(c);
      if (h < 0) badIp6(text, "a group needs one to four hex digits");
      v = v * 16 + static_cast<Orb::U32>(h);
    }
    return v;
  };

  Bytes b{};
  auto put = [&](std::size_t group, Orb::U32 v) {
    b[2 * group] = static_cast<Orb::U8>(v >> 8);
    b[2 * group + 1] = static_cast<Orb::U8>(v);
  };
  for (std::size_t i = 0; i < head.size(); ++i)
    put(i, groupValue(head[i]));
  std::size_t const tailStart = 8 - tail.size() - (quad ? 2 : 0);
  for (std::size_t i = 0; i < tail.size(); ++i)
    put(tailStart + i, groupValue(tail[i]));
  if (quad) {
    put(6, *quad >> 16);
    put(7, *quad & 0xffff);
  }
  return Ip6Addr(b);
}

std::string Ip6Addr::stringValue() const {
  Orb::U32 groups[8];
  for (std::size_t i = 0; i < 8; ++i) {
    groups[i] = (Orb::U32{b_[2 * i]} << 8) | b_[2 * i + 1];
  }

  // IPv4-mapped addresses read better, and are conventionally written, with
  // the IPv4 part as a dotted quad.
  bool const mapped = groups[0] == 0 && groups[1] == 0 && groups[2] == 0 && groups[3] == 0 &&
                      groups[4] == 0 && groups[5] == 0xffff;
  if (mapped) {
    return "::ffff:" + IpAddr((groups[6] << 16) | groups[7]).stringValue();
  }

  // The first longest run of at least two zero groups becomes "::"; a lone
  // zero group is written out so that the text has a single reading.
  std::size_t bestStart = 8;
  std::size_t bestLen = 1;
  for (std::size_t i = 0; i < 8;) {
    if (groups[i] != 0) {
      ++i;
      continue;
    }
    std::size_t j = i;
    while (j < 8 && groups[j] == 0)
      ++j;
    if (j - i > bestLen) {
      bestStart = i;
      bestLen = j - i;
    }
    i = j;
  }

  static char const hex[] = "0123456789abcdef";
  auto appendGroup = [](std::string& out, Orb::U32 v) {
    bool started = false;
    for (int shift = 12; shift >= 0; shift -= 4) {
      Orb::U32 nibble = (v >> shift) & 0xf;
      if (nibble != 0 || started || shift == 0) {
        out += hex[nibble];
        started = true;
      }
    }
  };

  std::string out;
  for (std::size_t i = 0; i < 8; ++i) {
    if (i == bestStart) {
      out += "::";
      i += bestLen - 1;
      continue;
    }
    if (!out.empty() && out.back() != ':') out += ':';
    appendGroup(out, groups[i]);
  }
  return out;
}

std::ostream& operator<<(std::ostream& os, IpAddr a) {
  return os << a.stringValue();
}

std::ostream& operator<<(std::ostream& os, Ip6Addr const& a) {
  return os << a.stringValue();
}

}  // namespace Kiwi
