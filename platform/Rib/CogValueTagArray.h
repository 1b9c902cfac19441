// Rib::CogValueTagArray: the tagged values of an engine command.
#pragma once

#include <variant>
#include <vector>

#include "Kiwi/IpAddr.h"
#include "Orb/Ptr.h"
#include "Orb/String.h"

namespace Rib {

/// A value's content; `Reset` returns the attribute under the tag to its
/// default.
struct Reset {
  friend bool operator==(Reset, Reset) = default;
};
using U32s = std::vector<Orb::U32>;
using ValueData =
    std::variant<Orb::U32, Orb::U8, bool, Orb::String, Kiwi::IpAddr, Kiwi::Ip6Addr, U32s, Reset>;

struct TaggedValue {
  Orb::U32 tag;
  ValueData data;

  friend bool operator==(TaggedValue const&, TaggedValue const&) = default;
};

/// The values of one command in push order. Tags restart at 0 for every
/// operation and mean something only within it.
class CogValueTagArray : public Orb::Object {
 public:
  // Most commands carry at most four values: one allocation per command.
  CogValueTagArray() { values_.reserve(4); }
  void doPushU32(Orb::U32 tag, Orb::U32 v);
  void doPushU8(Orb::U32 tag, Orb::U8 v);
  void doPushFlag(Orb::U32 tag, bool b);
  void doPushString(Orb::U32 tag, Orb::String s);
  void doPushIpAddr(Orb::U32 tag, Kiwi::IpAddr a);
  void doPushIp6Addr(Orb::U32 tag, Kiwi::Ip6Addr const& a);
  void doPushScalar(Orb::U32 tag, Orb::U32 count, Orb::U32 const* array);
  void doPushReset(Orb::U32 tag);

  std::vector<TaggedValue> const& values() const noexcept { return values_; }
  /// Sets the value under `tag`, replacing one already there.
  void valueIs(Orb::U32 tag, ValueData data);

 private:
  std::vector<TaggedValue> values_;
};

/// A new, empty value array.
Orb::Ptr<CogValueTagArray> CogValueTagArrayIs();

}  // namespace Rib
