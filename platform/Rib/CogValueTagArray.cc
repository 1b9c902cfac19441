// Collecting the tagged values of an engine command.
#include "Rib/CogValueTagArray.h"

#include <algorithm>

#include "Orb/Assert.h"

namespace Rib {

void CogValueTagArray::doPushU32(Orb::U32 tag, Orb::U32 v) {
  values_.push_back({tag, v});
}

void CogValueTagArray::doPushU8(Orb::U32 tag, Orb::U8 v) {
  values_.push_back({tag, v});
}

void CogValueTagArray::doPushFlag(Orb::U32 tag, bool b) {
  values_.push_back({tag, b});
}

void CogValueTagArray::doPushString(Orb::U32 tag, Orb::String s) {
  values_.push_back({tag, std::move(s)});
}

void CogValueTagArray::doPushIpAddr(Orb::U32 tag, Kiwi::IpAddr a) {
  values_.push_back({tag, a});
}

void CogValueTagArray::doPushIp6Addr(Orb::U32 tag, Kiwi::Ip6Addr const& a) {
  values_.push_back({tag, a});
}

void CogValueTagArray::doPushScalar(Orb::U32 tag, Orb::U32 count, Orb::U32 const* array) {
  ORB_ASSERT(count == 0 || array != nullptr);
  values_.push_back({tag, count == 0 ? U32s{} : U32s(array, array + count)});
}

void CogValueTagArray::doPushReset(Orb::U32 tag) {
  values_.push_back({tag, Reset{}});
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
