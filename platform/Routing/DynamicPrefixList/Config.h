// Routing::DynamicPrefixList::Config and DynamicPrefixListEntry: the
// configured dynamic prefix lists by name, each naming an IPv4 prefix list, an
// IPv6 prefix list and a match map, and a version its writer bumps when a
// batch of changes is complete.
#pragma once

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"

namespace Routing::DynamicPrefixList {

class Config;

class ROTOR_API DynamicPrefixListEntry : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    version_ = 1,
    ipv4PrefixList_,
    ipv6PrefixList_,
    matchMap_,
  };

  Orb::U32 version() const noexcept { return versionValue_; }
  /// Stores the version and notifies, even when it is unchanged: every
  /// notification asks watchers to resend.
  void versionIs(Orb::U32 v);
  void versionInc() { versionIs(versionValue_ + 1); }

  /// Bare prefix-list names, as configured; empty when none.
  Orb::String const& ipv4PrefixList() const noexcept { return ipv4Value_; }
  void ipv4PrefixListIs(Orb::String const& name);
  Orb::String const& ipv6PrefixList() const noexcept { return ipv6Value_; }
  void ipv6PrefixListIs(Orb::String const& name);
  /// The route map that selects the routes; empty when none.
  Orb::String const& matchMap() const noexcept { return matchMapValue_; }
  void matchMapIs(Orb::String const& name);

 private:
  friend class Config;
  DynamicPrefixListEntry(Orb::Name name, Orb::Entity const* parent);

  Orb::U32 versionValue_ = 0;
  Orb::String ipv4Value_;
  Orb::String ipv6Value_;
  Orb::String matchMapValue_;
};

class ROTOR_API Config : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    dynamicPrefixList_ = 1,  // key: the list's name
  };

  static Orb::Ptr<Config> create(Orb::Name name) { return new Config(std::move(name)); }

  /// Lists in name order.
  Orb::OrderedMap<Orb::Name, Orb::Ptr<DynamicPrefixListEntry>> const& dynamicPrefixList()
      const noexcept {
    return lists_;
  }
  Orb::Ptr<DynamicPrefixListEntry> dynamicPrefixList(Orb::Name const& name) const;
  /// The list `name`, made (and notified) when absent.
  Orb::Ptr<DynamicPrefixListEntry> dynamicPrefixListIs(Orb::Name const& name);
  /// Taken by value: the caller may pass the key stored in the collection.
  void dynamicPrefixListDel(Orb::Name name);

 private:
  explicit Config(Orb::Name name) : Entity(std::move(name)) {}
  Orb::OrderedMap<Orb::Name, Orb::Ptr<DynamicPrefixListEntry>> lists_;
};

}  // namespace Routing::DynamicPrefixList
