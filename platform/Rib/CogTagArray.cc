// Building the path of an engine command.
#include "Rib/CogTagArray.h"

namespace Rib {

void CogTagArray::doPushPath(Orb::U32 id) {
  elements_.push_back(PathElement{PathElement::Kind::pathId, id, 0, {}});
}

void CogTagArray::doPushString(Orb::U32 tag, Orb::String s) {
  elements_.push_back(PathElement{PathElement::Kind::stringKey, tag, 0, std::move(s)});
}

void CogTagArray::doPushU32(Orb::U32 tag, Orb::U32 v) {
  elements_.push_back(PathElement{PathElement::Kind::u32Key, tag, v, {}});
}

RibPath CogTagArrayIs() {
  return Orb::make<CogTagArray>();
}

}  // namespace Rib
