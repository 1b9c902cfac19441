// The dynamic prefix-list reactor: lists go to the engine while configured and
// listed, and register their match maps meanwhile.
#include "RibDynamicPrefixList/DynPfxConfigSm.h"

#include <utility>

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "RibDynamicPrefixList/Cog.h"
#include "Tessel/Holds.h"
#include "Tessel/PolicyReasons.h"
#include "Tessel/TraceLevels.h"
#include "Tessel/UpdatePolicyMap.h"

namespace RibDynamicPrefixList {

using Routing::DynamicPrefixList::Config;
using Routing::DynamicPrefixList::DynamicPrefixListEntry;
using RoutingPolicyMap::CliMode;
using Tessel::traceHandler;

namespace {
Orb::TypeRegistration configSmType({"RibDynamicPrefixList::DynPfxConfigSm", {}, {}});
Orb::TypeRegistration listType({"RibDynamicPrefixList::OrbDynamicPrefixList", {}, {}});

/// The lists reactors have sent during a replacement and not deleted since.
/// The node is the agent's, not a VRF's, so the record is the process's.
Tessel::Holds<Orb::Name>& sentLists() {
  static Tessel::Holds<Orb::Name> holds;
  return holds;
}
}  // namespace

Orb::Ptr<DynPfxConfigSm> dynPfxConfigSmFactory(DynPfxConfigSm::ConfigPtr const& config,
                                               DynPfxConfigSm::PolicyMapPtr const& policyMap) {
  return Orb::make<DynPfxConfigSm>(config, policyMap);
}

// ---- DynPfxConfigSm

DynPfxConfigSm::DynPfxConfigSm(ConfigPtr config, PolicyMapPtr policyMap)
    : config_(std::move(config)),
      policyMap_(std::move(policyMap)),
      configNotifiee_(this, config_),
      policyMapNotifiee_(this, policyMap_) {
  configNotifiee_.hasNotificationActiveIs(true);
  policyMapNotifiee_.hasNotificationActiveIs(true);
  auto const& lists = config_->dynamicPrefixList();
  orbDynamicPrefixList_.delUnless([&](Orb::Name const& name) { return lists.contains(name); });
  for (auto const& [name, entry] : lists)
    dynamicPrefixListIs(entry);
  handleInitialized();
}

DynPfxConfigSm::~DynPfxConfigSm() = default;

void DynPfxConfigSm::handleInitialized() {
  ORB_TRACE(traceHandler, "void RibDynamicPrefixList::DynPfxConfigSm::handleInitialized()");
  ORB_TRACE(traceHandler, "Initialized DynPfxConfigSm");
  initialized_ = true;
}

bool DynPfxConfigSm::listed(Orb::String const& name) const {
  return policyMap_ && policyMap_->dynamicPrefixList(Orb::Name(name)) != nullptr;
}

void DynPfxConfigSm::dynamicPrefixListIs(EntryPtr const& entry) {
  if (OrbDynamicPrefixList* existing = orbDynamicPrefixList_.find(entry->name());
      existing && existing->dynamicPrefixList() == entry) {
    return;
  }
  orbDynamicPrefixList_.insert(entry->name(), Orb::make<OrbDynamicPrefixList>(entry, this));
}

void DynPfxConfigSm::dynamicPrefixListDel(Orb::Name const& name) {
  orbDynamicPrefixList_.del(name);
}

void DynPfxConfigSm::dynamicPrefixListDelAll() {
  orbDynamicPrefixList_.delAll();
}

void DynPfxConfigSm::handleDynamicPrefixListMap(Orb::String const& name) {
  ORB_TRACE(traceHandler,
            "void RibDynamicPrefixList::DynPfxConfigSm::handleDynamicPrefixListMap(Orb::String "
            "name)"
                << " dynamic prefix-list: " << name);
  OrbDynamicPrefixList* list = orbDynamicPrefixList_.find(Orb::Name(name));
  if (!list) return;
  if (listed(name)) {
    ORB_TRACE(traceHandler, "dynamicPrefixList config and policyMap both exist.");
    list->handleDynamicPrefixListVersion();
  } else {
    ORB_TRACE(traceHandler, "dynamicPrefixList is deleted from policyMap");
    list->handleMirrorConfigDelete();
  }
}

void DynPfxConfigSm::configDel() {
  configNotifiee_.hasNotificationActiveIs(false);
  dynamicPrefixListDelAll();
}

void DynPfxConfigSm::policyMapDel() {
  policyMapNotifiee_.hasNotificationActiveIs(false);
  policyMap_ = nullptr;
}

void DynPfxConfigSm::OrbConfig::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) {
  if (attribute != Config::dynamicPrefixList_) return;
  DynPfxConfigSm* sm = owner();
  Orb::Name const name = key.name();
  if (auto entry = sm->config_->dynamicPrefixList(name)) {
    sm->dynamicPrefixListIs(entry);
  } else {
    sm->dynamicPrefixListDel(name);
  }
}

void DynPfxConfigSm::OrbPolicyMap::onOwnerAttribute(Orb::AttributeId attribute,
                                                    Orb::Key const& key) {
  if (attribute == RoutingPolicyMap::PolicyMap::dynamicPrefixList_) {
    owner()->handleDynamicPrefixListMap(Orb::Name(key.name()));
  }
}

// ---- OrbDynamicPrefixList

OrbDynamicPrefixList::OrbDynamicPrefixList(DynPfxConfigSm::EntryPtr entry, DynPfxConfigSm* owner)
    : entry_(std::move(entry)), owner_(owner), notifiee_(this, entry_) {
  notifiee_.hasNotificationActiveIs(true);
  handleInitialized();
}

void OrbDynamicPrefixList::handleInitialized() {
  ORB_TRACE(traceHandler, "void RibDynamicPrefixList::OrbDynamicPrefixList::handleInitialized()"
                              << " Initializing DynamicPrefixList: " << name());
  handleDynamicPrefixListVersion();
  initialized_ = true;
}

void OrbDynamicPrefixList::handleDel() {
  handleMirrorConfigDelete();
}

void OrbDynamicPrefixList::handleDynamicPrefixListVersion() {
  ORB_TRACE(traceHandler,
            "void RibDynamicPrefixList::OrbDynamicPrefixList::handleDynamicPrefixListVersion()"
                << " Updating DynamicPrefixList: " << name() << " Version: " << entry_->version());
  if (!owner_->listed(name())) {
    ORB_TRACE(traceHandler, "returning as dynamicPrefixList does not exist in policyMap");
    return;
  }
  Orb::String const current = entry_->matchMap();
  updatePolicyMapMatchMap(RoutingPolicyMap::cliModeDynamicPrefixList, Tessel::pmapDynPfxMatchMap,
                          name(), prevMatchMapName_, current);
  prevMatchMapName_ = current;
  cogFactory()->doAddDynamicPrefixListEntry(name(), entry_->ipv4PrefixList(),
                                            entry_->ipv6PrefixList(), current);
  sentLists().holdIs(name(), this);
}

void OrbDynamicPrefixList::handleMirrorConfigDelete() {
  ORB_TRACE(traceHandler,
            "void RibDynamicPrefixList::OrbDynamicPrefixList::handleMirrorConfigDelete()"
                << " Deleting DynamicPrefixList: " << name());
  updatePolicyMapMatchMap(RoutingPolicyMap::cliModeDynamicPrefixList, Tessel::pmapDynPfxMatchMap,
                          name(), std::exchange(prevMatchMapName_, Orb::String()), "");
  // The delete goes also for a list this reactor never sent, as the engine
  // may hold it from before; only a list the successor of a machine being
  // replaced has sent stays.
  if (sentLists().holdDel(name(), this)) {
    ORB_TRACE(traceHandler, "dynamicPrefixList kept: another reactor has sent it");
    return;
  }
  cogFactory()->doDelDynamicPrefixList(name());
}

void OrbDynamicPrefixList::updatePolicyMapMatchMap(CliMode mode, Orb::String const& configCli,
                                                   Orb::String const& configKey,
                                                   Orb::String const& prevMatchMapName,
                                                   Orb::String const& currMatchMapName) {
  ORB_TRACE(traceHandler,
            "void RibDynamicPrefixList::OrbDynamicPrefixList::updatePolicyMapMatchMap("
            "RoutingPolicyMap::CliMode mode, Orb::String configCli, Orb::String configKey, "
            "Orb::String prevMatchMapName, Orb::String currMatchMapName)"
                << " mode: " << Orb::U32(mode) << " configCli: " << configCli
                << " configKey: " << configKey << " prevMatchMapName: " << prevMatchMapName
                << " currMatchMapName: " << currMatchMapName);
  DynPfxConfigSm::PolicyMapPtr const& pmap = owner_->policyMap();
  if (!pmap) return;
  if (!currMatchMapName.empty()) {
    Tessel::updatePolicyMapFor(this, RoutingPolicyMap::policyTypeRouteMap,
                               RoutingPolicyMap::pluginTypeRouting, mode, configCli, configKey,
                               pmap, currMatchMapName, false);
  }
  if (!prevMatchMapName.empty() && prevMatchMapName != currMatchMapName) {
    Tessel::updatePolicyMapFor(this, RoutingPolicyMap::policyTypeRouteMap,
                               RoutingPolicyMap::pluginTypeRouting, mode, configCli, configKey,
                               pmap, prevMatchMapName, true);
  }
}

void OrbDynamicPrefixList::EntryNotifiee::onOwnerAttribute(Orb::AttributeId attribute,
                                                           Orb::Key const&) {
  if (attribute == DynamicPrefixListEntry::version_) owner()->handleDynamicPrefixListVersion();
}

}  // namespace RibDynamicPrefixList
