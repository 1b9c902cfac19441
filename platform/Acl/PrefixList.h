// Acl::PrefixList and Acl::Ipv6PrefixList: one configured prefix list, its
// entries by sequence number and the version its writer bumps when a batch of
// entry changes is complete.
#pragma once

#include "Acl/Enums.h"
#include "Acl/VersionedList.h"
#include "Kiwi/Prefix.h"

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
class BasicPrefixList : public VersionedList<BasicPrefixListEntry<P>> {
  using Base = VersionedList<BasicPrefixListEntry<P>>;

 public:
  using Prefix = P;
  using typename Base::Entries;
  using typename Base::Entry;

  static constexpr Orb::AttributeId prefixEntry_ = Base::entry_;

  static Orb::Ptr<BasicPrefixList> create(Orb::Name name, Orb::Entity const* parent) {
    return new BasicPrefixList(std::move(name), parent);
  }

  /// Entries in ascending sequence number.
  Entries const& prefixEntry() const noexcept { return this->entries(); }
  Entry const* prefixEntry(Orb::U32 seqno) const { return this->entry(seqno); }
  void prefixEntryIs(Entry const& entry) { this->entryIs(entry); }
  void prefixEntryDel(Orb::U32 seqno) { this->entryDel(seqno); }

 private:
  using Base::Base;
};

using PrefixList = BasicPrefixList<Kiwi::Prefix>;
using Ipv6PrefixList = BasicPrefixList<Kiwi::Ip6Prefix>;

}  // namespace Acl
