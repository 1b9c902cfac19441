// Rib::CogTagArray: the path of an engine command, and RibPath, the shared
// pointer to one.
#pragma once

#include <string_view>
#include <vector>

#include "Orb/Api.h"
#include "Orb/InlineVector.h"
#include "Orb/Ptr.h"
#include "Orb/Recycler.h"
#include "Orb/String.h"

namespace Rib {

/// One element of a path: a node kind (path id), or a key selecting one
/// instance of the node pushed before it. The owning form, kept by records.
struct ROTOR_API PathElement {
  enum class Kind : Orb::U8 { pathId, stringKey, u32Key };
  Kind kind;
  Orb::U32 tag;  // the path id, or the key's tag
  Orb::U32 number = 0;
  Orb::String text;

  friend bool operator==(PathElement const&, PathElement const&) = default;
};

/// One element as the path holds it; `text` lives as long as the path.
struct ROTOR_API PathElementView {
  PathElement::Kind kind;
  Orb::U32 tag;
  Orb::U32 number;
  std::string_view text;
};

/// An ordered path through the engine's configuration tree, built by appending
/// one element at a time. Elements and key texts are stored inline up to the
/// depth and length the library's paths reach, so building one allocates
/// nothing beyond the (recycled) object itself.
class ROTOR_API CogTagArray : public Orb::Object {
 public:
  CogTagArray() noexcept {}
  void doPushPath(Orb::U32 id) { slots_.push_back({id, 0, 0, 0, PathElement::Kind::pathId}); }
  void doPushString(Orb::U32 tag, std::string_view s) {
    auto const begin = static_cast<Orb::U32>(text_.size());
    text_.append(s.data(), s.size());
    slots_.push_back(
        {tag, 0, begin, static_cast<Orb::U32>(s.size()), PathElement::Kind::stringKey});
  }
  void doPushU32(Orb::U32 tag, Orb::U32 v) {
    slots_.push_back({tag, v, 0, 0, PathElement::Kind::u32Key});
  }

  /// Elements in push order.
  std::size_t size() const noexcept { return slots_.size(); }
  PathElementView operator[](std::size_t i) const noexcept {
    Slot const& s = slots_[i];
    return {s.kind, s.tag, s.number, std::string_view(text_.data() + s.textBegin, s.textSize)};
  }
  /// An owning copy of the elements.
  std::vector<PathElement> elements() const;

  static void* operator new(std::size_t size) { return recycler.take(size); }
  static void operator delete(void* block, std::size_t size) noexcept {
    recycler.give(block, size);
  }

 private:
  struct Slot {
    Orb::U32 tag;
    Orb::U32 number;
    Orb::U32 textBegin;
    Orb::U32 textSize;
    PathElement::Kind kind;
  };
  Orb::InlineVector<Slot, 8> slots_;
  Orb::InlineVector<char, 112> text_;
  static Orb::Recycler recycler;
};

using RibPath = Orb::Ptr<CogTagArray>;

/// A new, empty path.
inline RibPath CogTagArrayIs() {
  return Orb::make<CogTagArray>();
}

}  // namespace Rib
