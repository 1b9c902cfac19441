// Routing::RouteMap::CommunitySet: the community set of one route-map set
// clause, shared and immutable once made.
#pragma once

#include <cstdint>
#include <set>

#include "Acl/Enums.h"
#include "Orb/Api.h"
#include "Orb/Ptr.h"
#include "Orb/String.h"

namespace Routing::RouteMap {

/// Changing a clause's set means making a new CommunitySet; holders compare
/// sets by identity.
class ROTOR_API CommunitySet : public Orb::Object {
 public:
  struct Content {
    Acl::CommSetFlag flag = Acl::commSetReplace_;
    /// The clause names community lists instead of giving values.
    bool useCL = false;
    std::set<Orb::Name> listNames;
    std::set<Acl::CommunityValue> values;
  };

  static Orb::Ptr<CommunitySet const> create(Content content);

  Acl::CommSetFlag flag() const noexcept { return c_.flag; }
  bool useCL() const noexcept { return c_.useCL; }
  /// The named community lists, in name order.
  std::set<Orb::Name> const& listNames() const noexcept { return c_.listNames; }
  std::set<Acl::CommunityValue> const& values() const noexcept { return c_.values; }

  /// The live set at `address`, or null when none lives there; lets a text
  /// form that carries the set's address be read back inside the process.
  static Orb::Ptr<CommunitySet const> liveAt(std::uintptr_t address);

 private:
  explicit CommunitySet(Content c);
  ~CommunitySet() override;
  Content c_;
};

}  // namespace Routing::RouteMap
