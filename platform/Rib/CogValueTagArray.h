// Rib::CogValueTagArray: the tagged values of an engine command.
#pragma once

#include <string_view>
#include <variant>
#include <vector>

#include "Kiwi/IpAddr.h"
#include "Orb/Api.h"
#include "Orb/InlineVector.h"
#include "Orb/Ptr.h"
#include "Orb/Recycler.h"
#include "Orb/String.h"

namespace Rib {

/// A value's content; `Reset` returns the attribute under the tag to its
/// default.
struct ROTOR_API Reset {
  friend bool operator==(Reset, Reset) = default;
};
using U32s = std::vector<Orb::U32>;
using ValueData =
    std::variant<Orb::U32, Orb::U8, bool, Orb::String, Kiwi::IpAddr, Kiwi::Ip6Addr, U32s, Reset>;

/// One value in its owning form, as records keep it.
struct ROTOR_API TaggedValue {
  Orb::U32 tag;
  ValueData data;

  friend bool operator==(TaggedValue const&, TaggedValue const&) = default;
};

/// The kinds of value, numbered as the alternatives of ValueData.
enum class ValueKind : Orb::U8 { u32, u8, flag, string, ipAddr, ip6Addr, scalar, reset };

/// The values of one command in push order. Tags restart at 0 for every
/// operation and mean something only within it. Values and their bytes are
/// stored inline up to what one command of the library carries.
class ROTOR_API CogValueTagArray : public Orb::Object {
 public:
  CogValueTagArray() noexcept {}
  void doPushU32(Orb::U32 tag, Orb::U32 v) { slots_.push_back({tag, v, 0, ValueKind::u32}); }
  void doPushU8(Orb::U32 tag, Orb::U8 v) { slots_.push_back({tag, v, 0, ValueKind::u8}); }
  void doPushFlag(Orb::U32 tag, bool b) {
    slots_.push_back({tag, b ? 1u : 0u, 0, ValueKind::flag});
  }
  void doPushString(Orb::U32 tag, std::string_view s) {
    pushBytes(tag, ValueKind::string, s.data(), s.size());
  }
  void doPushIpAddr(Orb::U32 tag, Kiwi::IpAddr a) {
    slots_.push_back({tag, a.value(), 0, ValueKind::ipAddr});
  }
  void doPushIp6Addr(Orb::U32 tag, Kiwi::Ip6Addr const& a) {
    pushBytes(tag, ValueKind::ip6Addr, a.bytes().data(), a.bytes().size());
  }
  void doPushScalar(Orb::U32 tag, Orb::U32 count, Orb::U32 const* array);
  void doPushReset(Orb::U32 tag) { slots_.push_back({tag, 0, 0, ValueKind::reset}); }

  /// Values in push order.
  std::size_t size() const noexcept { return slots_.size(); }
  Orb::U32 tag(std::size_t i) const noexcept { return slots_[i].tag; }
  ValueKind kind(std::size_t i) const noexcept { return slots_[i].kind; }
  /// The value at `i` in its owning form.
  TaggedValue value(std::size_t i) const;
  /// An owning copy of all values.
  std::vector<TaggedValue> values() const;
  /// Sets the value under `tag`, replacing one already there.
  void valueIs(Orb::U32 tag, ValueData const& data);

  static void* operator new(std::size_t size) { return recycler.take(size); }
  static void operator delete(void* block, std::size_t size) noexcept {
    recycler.give(block, size);
  }

 private:
  // A number is held in `number`; bytes (a string, an IPv6 address, an array
  // of numbers) at `number` in `bytes_`, `size` of them.
  struct Slot {
    Orb::U32 tag;
    Orb::U32 number;
    Orb::U32 size;
    ValueKind kind;
  };
  void pushBytes(Orb::U32 tag, ValueKind kind, void const* from, std::size_t size) {
    auto const begin = static_cast<Orb::U32>(bytes_.size());
    bytes_.append(static_cast<char const*>(from), size);
    slots_.push_back({tag, begin, static_cast<Orb::U32>(size), kind});
  }
  Slot slotOf(Orb::U32 tag, ValueData const& data);

  Orb::InlineVector<Slot, 6> slots_;
  Orb::InlineVector<char, 64> bytes_;
  static Orb::Recycler recycler;
};

/// A new, empty value array.
inline Orb::Ptr<CogValueTagArray> CogValueTagArrayIs() {
  return Orb::make<CogValueTagArray>();
}

}  // namespace Rib
