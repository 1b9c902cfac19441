// Building the path of an engine command.
#include "Rib/CogTagArray.h"

#include "Orb/Recycler.h"

namespace Rib {

namespace {
constinit Orb::Recycler recycler(sizeof(CogTagArray), 256);
}  // namespace

void CogTagArray::doPushString(Orb::U32 tag, std::string_view s) {
  auto const begin = static_cast<Orb::U32>(text_.size());
  text_.append(s.data(), s.size());
  slots_.push_back({tag, 0, begin, static_cast<Orb::U32>(s.size()), PathElement::Kind::stringKey});
}

std::vector<PathElement> CogTagArray::elements() const {
  std::vector<PathElement> out;
  out.reserve(size());
  for (std::size_t i = 0; i < size(); ++i) {
    PathElementView const e = (*this)[i];
    out.push_back(PathElement{e.kind, e.tag, e.number, Orb::String(e.text)});
  }
  return out;
}

void* CogTagArray::operator new(std::size_t size) {
  return recycler.take(size);
}

void CogTagArray::operator delete(void* block, std::size_t size) noexcept {
  recycler.give(block, size);
}

RibPath CogTagArrayIs() {
  return Orb::make<CogTagArray>();
}

}  // namespace Rib
