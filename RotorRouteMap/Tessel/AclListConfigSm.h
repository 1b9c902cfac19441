// The list reactor of one VRF: prefix lists, IPv6 prefix lists, AS-path lists
// with their regular-expression mode, and community lists.
//
// Watches: the VRF's list configuration (its collections by name and the
// regular-expression mode). Each list has a reactor of its own, made after
// the list's handler has run and removed after it has run again.
// Sends: for a prefix list of either family that appears, its node with a
// commit before any entry; for one that goes, the removal of its node with a
// commit and no per-entry deletes (the entries are the list reactors' work,
// at each version of a list). The AS-path and community sides plug into the
// seams below.
#pragma once

#include "Orb/Api.h"
#include "Orb/Reactor.h"
#include "Tessel/OrbCommunityList.h"
#include "Tessel/OrbPathList.h"
#include "Tessel/OrbPrefixList.h"
#include "Tessel/Root.h"

namespace Tessel {

class ROTOR_API AclListConfigSm : public Orb::Reactor {
 public:
  AclListConfigSm(Root::AclListConfigPtr aclListConfig, L3::VrfName vrfName);
  ~AclListConfigSm() override;

  Root::AclListConfigPtr const& aclListConfig() const noexcept { return aclListConfig_; }
  L3::VrfName const& vrfName() const noexcept { return vrfName_; }
  bool initialized() const noexcept { return initialized_; }
  void initializedIs(bool v) { initialized_ = v; }

  /// Sets this reactor's switch and passes it to every list reactor it holds;
  /// a value it already has changes nothing.
  void hasNotificationActiveIs(bool active) override;

  /// Sets the initialized flag, then sends the AS-path lists, which wait for
  /// the configuration to be complete.
  void handleInitialized();

  // ---- prefix lists (both families)

  /// Sends the list's node when configured, its removal when not; commits.
  void handlePrefixList(Orb::String const& name);
  /// handlePrefixList for every configured list, in name order.
  void handlePrefixList();
  void handleIpv6PrefixList(Orb::String const& name);
  void handleIpv6PrefixList();

  OrbPrefixList* orbPrefixList(Orb::Name const& name) const { return orbPrefixList_.find(name); }
  std::size_t orbPrefixLists() const noexcept { return orbPrefixList_.size(); }
  OrbIpv6PrefixList* orbIpv6PrefixList(Orb::Name const& name) const {
    return orbIpv6PrefixList_.find(name);
  }
  std::size_t orbIpv6PrefixLists() const noexcept { return orbIpv6PrefixList_.size(); }

  /// Makes the reactor of `list` unless one already watches that list.
  void prefixListIs(Orb::Ptr<Acl::PrefixList const> const& list);
  /// Removes the reactor of `name`; sends nothing.
  void prefixListDel(Orb::Name const& name);
  void prefixListDelAll();
  void ipv6PrefixListIs(Orb::Ptr<Acl::Ipv6PrefixList const> const& list);
  void ipv6PrefixListDel(Orb::Name const& name);
  void ipv6PrefixListDelAll();

  // ---- AS-path side (AclListConfigSmAsPath.cc)

  /// The regular-expression mode changed (and once at construction).
  void handleRegexMode();
  /// An AS-path list appeared or went.
  void handlePathList(Orb::String const& name);
  /// Every AS-path list, once the reactor is initialized.
  void handlePathList();
  // A mode change (and the reactor's making) empties the engine of AS-path
  // lists with a synchronous commit, sends the mode with a commit, then sends
  // each list node, with its entries while all are valid under the mode, in
  // one commit. A list node is sent, or removed, with a commit as the list
  // appears or goes; entries are the list reactors' work.

  /// Removes every configured AS-path list from the engine, then commits
  /// synchronously and once more.
  void unconfigureAllAspathAcls();
  /// Whether every entry of the list `name` is valid under the configured
  /// mode; true for a list that is not configured. A query: the reactors
  /// keep their own account.
  bool aspathListValidRegex(Orb::String const& name) const;

  OrbPathList* orbPathList(Orb::Name const& name) const { return orbPathList_.find(name); }
  std::size_t orbPathLists() const noexcept { return orbPathList_.size(); }
  /// Makes the reactor of `list` unless one already watches that list.
  void pathListIs(Orb::Ptr<Acl::AsPathList const> const& list);
  /// Removes the reactor of `name`; sends nothing.
  void pathListDel(Orb::Name const& name);
  void pathListDelAll();

  // ---- community side (AclListConfigSmCommunity.cc)

  /// A community list appeared, changed or went.
  void handleCommunityList(Orb::String const& name);
  /// Every community list, in name order.
  void handleCommunityList();

  OrbCommunityList* orbCommunityList(Orb::Name const& name) const {
    return orbCommunityList_.find(name);
  }
  std::size_t orbCommunityLists() const noexcept { return orbCommunityList_.size(); }
  /// Makes the reactor of `list` unless one already watches that list.
  void communityListIs(Orb::Ptr<Acl::CommunityList const> const& list);
  /// Removes the reactor of `name`, which deletes the sets of its entries.
  void communityListDel(Orb::Name const& name);
  void communityListDelAll();

 private:
  class OrbAclListConfig final : public Orb::ReactorNotifiee<AclListConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  /// Bring each side's reactor collection in line with the configuration:
  /// all lists, or the one list `name` after its handler has run.
  void prefixListsFollow();
  void prefixListFollow(Orb::Name const& name);
  void ipv6PrefixListsFollow();
  void ipv6PrefixListFollow(Orb::Name const& name);
  void pathListsFollow();
  void pathListFollow(Orb::Name const& name);
  void communityListsFollow();
  void communityListFollow(Orb::Name const& name);

  Root::AclListConfigPtr aclListConfig_;
  L3::VrfName vrfName_;
  OrbAclListConfig configNotifiee_;
  Orb::ReactorColl<Orb::Name, OrbPrefixList> orbPrefixList_{this};
  Orb::ReactorColl<Orb::Name, OrbIpv6PrefixList> orbIpv6PrefixList_{this};
  // AS-path side state
  /// reevaluatePathList on every list reactor, in the collection's order.
  void reevaluatePathLists();
  Orb::ReactorColl<Orb::Name, OrbPathList> orbPathList_{this};

  // community side state
  Orb::ReactorColl<Orb::Name, OrbCommunityList> orbCommunityList_{this};

  bool initialized_ = false;
};

/// Makes the list reactor of a VRF.
ROTOR_API Orb::Ptr<AclListConfigSm> aclListConfigSmFactory(
    Root::AclListConfigPtr const& aclListConfig, L3::VrfName const& vrfName);

}  // namespace Tessel
