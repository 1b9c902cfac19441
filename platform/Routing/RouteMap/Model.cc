// Storage and notification of the route-map model entities.
#include <bit>
#include <ostream>

#include "Orb/EnumText.h"
#include "Routing/RouteMap/CommunitySet.h"
#include "Routing/RouteMap/Config.h"
#include "Routing/RouteMap/Map.h"
#include "Routing/RouteMap/MapEntry.h"

namespace Routing::RouteMap {

namespace {
constexpr Orb::EnumName<RouteMapOpModeType> kOpMode[] = {{routeMapOpModeDefault, "default"},
                                                         {routeMapOpModeAlternate, "alternate"}};
}

std::string valueToStrep(RouteMapOpModeType v) {
  return Orb::enumToStrep<RouteMapOpModeType>(v, kOpMode);
}
RouteMapOpModeType routeMapOpModeFromStrep(std::string_view text) {
  return Orb::enumFromStrep<RouteMapOpModeType>(text, kOpMode, "RouteMapOpModeType");
}

std::string CommListSet::stringValue() const {
  std::string out;
  for (auto const& [name, flag] : names_) {
    if (!out.empty()) out += ' ';
    out += name.str();
  }
  return out;
}

// ---- CommunitySet

namespace {
// Addresses of the sets alive now; a handful at most per route-map clause.
Orb::HashMap<Orb::U64, CommunitySet const*>& liveSets() {
  static Orb::HashMap<Orb::U64, CommunitySet const*> sets;
  return sets;
}
}  // namespace

CommunitySet::CommunitySet(Content c) : c_(std::move(c)) {
  liveSets().set(reinterpret_cast<std::uintptr_t>(this), this);
}
CommunitySet::~CommunitySet() {
  liveSets().erase(reinterpret_cast<std::uintptr_t>(this));
}

Orb::Ptr<CommunitySet const> CommunitySet::create(Content content) {
  return new CommunitySet(std::move(content));
}

Orb::Ptr<CommunitySet const> CommunitySet::liveAt(std::uintptr_t address) {
  auto const* p = liveSets().get(address);
  return p ? *p : nullptr;
}

// ---- MapEntry

MapEntry::MapEntry(Orb::U32 seqno, Map const* map)
    : Entity(Orb::Name(std::to_string(seqno))), seqno_(seqno) {
  parentIs(map);
}

Map const* MapEntry::map() const noexcept {
  return static_cast<Map const*>(parent());
}

template <class T>
void MapEntry::fieldIs(T& field, T v) {
  if (field == v) return;
  field = std::move(v);
  notify(setField_);
}

void MapEntry::permitIs(Acl::MatchPermit v) {
  if (permitValue_ == v) return;
  permitValue_ = v;
  notify(permit_);
}

void MapEntry::matchRuleIs(MatchRule const& rule) {
  if (auto const* old = matchRules_.get(rule.option); old && *old == rule) return;
  matchRules_.set(rule.option, rule);
  notify(matchRule_, Orb::Key(Orb::U32(rule.option)));
}

void MapEntry::matchRuleDel(MatchOption option) {
  if (matchRules_.erase(option)) notify(matchRule_, Orb::Key(Orb::U32(option)));
}

void MapEntry::subRouteMapIs(Orb::String const& name) {
  if (subRouteMapValue_ == name) return;
  subRouteMapValue_ = name;
  notify(subRouteMap_);
}

void MapEntry::setFlagsIs(SetFlags flags) {
  if (setFlagsValue_ == flags) return;
  setFlagsValue_ = flags;
  notify(setFlags_);
}

void MapEntry::setFlagIs(Orb::U32 bit, bool present) {
  SetFlags f = setFlagsValue_;
  f.bits = present ? (f.bits | bit) : (f.bits & ~bit);
  setFlagsIs(f);
}

void MapEntry::nextHopIs(Kiwi::IpAddr v) {
  fieldIs(f_.nextHop, v);
}
void MapEntry::ipv6NextHopIs(Kiwi::Ip6Addr const& v) {
  fieldIs(f_.ipv6NextHop, v);
}
void MapEntry::nextHopPeerAddrIs(bool v) {
  fieldIs(f_.nextHopPeerAddr, v);
}
void MapEntry::ipv6NextHopPeerAddrIs(bool v) {
  fieldIs(f_.ipv6NextHopPeerAddr, v);
}
void MapEntry::nextHopUnchangedIs(bool v) {
  fieldIs(f_.nextHopUnchanged, v);
}
void MapEntry::ipv6NextHopUnchangedIs(bool v) {
  fieldIs(f_.ipv6NextHopUnchanged, v);
}
void MapEntry::levelIs(Orb::U32 v) {
  fieldIs(f_.level, v);
}
void MapEntry::metricIs(Orb::S32 v) {
  fieldIs(f_.metric, v);
}
void MapEntry::medTypeIs(MedType v) {
  fieldIs(f_.medType, v);
}
void MapEntry::metricTypeIs(Orb::U32 v) {
  fieldIs(f_.metricType, v);
}
void MapEntry::originIs(Acl::BGPOrigin v) {
  fieldIs(f_.origin, v);
}
void MapEntry::setValue2Is(Orb::U32 v) {
  fieldIs(f_.setValue2, v);
}
void MapEntry::setValue3Is(Orb::S32 v) {
  fieldIs(f_.setValue3, v);
}
void MapEntry::setValue19Is(Orb::S32 v) {
  fieldIs(f_.setValue19, v);
}
void MapEntry::setValue25Is(Orb::U32 v) {
  fieldIs(f_.setValue25, v);
}
void MapEntry::setValue26Is(Orb::S32 v) {
  fieldIs(f_.setValue26, v);
}
void MapEntry::setValue33Is(Orb::U32 v) {
  fieldIs(f_.setValue33, v);
}
void MapEntry::setValue35Is(Orb::S32 v) {
  fieldIs(f_.setValue35, v);
}
void MapEntry::asPathPrependIs(AsPath v) {
  fieldIs(f_.asPathPrepend, std::move(v));
}
void MapEntry::asPathReplaceIs(AsPath v) {
  fieldIs(f_.asPathReplace, std::move(v));
}
void MapEntry::communityAddReplaceIs(Orb::Ptr<CommunitySet const> v) {
  fieldIs(f_.communityAddReplace, std::move(v));
}
void MapEntry::communityDeleteIs(Orb::Ptr<CommunitySet const> v) {
  fieldIs(f_.communityDelete, std::move(v));
}
void MapEntry::extCommunityIs(Orb::Ptr<CommunitySet const> v) {
  fieldIs(f_.extCommunity, std::move(v));
}
void MapEntry::largeCommunityIs(Orb::Ptr<CommunitySet const> v) {
  fieldIs(f_.largeCommunity, std::move(v));
}
void MapEntry::extCommLbwFlagIs(Acl::ExtCommLinkBandwidthSetFlag v) {
  fieldIs(f_.lbwFlag, v);
}
void MapEntry::extCommLbwValueIs(float v) {
  // Compare the bits: 0.0 and -0.0 are different settings, and a NaN set
  // twice is no change.
  if (std::bit_cast<Orb::U32>(f_.lbwValue) == std::bit_cast<Orb::U32>(v)) return;
  f_.lbwValue = v;
  notify(setField_);
}

// ---- Map

Map::Map(Orb::Name name, Orb::Entity const* parent) : Entity(std::move(name)) {
  parentIs(parent);
}

Orb::Ptr<MapEntry> Map::mapEntry(Orb::U32 seqno) const {
  auto const* p = entries_.get(seqno);
  return p ? *p : nullptr;
}

Orb::Ptr<MapEntry> Map::mapEntryIs(Orb::U32 seqno) {
  if (auto* p = entries_.get(seqno)) return *p;
  Orb::Ptr<MapEntry> e(new MapEntry(seqno, this));
  entries_.set(seqno, e);
  notify(mapEntry_, Orb::Key(seqno));
  return e;
}

void Map::mapEntryDel(Orb::U32 seqno) {
  auto* p = entries_.get(seqno);
  if (!p) return;
  Orb::Ptr<MapEntry> gone = *p;
  entries_.erase(seqno);
  gone->parentIs(nullptr);
  notify(mapEntry_, Orb::Key(seqno));
}

void Map::versionIs(Orb::U32 v) {
  versionValue_ = v;
  notify(version_);
}

// ---- Config, PeerFilterConfig

namespace {
using Maps = Orb::OrderedMap<Orb::Name, Orb::Ptr<Map>>;

Orb::Ptr<Map> lookup(Maps const& maps, Orb::Name const& name) {
  auto const* p = maps.get(name);
  return p ? *p : nullptr;
}

// Removes `name` and cuts the map loose from its parent; false when absent.
bool takeOut(Maps& maps, Orb::Name const& name) {
  auto* p = maps.get(name);
  if (!p) return false;
  (*p)->parentIs(nullptr);
  maps.erase(name);
  return true;
}
}  // namespace

Orb::Ptr<Map> Config::routeMap(Orb::Name const& name) const {
  return lookup(maps_, name);
}

Orb::Ptr<Map> Config::routeMapIs(Orb::Name const& name) {
  if (auto m = lookup(maps_, name)) return m;
  Orb::Ptr<Map> m = maps_.set(name, Orb::Ptr<Map>(new Map(name, this)));
  notify(routeMap_, Orb::Key(name));
  return m;
}

void Config::routeMapDel(Orb::Name name) {
  if (takeOut(maps_, name)) notify(routeMap_, Orb::Key(name));
}

void Config::routeMapOpModeIs(RouteMapOpModeType mode) {
  if (mode_ == mode) return;
  mode_ = mode;
  notify(routeMapOpMode_);
}

Orb::Ptr<Map> PeerFilterConfig::peerFilter(Orb::Name const& name) const {
  return lookup(filters_, name);
}

Orb::Ptr<Map> PeerFilterConfig::peerFilterIs(Orb::Name const& name) {
  if (auto m = lookup(filters_, name)) return m;
  Orb::Ptr<Map> m = filters_.set(name, Orb::Ptr<Map>(new Map(name, this)));
  notify(peerFilter_, Orb::Key(name));
  return m;
}

void PeerFilterConfig::peerFilterDel(Orb::Name name) {
  if (takeOut(filters_, name)) notify(peerFilter_, Orb::Key(name));
}

}  // namespace Routing::RouteMap
