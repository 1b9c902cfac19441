// Collecting the tagged values of an engine command.
#include "Rib/CogValueTagArray.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "Orb/Assert.h"

namespace Rib {

namespace {

// Builds the value in its own slot rather than moving a temporary variant in:
// one construction instead of two, and no move of a variant's inactive
// members for the optimiser to reason about.
template <class T>
void pushValue(std::vector<TaggedValue>& values, Orb::U32 tag, T&& v) {
  TaggedValue& slot = values.emplace_back();
  slot.tag = tag;
  slot.data.emplace<std::decay_t<T>>(std::forward<T>(v));
}

}  // namespace

void CogValueTagArray::doPushU32(Orb::U32 tag, Orb::U32 v) {
  pushValue(values_, tag, v);
}

void CogValueTagArray::doPushU8(Orb::U32 tag, Orb::U8 v) {
  pushValue(values_, tag, v);
}

void CogValueTagArray::doPushFlag(Orb::U32 tag, bool b) {
  pushValue(values_, tag, b);
}

void CogValueTagArray::doPushString(Orb::U32 tag, Orb::String s) {
  pushValue(values_, tag, std::move(s));
}

void CogValueTagArray::doPushIpAddr(Orb::U32 tag, Kiwi::IpAddr a) {
  pushValue(values_, tag, a);
}

void CogValueTagArray::doPushIp6Addr(Orb::U32 tag, Kiwi::Ip6Addr const& a) {
  pushValue(values_, tag, a);
}

void CogValueTagArray::doPushScalar(Orb::U32 tag, Orb::U32 count, Orb::U32 const* array) {
  ORB_ASSERT(count == 0 || array != nullptr);
  pushValue(values_, tag, count == 0 ? U32s{} : U32s(array, array + count));
}

void CogValueTagArray::doPushReset(Orb::U32 tag) {
  pushValue(values_, tag, Reset{});
}

void CogValueTagArray::valueIs(Orb::U32 tag, ValueData data) {
  auto sameTag = [tag](TaggedValue const& v) { return v.tag == tag; };
  auto first = std::find_if(values_.begin(), values_.end(), sameTag);
  if (first == values_.end()) {
    values_.push_back({tag, std::move(data)});
    return;
  }
  // The value keeps the place of the first one under its tag, so the engine
  // sees the same order as before; any further ones would contradict it.
  first->data = std::move(data);
  values_.erase(std::remove_if(first + 1, values_.end(), sameTag), values_.end());
}

Orb::Ptr<CogValueTagArray> CogValueTagArrayIs() {
  return Orb::make<CogValueTagArray>();
}

}  // namespace Rib
