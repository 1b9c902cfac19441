// The route-map reactor: whole-map resends on version changes, single
// sequence removals, map removals and the set-operation mode.
#include "Tessel/RouteMapConfigSm.h"

#include <string>
#include <utility>

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/PolicyReasons.h"
#include "Tessel/TraceLevels.h"
#include "Tessel/UpdatePolicyMap.h"

namespace Tessel {

using Routing::RouteMap::Config;
using Routing::RouteMap::Map;
using Routing::RouteMap::MapEntry;
using Routing::RouteMap::MatchOption;
using RoutingPolicyMap::CliMode;

namespace {
Orb::TypeRegistration configSmType({"Tessel::RouteMapConfigSm", {}, {}});
Orb::TypeRegistration routeMapType({"Tessel::OrbRouteMap", {}, {}});
Orb::TypeRegistration seqEntryType({"Tessel::OrbSeqMapEntry", {}, {}});
}  // namespace

Orb::Ptr<RouteMapConfigSm> routeMapConfigSmFactory(Root::RouteMapConfigPtr const& routeMapConfig,
                                                   L3::VrfName const& vrfName,
                                                   Root::PolicyMapPtr const& policyMap) {
  return Orb::make<RouteMapConfigSm>(routeMapConfig, vrfName, policyMap);
}

// ---- RouteMapConfigSm

RouteMapConfigSm::RouteMapConfigSm(Root::RouteMapConfigPtr routeMapConfig, L3::VrfName vrfName,
                                   Root::PolicyMapPtr policyMap)
    : routeMapConfig_(std::move(routeMapConfig)),
      vrfName_(std::move(vrfName)),
      policyMap_(std::move(policyMap)),
      configNotifiee_(this, routeMapConfig_),
      policyMapNotifiee_(this, policyMap_) {
  configNotifiee_.hasNotificationActiveIs(true);
  policyMapNotifiee_.hasNotificationActiveIs(true);
  handleRouteMapSetOpConfig();
  auto const& maps = routeMapConfig_->routeMap();
  orbRouteMap_.delUnless([&](Orb::Name const& name) { return maps.contains(name); });
  for (auto const& [name, map] : maps)
    routeMapIs(map);
  handleInitialized();
}

RouteMapConfigSm::~RouteMapConfigSm() = default;

void RouteMapConfigSm::handleInitialized() {
  initialized_ = true;
}

void RouteMapConfigSm::handleRouteMapSetOpConfig() {
  auto mode = routeMapConfig_->routeMapOpMode();
  ORB_TRACE(traceHandler, "void Tessel::RouteMapConfigSm::handleRouteMapSetOpConfig()"
                              << " vrf: " << vrfName_
                              << " config: " << Routing::RouteMap::valueToStrep(mode));
  auto cog = cogFactory(vrfName_);
  cog->doRouteMapOpConfig(mode);
  cog->doCommit();
}

void RouteMapConfigSm::handleRouteMap(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::RouteMapConfigSm::handleRouteMap(Orb::String name)"
                              << " vrf: " << vrfName_);
  if (routeMapConfig_->routeMap().contains(name)) return;
  ORB_TRACE(traceDelete, "Delete route map " << name);
  auto cog = cogFactory(vrfName_);
  cog->doDeleteRouteMap(name);
  cog->doCommit();
  // The map's clauses are no users of any list now; recorded, they would
  // bring its private lists back at the next change of one.
  cog->delStaleRmFromCommListUsers(name, nullptr);
}

void RouteMapConfigSm::handlePolicyMapRouteMap(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::RouteMapConfigSm::handlePolicyMapRouteMap(Orb::String name)"
                              << " name: " << name);
  OrbRouteMap* rm = orbRouteMap_.find(name);
  if (!rm) return;
  bool const listed = policyMap_->routeMap(name) != nullptr;
  // A snapshot: registering may run this handler again for other maps.
  for (Orb::U32 seqno : rm->seqMapEntryKeys()) {
    OrbSeqMapEntry* seq = rm->seqMapEntry(seqno);
    if (!seq) continue;
    if (listed) {
      seq->addReferredPoliciesToPolicyMap();
    } else {
      seq->deleteReferredPoliciesFromPolicyMap();
    }
  }
}

void RouteMapConfigSm::routeMapIs(Orb::Ptr<Map const> const& map) {
  if (OrbRouteMap* existing = orbRouteMap_.find(map->name());
      existing && existing->routeMap() == map) {
    return;
  }
  orbRouteMap_.insert(map->name(), Orb::make<OrbRouteMap>(map, this));
}

void RouteMapConfigSm::routeMapDel(Orb::Name const& name) {
  orbRouteMap_.del(name);
}

void RouteMapConfigSm::routeMapDelAll() {
  orbRouteMap_.delAll();
}

void RouteMapConfigSm::OrbRouteMapConfig::onOwnerAttribute(Orb::AttributeId attribute,
                                                           Orb::Key const& key) {
  RouteMapConfigSm* sm = owner();
  switch (attribute) {
    case Config::routeMap_: {
      Orb::Name const& name = key.name();
      sm->handleRouteMap(name);
      if (auto map = sm->routeMapConfig_->routeMap(name)) {
        sm->routeMapIs(map);
      } else {
        sm->routeMapDel(name);
      }
      break;
    }
    case Config::routeMapOpMode_:
      sm->handleRouteMapSetOpConfig();
      break;
    default:
      break;
  }
}

void RouteMapConfigSm::OrbPolicyMap::onOwnerAttribute(Orb::AttributeId attribute,
                                                      Orb::Key const& key) {
  if (attribute == RoutingPolicyMap::PolicyMap::routeMap_) {
    owner()->handlePolicyMapRouteMap(Orb::Name(key.name()));
  }
}

// ---- OrbRouteMap

OrbRouteMap::OrbRouteMap(Orb::Ptr<Map const> map, RouteMapConfigSm* owner)
    : map_(std::move(map)), owner_(owner), notifiee_(this, map_) {
  notifiee_.hasNotificationActiveIs(true);
  handleMapVersion();
  handleSeqno();
  auto const& entries = map_->mapEntry();
  seqMapEntry_.delUnless([&](Orb::U32 seqno) { return entries.contains(seqno); });
  for (auto const& [seqno, entry] : entries)
    seqMapEntryIs(entry);
}

void OrbRouteMap::handleMapVersion() {
  ORB_TRACE(traceHandler, "void Tessel::OrbRouteMap::handleMapVersion()"
                              << ":" << map_->version() << " vrf: " << vrfName());
  auto cog = cogFactory(vrfName());
  deleteRouteMapCommSets();
  cog->doDeleteRouteMap(name());
  cog->doCommit();
  cog->doInsertRouteMap(map_, name());
  cog->doCommit();
  // The insert recorded the clauses the map has now. A clause it no longer
  // has stays recorded when its sequence was not seen to change since the
  // last version, and a change of its old list would apply that list again.
  cog->delStaleRmFromCommListUsers(name(), map_.get());
}

void OrbRouteMap::handleSeqno(Orb::U32 seqno) {
  ORB_TRACE(traceHandler, "void Tessel::OrbRouteMap::handleSeqno(U32 seqno)"
                              << " seqno: " << seqno << " vrf: " << vrfName());
  auto const& entries = map_->mapEntry();
  if (entries.contains(seqno)) {
    commSetNameIs(seqno, true);
    return;
  }
  ORB_TRACE(traceDelete, "Delete route map sequence " << seqno);
  auto cog = cogFactory(vrfName());
  if (!entries.empty()) {
    cog->doDeleteMapSequence(name(), seqno);
  } else {
    // The last sequence takes the whole map with it.
    cog->doDeleteRouteMap(name());
  }
  cog->doCommit();
  deleteSequenceCommSets(seqno);
  if (bool const* present = commSetName_.get(seqno); present && *present) commSetNameDel(seqno);
}

void OrbRouteMap::handleSeqno() {
  std::vector<Orb::U32> seqnos;
  seqnos.reserve(map_->mapEntry().size());
  for (auto const& kv : map_->mapEntry())
    seqnos.push_back(kv.first);
  for (Orb::U32 seqno : seqnos)
    handleSeqno(seqno);
}

void OrbRouteMap::deleteSequenceCommSets(Orb::U32 seqno) {
  auto cog = cogFactory(vrfName());
  cog->delRmFromCommListUsers(name(), seqno);
  cog->doDeleteInternalCommunityList(name(), seqno, Acl::commSetAdd_);
  cog->doDeleteInternalCommunityList(name(), seqno, Acl::commSetDelete_);
  std::string const seq = std::to_string(seqno);
  cog->doDelCommSet(Orb::String(".e" + name().str() + seq), Acl::communityExtended);
  cog->doDelCommSet(Orb::String(".l" + name().str() + seq), Acl::communityLarge);
}

void OrbRouteMap::deleteRouteMapCommSets() {
  ORB_TRACE(traceHandler, "void Tessel::OrbRouteMap::deleteRouteMapCommSets()");
  std::vector<Orb::U32> seqnos;
  seqnos.reserve(commSetName_.size());
  for (auto const& kv : commSetName_)
    seqnos.push_back(kv.first);
  for (Orb::U32 seqno : seqnos) {
    deleteSequenceCommSets(seqno);
    commSetNameDel(seqno);
  }
}

void OrbRouteMap::seqMapEntryIs(Orb::Ptr<MapEntry const> const& entry) {
  if (OrbSeqMapEntry* existing = seqMapEntry_.find(entry->seqno());
      existing && existing->seqMapEntry() == entry) {
    return;
  }
  seqMapEntry_.insert(entry->seqno(), Orb::make<OrbSeqMapEntry>(entry, this));
}

void OrbRouteMap::seqMapEntryDel(Orb::U32 seqno) {
  seqMapEntry_.del(seqno);
}

void OrbRouteMap::seqMapEntryDelAll() {
  seqMapEntry_.delAll();
}

void OrbRouteMap::MapNotifiee::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) {
  OrbRouteMap* rm = owner();
  switch (attribute) {
    case Map::mapEntry_: {
      Orb::U32 seqno = key.u32();
      rm->handleSeqno(seqno);
      if (auto entry = rm->map_->mapEntry(seqno)) {
        rm->seqMapEntryIs(entry);
      } else {
        rm->seqMapEntryDel(seqno);
      }
      break;
    }
    case Map::version_:
      rm->handleMapVersion();
      break;
    default:
      break;
  }
}

// ---- OrbSeqMapEntry

OrbSeqMapEntry::OrbSeqMapEntry(Orb::Ptr<MapEntry const> entry, OrbRouteMap* owner)
    : entry_(std::move(entry)), owner_(owner), notifiee_(this, entry_) {
  notifiee_.hasNotificationActiveIs(true);
  handleInitialized();
}

Orb::String OrbSeqMapEntry::configKey() const {
  return owner_->name() + " seqNo " + std::to_string(seqno()).c_str();
}

bool OrbSeqMapEntry::mapListed() const {
  return owner_->owner()->policyMap()->routeMap(owner_->name()) != nullptr;
}

void OrbSeqMapEntry::handleInitialized() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::handleInitialized()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
  addReferredPoliciesToPolicyMap();
  initialized_ = true;
}

void OrbSeqMapEntry::handleDel() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::handleDel()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
  deleteReferredPoliciesFromPolicyMap();
}

void OrbSeqMapEntry::handleMatchRule(MatchOption option) {
  ORB_TRACE(traceHandler,
            "void Tessel::OrbSeqMapEntry::handleMatchRule(Routing::RouteMap::MatchOption matchOp)"
                << " rmName: " << owner_->name() << " seqNo: " << seqno()
                << " matchOp: " << Orb::U32(option));
  if (!mapListed()) return;
  bool const v4 = option == Routing::RouteMap::matchDynamicPrefixList;
  if (!v4 && option != Routing::RouteMap::matchIpv6DynamicPrefixList) return;
  Routing::RouteMap::MatchRule const* rule = entry_->matchRule(option);
  Orb::String const current = rule ? rule->strValue : Orb::String();
  Orb::String& prev = v4 ? prevV4Dpl_ : prevV6Dpl_;
  updatePolicyMapDpl(RoutingPolicyMap::cliModeRouteMap,
                     v4 ? pmapRmapNestedV4Dpl : pmapRmapNestedV6Dpl, configKey(), prev, current);
  prev = current;
}

void OrbSeqMapEntry::handleSubRouteMap() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::handleSubRouteMap()"
                              << " seqNo: " << seqno()
                              << " subRouteMap: " << entry_->subRouteMap());
  if (!mapListed()) return;
  Orb::String const current = entry_->subRouteMap();
  updatePolicyMapRouteMap(RoutingPolicyMap::cliModeRouteMap, pmapRmapNestedRmap, configKey(),
                          prevSubRouteMap_, current);
  prevSubRouteMap_ = current;
}

namespace {
// Registers under `curr`, then withdraws from a different `prev`, on behalf
// of `holder`.
void moveReference(void const* holder, RoutingPolicyMap::PolicyType type, CliMode mode,
                   Orb::String const& configCli, Orb::String const& configKey,
                   Orb::Ptr<RoutingPolicyMap::PolicyMap> const& pmap, Orb::String const& prev,
                   Orb::String const& curr) {
  if (!curr.empty()) {
    updatePolicyMapFor(holder, type, RoutingPolicyMap::pluginTypeRouting, mode, configCli,
                       configKey, pmap, curr, false);
  }
  if (!prev.empty() && prev != curr) {
    updatePolicyMapFor(holder, type, RoutingPolicyMap::pluginTypeRouting, mode, configCli,
                       configKey, pmap, prev, true);
  }
}
}  // namespace

void OrbSeqMapEntry::updatePolicyMapDpl(CliMode mode, Orb::String const& configCli,
                                        Orb::String const& configKey,
                                        Orb::String const& prevDplName,
                                        Orb::String const& currDplName) {
  ORB_TRACE(traceHandler,
            "void Tessel::OrbSeqMapEntry::updatePolicyMapDpl(RoutingPolicyMap::CliMode mode, "
            "Orb::String configCli, Orb::String configKey, Orb::String prevDplName, Orb::String "
            "currDplName)"
                << " mode: " << Orb::U32(mode) << " configCli: " << configCli << " configKey: "
                << configKey << " prevDplName: " << prevDplName << " currDplName: " << currDplName);
  moveReference(this, RoutingPolicyMap::policyTypeDynamicPrefixList, mode, configCli, configKey,
                owner_->owner()->policyMap(), prevDplName, currDplName);
}

void OrbSeqMapEntry::updatePolicyMapRouteMap(CliMode mode, Orb::String const& configCli,
                                             Orb::String const& configKey,
                                             Orb::String const& prevSubRmName,
                                             Orb::String const& currSubRmName) {
  ORB_TRACE(traceHandler,
            "void Tessel::OrbSeqMapEntry::updatePolicyMapRouteMap(RoutingPolicyMap::CliMode mode, "
            "Orb::String configCli, Orb::String configKey, Orb::String prevSubRmName, Orb::String "
            "currSubRmName)"
                << " mode: " << Orb::U32(mode) << " configCli: " << configCli
                << " configKey: " << configKey << " prevSubRmName: " << prevSubRmName
                << " currSubRmName: " << currSubRmName);
  moveReference(this, RoutingPolicyMap::policyTypeRouteMap, mode, configCli, configKey,
                owner_->owner()->policyMap(), prevSubRmName, currSubRmName);
}

void OrbSeqMapEntry::addReferredPoliciesToPolicyMap() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::addReferredPoliciesToPolicyMap()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
  std::vector<Orb::U32> options;
  options.reserve(entry_->matchRule().size());
  for (auto const& kv : entry_->matchRule())
    options.push_back(kv.first);
  for (Orb::U32 option : options)
    handleMatchRule(MatchOption(option));
  handleSubRouteMap();
}

void OrbSeqMapEntry::deleteReferredPoliciesFromPolicyMap() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::deleteReferredPoliciesFromPolicyMap()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
  Orb::String const key = configKey();
  // Cleared before the withdrawal: it may come back here through the
  // notifications it causes.
  Orb::String const v4 = std::exchange(prevV4Dpl_, Orb::String());
  Orb::String const v6 = std::exchange(prevV6Dpl_, Orb::String());
  Orb::String const sub = std::exchange(prevSubRouteMap_, Orb::String());
  updatePolicyMapDpl(RoutingPolicyMap::cliModeRouteMap, pmapRmapNestedV4Dpl, key, v4, "");
  updatePolicyMapDpl(RoutingPolicyMap::cliModeRouteMap, pmapRmapNestedV6Dpl, key, v6, "");
  updatePolicyMapRouteMap(RoutingPolicyMap::cliModeRouteMap, pmapRmapNestedRmap, key, sub, "");
}

void OrbSeqMapEntry::EntryNotifiee::onOwnerAttribute(Orb::AttributeId attribute,
                                                     Orb::Key const& key) {
  switch (attribute) {
    case MapEntry::matchRule_:
      owner()->handleMatchRule(MatchOption(key.u32()));
      break;
    case MapEntry::subRouteMap_:
      owner()->handleSubRouteMap();
      break;
    default:
      break;
  }
}

}  // namespace Tessel
