// The route-map reactor: whole-map resends on version changes, single
// sequence removals, map removals and the set-operation mode.
#include "Tessel/RouteMapConfigSm.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Routing::RouteMap::Config;
using Routing::RouteMap::Map;
using Routing::RouteMap::MapEntry;

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
}

void RouteMapConfigSm::handlePolicyMapRouteMap(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::RouteMapConfigSm::handlePolicyMapRouteMap(Orb::String name)"
                              << " name: " << name);
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

void RouteMapConfigSm::OrbPolicyMap::onOwnerAttribute(Orb::AttributeId, Orb::Key const& key) {
  if (key.isName()) owner()->handlePolicyMapRouteMap(key.name());
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
    : entry_(std::move(entry)), owner_(owner) {
  handleInitialized();
}

void OrbSeqMapEntry::handleInitialized() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::handleInitialized()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
  initialized_ = true;
}

void OrbSeqMapEntry::handleDel() {
  ORB_TRACE(traceHandler, "void Tessel::OrbSeqMapEntry::handleDel()"
                              << " rmName: " << owner_->name() << " seqNo: " << seqno());
}

}  // namespace Tessel
