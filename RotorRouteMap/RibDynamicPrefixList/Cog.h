// RibDynamicPrefixList::Cog: the engine commands of dynamic prefix lists. The
// lists live in one node shared by the whole agent, so unlike Tessel::Cog it
// serves no VRF; every operation commits.
#pragma once

#include "Orb/Api.h"
#include "Orb/Ptr.h"
#include "Orb/String.h"
#include "Rib/CogOp.h"

namespace RibDynamicPrefixList {

class ROTOR_API Cog : public Orb::Object {
 public:
  Cog() = default;

  /// The node of all dynamic prefix lists: 512, 627.
  Rib::RibPath cogPath() const;
  /// Sends the list whole: the list, its IPv4 and IPv6 prefix lists when
  /// named, and its match map even when empty; then commits.
  void doAddDynamicPrefixListEntry(Orb::String const& dynPfxListName, Orb::String const& v4PfxName,
                                   Orb::String const& v6PfxName, Orb::String const& matchMapName);
  /// Removes the list and commits.
  void doDelDynamicPrefixList(Orb::String const& dynPfxListName);
};

/// The only way the dynamic prefix-list reactor obtains a command object.
ROTOR_API Orb::Ptr<Cog> cogFactory();

}  // namespace RibDynamicPrefixList
