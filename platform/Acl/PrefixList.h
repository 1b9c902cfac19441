// Acl::PrefixList and Acl::Ipv6PrefixList: one configured prefix list, its
// entries by sequence number and the version its writer bumps when a batch of
// entry changes is complete.
#pragma once

#include "Acl/Enums.h"
#include "Kiwi/Prefix.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"

namespace Acl {

/// One entry of a prefix list. A zero `ge` or `le` is not configured.
template <class P>
struct BasicPrefixListEntry {
  Orb::U32 seqno = 0;
  MatchPermit action = permit;
  P prefix{};
  Orb::U32 ge = 0;
  Orb::U32 le = 0;

  friend bool operator==(BasicPrefixListEntry const&, BasicPrefixListEntry const&) = default;
};

using PrefixListEntry = BasicPrefixListEntry<Kiwi::Prefix>;
using Ipv6PrefixListEntry = BasicPrefixListEntry<Kiwi::Ip6Prefix>;

/// The two families share one shape; `P` is the family's prefix type.
template <class P>
class BasicPrefixList : public Orb::Entity {
 public:
  using Prefix = P;
  using Entry = BasicPrefixListEntry<P>;
  using Entries = Orb::OrderedMap<Orb::U32, Entry>;

  enum Attribute : Orb::AttributeId {
    prefixEntry_ = 1,  // key: the sequence number
    version_,
  };

  /// Made by the owning configuration, which is its parent.
  static Orb::Ptr<BasicPrefixList> create(Orb::Name name, Orb::Entity const* parent) {
    return new BasicPrefixList(std::move(name), parent);
  }

  /// Entries in ascending sequence number.
  Entries const& prefixEntry() const noexcept { return entries_; }
  Entry const* prefixEntry(Orb::U32 seqno) const { return entries_.get(seqno); }
  /// Stores the entry under its sequence number; notifies only a change.
  void prefixEntryIs(Entry const& entry) {
    if (Entry const* old = entries_.get(entry.seqno); old && *old == entry) return;
    entries_.set(entry.seqno, entry);
    notify(prefixEntry_, Orb::Key(entry.seqno));
  }
  void prefixEntryDel(Orb::U32 seqno) {
    if (entries_.erase(seqno)) notify(prefixEntry_, Orb::Key(seqno));
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
  BasicPrefixList(Orb::Name name, Orb::Entity const* parent) : Entity(std::move(name)) {
    parentIs(parent);
  }

  Entries entries_;
  Orb::U32 versionValue_ = 0;
};

using PrefixList = BasicPrefixList<Kiwi::Prefix>;
using Ipv6PrefixList = BasicPrefixList<Kiwi::Ip6Prefix>;

}  // namespace Acl
