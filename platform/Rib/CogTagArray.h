// Rib::CogTagArray: the path of an engine command, and RibPath, the shared
// pointer to one.
#pragma once

#include <vector>

#include "Orb/Ptr.h"
#include "Orb/String.h"

namespace Rib {

/// One element of a path: a node kind (path id), or a key selecting one
/// instance of the node pushed before it.
struct PathElement {
  enum class Kind : Orb::U8 { pathId, stringKey, u32Key };
  Kind kind;
  Orb::U32 tag;  // the path id, or the key's tag
  Orb::U32 number = 0;
  Orb::String text;

  friend bool operator==(PathElement const&, PathElement const&) = default;
};

/// An ordered path through the engine's configuration tree, built by appending
/// one element at a time.
class CogTagArray : public Orb::Object {
 public:
  // Room for the deepest path the library builds: one allocation per path.
  CogTagArray() { elements_.reserve(8); }
  void doPushPath(Orb::U32 id);
  void doPushString(Orb::U32 tag, Orb::String s);
  void doPushU32(Orb::U32 tag, Orb::U32 v);

  std::vector<PathElement> const& elements() const noexcept { return elements_; }

 private:
  std::vector<PathElement> elements_;
};

using RibPath = Orb::Ptr<CogTagArray>;

/// A new, empty path.
RibPath CogTagArrayIs();

}  // namespace Rib
