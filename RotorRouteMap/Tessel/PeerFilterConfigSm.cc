// The peer-filter reactor: whole-filter resends under the engine's prefixed
// name, and filter removals.
#include "Tessel/PeerFilterConfigSm.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Routing::RouteMap::Map;
using Routing::RouteMap::PeerFilterConfig;

namespace {
Orb::TypeRegistration peerFilterSmType({"Tessel::PeerFilterConfigSm", {}, {}});
}

PeerFilterConfigSm::PeerFilterConfigSm(Root::PeerFilterConfigPtr peerFilterConfig,
                                       L3::VrfName vrfName)
    : config_(std::move(peerFilterConfig)),
      vrfName_(std::move(vrfName)),
      configNotifiee_(this, config_) {
  configNotifiee_.hasNotificationActiveIs(true);
  auto const& filters = config_->peerFilter();
  for (auto const& [name, map] : filters)
    peerFilterIs(map);
  orbPeerFilter_.delUnless([&](Orb::Name const& name) { return filters.contains(name); });
  handleInitialized();
}

PeerFilterConfigSm::~PeerFilterConfigSm() = default;

void PeerFilterConfigSm::handleInitialized() {
  initialized_ = true;
}

void PeerFilterConfigSm::handlePeerFilter(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::PeerFilterConfigSm::handlePeerFilter(Orb::String name)"
                              << " vrf: " << vrfName_);
  if (config_->peerFilter().contains(name)) return;
  ORB_TRACE(traceDelete, "Delete peer filter " << name);
  auto cog = cogFactory(vrfName_);
  cog->doDeleteRouteMap(engineName(name));
  cog->doCommit();
  // The insertion recorded the filter's clauses as list users; with the
  // filter gone, a change of a list must not rebuild them.
  cog->delStaleRmFromCommListUsers(engineName(name), nullptr);
}

void PeerFilterConfigSm::peerFilterIs(Orb::Ptr<Map const> const& map) {
  if (OrbPeerFilter* existing = orbPeerFilter_.find(map->name());
      existing && existing->peerFilter() == map) {
    return;
  }
  orbPeerFilter_.insert(map->name(), Orb::make<OrbPeerFilter>(map, this));
}

void PeerFilterConfigSm::peerFilterDel(Orb::Name const& name) {
  orbPeerFilter_.del(name);
}

void PeerFilterConfigSm::peerFilterDelAll() {
  orbPeerFilter_.delAll();
}

void PeerFilterConfigSm::OrbPeerFilterConfig::onOwnerAttribute(Orb::AttributeId attribute,
                                                               Orb::Key const& key) {
  if (attribute != PeerFilterConfig::peerFilter_) return;
  PeerFilterConfigSm* sm = owner();
  Orb::Name const name = key.name();
  sm->handlePeerFilter(name);
  if (auto map = sm->config_->peerFilter(name)) {
    sm->peerFilterIs(map);
  } else {
    sm->peerFilterDel(name);
  }
}

// ---- OrbPeerFilter

OrbPeerFilter::OrbPeerFilter(Orb::Ptr<Map const> map, PeerFilterConfigSm* owner)
    : map_(std::move(map)), owner_(owner), notifiee_(this, map_) {
  notifiee_.hasNotificationActiveIs(true);
  handleMapVersion();
}

void OrbPeerFilter::handleMapVersion() {
  ORB_TRACE(traceHandler, "void Tessel::OrbPeerFilter::handleMapVersion()"
                              << ":" << map_->version() << " vrf: " << vrfName());
  Orb::String const engineName = PeerFilterConfigSm::engineName(name());
  auto cog = cogFactory(vrfName());
  cog->doDeleteRouteMap(engineName);
  cog->doCommit();
  cog->doInsertRouteMap(map_, engineName);
  cog->doCommit();
  // Without a clean-up of its own, a filter's clauses are recorded anew by
  // each send; the ones it no longer has go here.
  cog->delStaleRmFromCommListUsers(engineName, map_.get());
}

void OrbPeerFilter::MapNotifiee::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const&) {
  if (attribute == Map::version_) owner()->handleMapVersion();
}

}  // namespace Tessel
