// Acl::VersionedList: what every list kind with numbered entries shares: the
// entries by sequence number, and the version its writer bumps when a batch
// of entry changes is complete.
#pragma once

#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"

namespace Acl {

/// `E` has a `seqno` and compares with ==. The kinds name the entry
/// accessors after their own attribute; the attribute ids are shared.
template <class E>
class VersionedList : public Orb::Entity {
 public:
  using Entry = E;
  using Entries = Orb::OrderedMap<Orb::U32, E>;

  enum Attribute : Orb::AttributeId {
    entry_ = 1,  // key: the sequence number
    version_,
  };

  Orb::U32 version() const noexcept { return versionValue_; }
  /// Stores the version and notifies, even when it is unchanged: every
  /// notification marks the end of a batch.
  void versionIs(Orb::U32 v) {
    versionValue_ = v;
    notify(version_);
  }
  void versionInc() { versionIs(versionValue_ + 1); }
  /// Counts the entry writes that changed the collection, so a reader
  /// walking the entries across calls can tell whether its place still holds.
  Orb::U64 entryWrites() const noexcept { return entryWrites_; }

 protected:
  /// Made by the owning configuration, which is its parent.
  VersionedList(Orb::Name name, Orb::Entity const* parent) : Entity(std::move(name)) {
    parentIs(parent);
  }

  /// Entries in ascending sequence number.
  Entries const& entries() const noexcept { return entries_; }
  E const* entry(Orb::U32 seqno) const { return entries_.get(seqno); }
  /// Stores the entry under its sequence number, replacing one of the same
  /// number in place; notifies only a change.
  void entryIs(E const& entry) {
    // One search whether the number is new or not.
    auto [it, added] = entries_.insert(entry.seqno, entry);
    if (!added) {
      if (it->second == entry) return;
      it->second = entry;
    }
    ++entryWrites_;
    notify(entry_, Orb::Key(entry.seqno));
  }
  void entryDel(Orb::U32 seqno) {
    if (entries_.erase(seqno)) {
      ++entryWrites_;
      notify(entry_, Orb::Key(seqno));
    }
  }

 private:
  Entries entries_;
  Orb::U32 versionValue_ = 0;
  Orb::U64 entryWrites_ = 0;
};

}  // namespace Acl
