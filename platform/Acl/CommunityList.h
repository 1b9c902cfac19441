// Acl::CommunityList and Acl::CommunityListEntry: a configured community list
// and its entries by sequence number. A writer fills an entry's fields and
// then bumps its version; readers act on the version, not on each field.
#pragma once

#include <set>

#include "Acl/Enums.h"
#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"
#include "Orb/String.h"

namespace Acl {

class CommunityList;

/// One entry: permit or deny one community set, given as values or as a
/// regular expression.
class ROTOR_API CommunityListEntry : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    permit_ = 1,
    listType_,
    communityValue_,  // key: none; the set is replaced whole
    regex_,
    version_,
  };
  using Values = std::set<CommunityValue>;

  Orb::U32 seqno() const noexcept { return seqno_; }
  CommunityList const* communityList() const noexcept;

  /// Value 1 denies; every other value permits.
  MatchPermit permit() const noexcept { return permitValue_; }
  void permitIs(MatchPermit v);
  /// Values 0 to 5; other values are kept as numbers.
  CommunityListType listType() const noexcept { return listTypeValue_; }
  void listTypeIs(CommunityListType v);
  /// The values of a non-regex entry, in the set's own order.
  Values const& communityValue() const noexcept { return values_; }
  std::size_t communityValues() const noexcept { return values_.size(); }
  void communityValueIs(Values v);
  Orb::String const& regex() const noexcept { return regexValue_; }
  void regexIs(Orb::String const& v);

  /// Zero while the entry is incomplete.
  Orb::U32 version() const noexcept { return versionValue_; }
  /// Stores and notifies even when unchanged: every notification asks
  /// watchers to write the entry again.
  void versionIs(Orb::U32 v);

 private:
  friend class CommunityList;
  CommunityListEntry(Orb::U32 seqno, CommunityList const* list);

  Orb::U32 seqno_;
  MatchPermit permitValue_ = Acl::permit;
  CommunityListType listTypeValue_ = standardValues;
  Values values_;
  Orb::String regexValue_;
  Orb::U32 versionValue_ = 0;
};

/// A named community list; its entries in sequence order.
class ROTOR_API CommunityList : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    communityListEntry_ = 1,  // key: the sequence number
  };
  using Entries = Orb::OrderedMap<Orb::U32, Orb::Ptr<CommunityListEntry>>;

  /// Made by the owning configuration, which is its parent; null for a list
  /// that stands alone.
  static Orb::Ptr<CommunityList> create(Orb::Name name, Orb::Entity const* parent = nullptr) {
    Orb::Ptr<CommunityList> list(new CommunityList(std::move(name)));
    list->parentIs(parent);
    return list;
  }

  Entries const& communityListEntry() const noexcept { return entries_; }
  Orb::Ptr<CommunityListEntry> communityListEntry(Orb::U32 seqno) const;
  /// The entry `seqno`, made (at version zero, and notified) when absent.
  Orb::Ptr<CommunityListEntry> communityListEntryIs(Orb::U32 seqno);
  void communityListEntryDel(Orb::U32 seqno);

 private:
  explicit CommunityList(Orb::Name name) : Entity(std::move(name)) {}
  Entries entries_;
};

}  // namespace Acl
