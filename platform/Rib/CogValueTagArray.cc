// Collecting the tagged values of an engine command.
#include "Rib/CogValueTagArray.h"

#include <cstring>

#include "Orb/Assert.h"

namespace Rib {

constinit Orb::Recycler CogValueTagArray::recycler(sizeof(CogValueTagArray), 256);

void CogValueTagArray::doPushScalar(Orb::U32 tag, Orb::U32 count, Orb::U32 const* array) {
  ORB_ASSERT(count == 0 || array != nullptr);
  pushBytes(tag, ValueKind::scalar, array, count * sizeof(Orb::U32));
}

TaggedValue CogValueTagArray::value(std::size_t i) const {
  Slot const& s = slots_[i];
  char const* bytes = bytes_.data() + s.number;
  switch (s.kind) {
    case ValueKind::u32:
      return {s.tag, s.number};
    case ValueKind::u8:
      return {s.tag, static_cast<Orb::U8>(s.number)};
    case ValueKind::flag:
      return {s.tag, s.number != 0};
    case ValueKind::string:
      return {s.tag, Orb::String(std::string_view(bytes, s.size))};
    case ValueKind::ipAddr:
      return {s.tag, Kiwi::IpAddr(s.number)};
    case ValueKind::ip6Addr: {
      Kiwi::Ip6Addr::Bytes b;
      std::memcpy(b.data(), bytes, b.size());
      return {s.tag, Kiwi::Ip6Addr(b)};
    }
    case ValueKind::scalar: {
      U32s numbers(s.size / sizeof(Orb::U32));
      if (!numbers.empty()) std::memcpy(numbers.data(), bytes, s.size);
      return {s.tag, std::move(numbers)};
    }
    case ValueKind::reset:
      break;
  }
  return {s.tag, Reset{}};
}

std::vector<TaggedValue> CogValueTagArray::values() const {
  std::vector<TaggedValue> out;
  out.reserve(size());
  for (std::size_t i = 0; i < size(); ++i)
    out.push_back(value(i));
  return out;
}

CogValueTagArray::Slot CogValueTagArray::slotOf(Orb::U32 tag, ValueData const& data) {
  // Bytes go to the end of the store; those of a value replaced stay unused.
  std::size_t const before = slots_.size();
  std::visit(
      [&](auto const& v) {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, Orb::U32>)
          doPushU32(tag, v);
        else if constexpr (std::is_same_v<T, Orb::U8>)
          doPushU8(tag, v);
        else if constexpr (std::is_same_v<T, bool>)
          doPushFlag(tag, v);
        else if constexpr (std::is_same_v<T, Orb::String>)
          doPushString(tag, v.view());
        else if constexpr (std::is_same_v<T, Kiwi::IpAddr>)
          doPushIpAddr(tag, v);
        else if constexpr (std::is_same_v<T, Kiwi::Ip6Addr>)
          doPushIp6Addr(tag, v);
        else if constexpr (std::is_same_v<T, U32s>)
          doPushScalar(tag, static_cast<Orb::U32>(v.size()), v.data());
        else
          doPushReset(tag);
      },
      data);
  Slot const slot = slots_[before];
  slots_.truncate(before);
  return slot;
}

void CogValueTagArray::valueIs(Orb::U32 tag, ValueData const& data) {
  Slot const slot = slotOf(tag, data);
  std::size_t first = 0;
  while (first < slots_.size() && slots_[first].tag != tag)
    ++first;
  if (first == slots_.size()) {
    slots_.push_back(slot);
    return;
  }
  // The value keeps the place of the first one under its tag, so the engine
  // sees the same order as before; any further ones would contradict it.
  slots_[first] = slot;
  for (std::size_t i = slots_.size(); i-- > first + 1;)
    if (slots_[i].tag == tag) slots_.erase(i);
}

}  // namespace Rib
