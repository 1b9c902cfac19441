// Acl::AsPathList: one configured AS-path access list, its entries by
// sequence number and the version its writer bumps when a batch of entry
// changes is complete.
#pragma once

#include "Acl/Enums.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "Orb/String.h"

namespace Acl {

/// One entry. Whether its expression compiles under each regular-expression
/// mode is decided by whoever writes the configuration; readers only look at
/// the two flags.
struct AsPathEntry {
  Orb::U32 seqno = 0;
  Orb::String regex;
  MatchPermit action = permit;
  BGPOrigin origin = originIgp;
  bool validInMode0 = true;
  bool validInMode1 = true;

  friend bool operator==(AsPathEntry const&, AsPathEntry const&) = default;
};

class AsPathList : public Orb::Entity {
 public:
  using Entries = Orb::OrderedMap<Orb::U32, AsPathEntry>;

  enum Attribute : Orb::AttributeId {
    pathEntry_ = 1,  // key: the sequence number
    version_,
  };

  /// Made by the owning configuration, which is its parent.
  static Orb::Ptr<AsPathList> create(Orb::Name name, Orb::Entity const* parent) {
    return new AsPathList(std::move(name), parent);
  }

  /// Entries in ascending sequence number.
  Entries const& pathEntry() const noexcept { return entries_; }
  AsPathEntry const* pathEntry(Orb::U32 seqno) const { return entries_.get(seqno); }
  /// Stores the entry under its sequence number, replacing one of the same
  /// number in place; notifies only a change.
  void pathEntryIs(AsPathEntry const& entry) {
    if (AsPathEntry const* old = entries_.get(entry.seqno); old && *old == entry) return;
    entries_.set(entry.seqno, entry);
    notify(pathEntry_, Orb::Key(entry.seqno));
  }
  void pathEntryDel(Orb::U32 seqno) {
    if (entries_.erase(seqno)) notify(pathEntry_, Orb::Key(seqno));
  }

  Orb::U32 version() const noexcept { return versionValue_; }
  /// Stores the version and notifies, even when it is unchanged: every
  /// notification marks the end of a batch.
  void versionIs(Orb::U32 v) {
    versionValue_ = v;
    notify(version_);
  }
  void versionInc() { versionIs(versionValue_ + 1); }

 private:
  AsPathList(Orb::Name name, Orb::Entity const* parent) : Entity(std::move(name)) {
    parentIs(parent);
  }

  Entries entries_;
  Orb::U32 versionValue_ = 0;
};

}  // namespace Acl
