// Acl::AclListConfig: the VRF's prefix lists, IPv6 prefix lists, AS-path
// lists and community lists, each collection keyed and ordered by name, and
// the regular-expression mode of AS-path entries.
#pragma once

#include "Acl/AsPathList.h"
#include "Acl/CommunityList.h"
#include "Acl/Enums.h"
#include "Acl/PrefixList.h"
#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/OrderedMap.h"

namespace Acl {

class ROTOR_API AclListConfig : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    regexMode_ = 1,
    prefixList_,      // key: the list's name
    ipv6PrefixList_,  // key: the list's name
    asPathList_,      // key: the list's name
    communityList_,   // key: the list's name
  };

  /// A collection of lists by name, walked in name order.
  template <class L>
  using Lists = Orb::OrderedMap<Orb::Name, Orb::Ptr<L>>;

  static Orb::Ptr<AclListConfig> create(Orb::Name name) {
    return new AclListConfig(std::move(name));
  }

  RegexMode regexMode() const noexcept { return regexModeValue_; }
  /// Notifies only a change.
  void regexModeIs(RegexMode mode) {
    if (regexModeValue_ == mode) return;
    regexModeValue_ = mode;
    notify(regexMode_);
  }

  // ---- IPv4 prefix lists

  Lists<PrefixList> const& prefixList() const noexcept { return prefixLists_; }
  Orb::Ptr<PrefixList> prefixList(Orb::Name const& name) const {
    return listOf(prefixLists_, name);
  }
  /// The list `name`, made (and notified) when absent.
  Orb::Ptr<PrefixList> prefixListIs(Orb::Name const& name) {
    return listIs(prefixLists_, name, prefixList_);
  }
  /// The name is taken by value: a caller may pass the key stored in the
  /// collection, which goes before the notification.
  void prefixListDel(Orb::Name name) { listDel(prefixLists_, std::move(name), prefixList_); }

  // ---- IPv6 prefix lists

  Lists<Ipv6PrefixList> const& ipv6PrefixList() const noexcept { return ipv6PrefixLists_; }
  Orb::Ptr<Ipv6PrefixList> ipv6PrefixList(Orb::Name const& name) const {
    return listOf(ipv6PrefixLists_, name);
  }
  Orb::Ptr<Ipv6PrefixList> ipv6PrefixListIs(Orb::Name const& name) {
    return listIs(ipv6PrefixLists_, name, ipv6PrefixList_);
  }
  void ipv6PrefixListDel(Orb::Name name) {
    listDel(ipv6PrefixLists_, std::move(name), ipv6PrefixList_);
  }

  // ---- AS-path lists

  Lists<AsPathList> const& asPathList() const noexcept { return asPathLists_; }
  Orb::Ptr<AsPathList> asPathList(Orb::Name const& name) const {
    return listOf(asPathLists_, name);
  }
  /// The list `name`, made (and notified) when absent.
  Orb::Ptr<AsPathList> asPathListIs(Orb::Name const& name) {
    return listIs(asPathLists_, name, asPathList_);
  }
  void asPathListDel(Orb::Name name) { listDel(asPathLists_, std::move(name), asPathList_); }

  // ---- community lists

  Lists<CommunityList> const& communityList() const noexcept { return communityLists_; }
  Orb::Ptr<CommunityList> communityList(Orb::Name const& name) const {
    return listOf(communityLists_, name);
  }
  /// The list `name`, made (and notified) when absent.
  Orb::Ptr<CommunityList> communityListIs(Orb::Name const& name) {
    return listIs(communityLists_, name, communityList_);
  }
  void communityListDel(Orb::Name name) {
    listDel(communityLists_, std::move(name), communityList_);
  }

 private:
  explicit AclListConfig(Orb::Name name) : Entity(std::move(name)) {}

  /// Shared by every collection: a list type `L` offers
  /// `L::create(Orb::Name, Orb::Entity const* parent)`.
  template <class L>
  static Orb::Ptr<L> listOf(Lists<L> const& lists, Orb::Name const& name) {
    auto const* p = lists.get(name);
    return p ? *p : nullptr;
  }
  template <class L>
  Orb::Ptr<L> listIs(Lists<L>& lists, Orb::Name const& name, Attribute attribute) {
    if (auto const* p = lists.get(name)) return *p;
    Orb::Ptr<L> list = L::create(name, this);
    lists.set(name, list);
    notify(attribute, Orb::Key(name));
    return list;
  }
  template <class L>
  void listDel(Lists<L>& lists, Orb::Name name, Attribute attribute) {
    auto const* p = lists.get(name);
    if (!p) return;
    // The list may outlive its removal in a watcher's hands; it no longer
    // has a parent.
    (*p)->parentIs(nullptr);
    lists.erase(name);
    notify(attribute, Orb::Key(name));
  }

  RegexMode regexModeValue_ = regexModeAsn;
  Lists<PrefixList> prefixLists_;
  Lists<Ipv6PrefixList> ipv6PrefixLists_;
  // AS-path list collection
  Lists<AsPathList> asPathLists_;

  // community list collection
  Lists<CommunityList> communityLists_;
};

}  // namespace Acl
