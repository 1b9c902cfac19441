// Routing::RouteMap::MatchRule: one match condition of a route-map sequence,
// and CommListSet, the community-list names a community match names.
#pragma once

#include <string>

#include "Kiwi/IpAddr.h"
#include "Orb/Api.h"
#include "Orb/OrderedMap.h"
#include "Orb/String.h"
#include "Routing/RouteMap/Types.h"

namespace Routing::RouteMap {

/// Community-list names in name order, each with a flag.
class ROTOR_API CommListSet {
 public:
  void nameIs(Orb::Name const& name, bool flag = true) { names_.set(name, flag); }
  void nameDel(Orb::Name const& name) { names_.erase(name); }
  Orb::OrderedMap<Orb::Name, bool> const& names() const noexcept { return names_; }
  bool empty() const noexcept { return names_.empty(); }
  /// The names joined by single blanks.
  std::string stringValue() const;

  friend bool operator==(CommListSet const&, CommListSet const&) = default;

 private:
  Orb::OrderedMap<Orb::Name, bool> names_;
};

/// A value: the rules of an entry are replaced whole, never edited in place.
struct ROTOR_API MatchRule {
  MatchOption option = MatchOption(0);
  Orb::String strValue;
  Orb::U32 intValue = 0;
  Kiwi::IpAddr ipAddr;
  Kiwi::Ip6Addr ip6Addr;
  Orb::U32 rangeHigh = 0;
  CommListSet commListSet;
  Orb::U32 pathLengthFirst = 0;
  Orb::U32 pathLengthSecond = 0;
  bool invert = false;
  /// Read by the community match options: exact matching of the lists.
  bool exact = false;
  /// Read by the community match options; reserved.
  bool extra = false;

  friend bool operator==(MatchRule const&, MatchRule const&) = default;
};

}  // namespace Routing::RouteMap
