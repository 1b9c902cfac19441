// Orb::ShortText: text assembled from pieces in a buffer inside the object,
// for engine key names that live only as long as the command being built.
#pragma once

#include <charconv>
#include <ostream>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/InlineVector.h"
#include "Orb/Types.h"

namespace Orb {

/// Up to 96 characters stay inline; longer text spills to the heap.
class ROTOR_API ShortText {
 public:
  ShortText() noexcept {}
  explicit ShortText(std::string_view a, std::string_view b = {}) {
    append(a);
    append(b);
  }

  ShortText& append(std::string_view s) {
    buf_.append(s.data(), s.size());
    return *this;
  }
  /// Appends `v` in decimal.
  ShortText& append(U32 v) {
    char digits[10];
    auto const end = std::to_chars(digits, digits + sizeof digits, v).ptr;
    buf_.append(digits, static_cast<std::size_t>(end - digits));
    return *this;
  }

  std::string_view view() const noexcept { return {buf_.data(), buf_.size()}; }
  operator std::string_view() const noexcept { return view(); }

  friend std::ostream& operator<<(std::ostream& os, ShortText const& t) { return os << t.view(); }

 private:
  InlineVector<char, 96> buf_;
};

}  // namespace Orb
