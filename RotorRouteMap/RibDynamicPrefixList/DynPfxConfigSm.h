// The dynamic prefix-list reactor.
//
// Watches: the dynamic prefix-list configuration (its lists by name), each
// list's version, and the policy map's dynamic prefix-list collection.
// Sends: a list whole, with a commit, while it is both configured and listed
// in the policy map: when it becomes so and on every version notification; its
// removal, with a commit, when it stops being listed or leaves the
// configuration. Writes: while a list is sent, its match map is registered in
// the policy map's route-map collection under the reason
// "dynamic prefix-list match-map". It serves no VRF.
#pragma once

#include "Orb/Api.h"
#include "Orb/Reactor.h"
#include "Routing/DynamicPrefixList/Config.h"
#include "RoutingPolicyMap/PolicyMap.h"

namespace RibDynamicPrefixList {

class OrbDynamicPrefixList;

class ROTOR_API DynPfxConfigSm : public Orb::Reactor {
 public:
  using ConfigPtr = Orb::Ptr<Routing::DynamicPrefixList::Config const>;
  using EntryPtr = Orb::Ptr<Routing::DynamicPrefixList::DynamicPrefixListEntry const>;
  using PolicyMapPtr = Orb::Ptr<RoutingPolicyMap::PolicyMap>;

  DynPfxConfigSm(ConfigPtr config, PolicyMapPtr policyMap);
  ~DynPfxConfigSm() override;

  ConfigPtr const& config() const noexcept { return config_; }
  PolicyMapPtr const& policyMap() const noexcept { return policyMap_; }
  bool initialized() const noexcept { return initialized_; }

  /// The reactor of the configured list `name`, or null.
  OrbDynamicPrefixList* orbDynamicPrefixList(Orb::Name const& name) const {
    return orbDynamicPrefixList_.find(name);
  }
  std::size_t orbDynamicPrefixLists() const noexcept { return orbDynamicPrefixList_.size(); }
  /// Whether the policy map lists `name` as a dynamic prefix list.
  bool listed(Orb::String const& name) const;

  /// Makes the reactor of `entry` unless one already watches it.
  void dynamicPrefixListIs(EntryPtr const& entry);
  /// Removes the reactor of `name`, which withdraws the list.
  void dynamicPrefixListDel(Orb::Name const& name);
  void dynamicPrefixListDelAll();

  /// A change of the policy map's dynamic prefix-list collection at `name`:
  /// sends a configured list that became listed, withdraws one that stopped.
  void handleDynamicPrefixListMap(Orb::String const& name);
  void handleInitialized();

  /// Stop watching an input; every list is withdrawn when the configuration
  /// goes, and none counts as listed once the policy map is gone.
  void configDel();
  void policyMapDel();

 private:
  class OrbConfig final : public Orb::ReactorNotifiee<DynPfxConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };
  class OrbPolicyMap final : public Orb::ReactorNotifiee<DynPfxConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  ConfigPtr config_;
  PolicyMapPtr policyMap_;
  OrbConfig configNotifiee_;
  OrbPolicyMap policyMapNotifiee_;
  Orb::ReactorColl<Orb::Name, OrbDynamicPrefixList> orbDynamicPrefixList_{this};
  bool initialized_ = false;
};

/// The reactor of one configured dynamic prefix list.
class ROTOR_API OrbDynamicPrefixList : public Orb::Reactor {
 public:
  OrbDynamicPrefixList(DynPfxConfigSm::EntryPtr entry, DynPfxConfigSm* owner);

  DynPfxConfigSm::EntryPtr const& dynamicPrefixList() const noexcept { return entry_; }
  Orb::Name const& name() const noexcept { return entry_->name(); }
  bool initialized() const noexcept { return initialized_; }
  /// The match map last registered in the policy map; empty when none.
  Orb::String const& prevMatchMapName() const noexcept { return prevMatchMapName_; }

  /// Sends the list when it is listed (the list was just configured).
  void handleInitialized();
  /// Sends the list whole and registers its match map, if it is listed.
  void handleDynamicPrefixListVersion();
  /// Withdraws the match map's reason and deletes the list in the engine.
  void handleMirrorConfigDelete();
  /// Registers `curr` before withdrawing a different `prev`.
  void updatePolicyMapMatchMap(RoutingPolicyMap::CliMode mode, Orb::String const& configCli,
                               Orb::String const& configKey, Orb::String const& prevMatchMapName,
                               Orb::String const& currMatchMapName);

 protected:
  void handleDel() override;

 private:
  class EntryNotifiee final : public Orb::ReactorNotifiee<OrbDynamicPrefixList> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  DynPfxConfigSm::EntryPtr entry_;
  DynPfxConfigSm* owner_;
  EntryNotifiee notifiee_;
  Orb::String prevMatchMapName_;
  bool initialized_ = false;
};

/// Makes the dynamic prefix-list reactor.
ROTOR_API Orb::Ptr<DynPfxConfigSm> dynPfxConfigSmFactory(
    DynPfxConfigSm::ConfigPtr const& config, DynPfxConfigSm::PolicyMapPtr const& policyMap);

}  // namespace RibDynamicPrefixList
