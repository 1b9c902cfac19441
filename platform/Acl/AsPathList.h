// Acl::AsPathList: one configured AS-path access list, its entries by
// sequence number and the version its writer bumps when a batch of entry
// changes is complete.
#pragma once

#include "Acl/Enums.h"
#include "Acl/VersionedList.h"
#include "Orb/Api.h"
#include "Orb/String.h"

namespace Acl {

/// One entry. Whether its expression compiles under each regular-expression
/// mode is decided by whoever writes the configuration; readers only look at
/// the two flags.
struct ROTOR_API AsPathEntry {
  Orb::U32 seqno = 0;
  Orb::String regex;
  MatchPermit action = permit;
  BGPOrigin origin = originIgp;
  bool validInMode0 = true;
  bool validInMode1 = true;

  friend bool operator==(AsPathEntry const&, AsPathEntry const&) = default;
};

class ROTOR_API AsPathList : public VersionedList<AsPathEntry> {
 public:
  static constexpr Orb::AttributeId pathEntry_ = entry_;

  static Orb::Ptr<AsPathList> create(Orb::Name name, Orb::Entity const* parent) {
    return new AsPathList(std::move(name), parent);
  }

  /// Entries in ascending sequence number.
  Entries const& pathEntry() const noexcept { return entries(); }
  AsPathEntry const* pathEntry(Orb::U32 seqno) const { return entry(seqno); }
  void pathEntryIs(AsPathEntry const& entry) { entryIs(entry); }
  void pathEntryDel(Orb::U32 seqno) { entryDel(seqno); }

 private:
  using VersionedList::VersionedList;
};

}  // namespace Acl
