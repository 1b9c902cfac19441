// Building the path of an engine command.
#include "Rib/CogTagArray.h"

namespace Rib {

constinit Orb::Recycler CogTagArray::recycler(sizeof(CogTagArray), 256);

std::vector<PathElement> CogTagArray::elements() const {
  std::vector<PathElement> out;
  out.reserve(size());
  for (std::size_t i = 0; i < size(); ++i) {
    PathElementView const e = (*this)[i];
    out.push_back(PathElement{e.kind, e.tag, e.number, Orb::String(e.text)});
  }
  return out;
}

}  // namespace Rib
