// Routing::RouteMap::MapEntry: one sequence (clause) of a route map with its
// match rules, sub-route-map and set fields. Setters notify the entry's own
// attributes; which set fields are present is told by `setFlags`.
#pragma once

#include "Acl/Enums.h"
#include "Kiwi/IpAddr.h"
#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/HashMap.h"
#include "Orb/OrderedMap.h"
#include "Routing/RouteMap/CommunitySet.h"
#include "Routing/RouteMap/MatchRule.h"

namespace Routing::RouteMap {

class Map;

class ROTOR_API MapEntry : public Orb::Entity {
 public:
  /// Which set fields of the entry are present.
  struct SetFlags {
    static constexpr Orb::U32 asPathPrepend = 0x1;
    static constexpr Orb::U32 nextHop = 0x4;
    static constexpr Orb::U32 ipv6NextHop = 0x8;
    static constexpr Orb::U32 level = 0x10;
    static constexpr Orb::U32 setValue19 = 0x20;
    static constexpr Orb::U32 metric = 0x80;
    static constexpr Orb::U32 metricType = 0x100;
    static constexpr Orb::U32 origin = 0x400;
    static constexpr Orb::U32 setValue2 = 0x800;
    static constexpr Orb::U32 communityAddReplace = 0x1000;
    static constexpr Orb::U32 communityDelete = 0x2000;
    static constexpr Orb::U32 extCommunity = 0x4000;
    static constexpr Orb::U32 setValue3 = 0x8000;
    static constexpr Orb::U32 setValue25 = 0x10000;
    static constexpr Orb::U32 setValue26 = 0x20000;
    static constexpr Orb::U32 nextHopPeerAddr = 0x40000;
    static constexpr Orb::U32 ipv6NextHopPeerAddr = 0x80000;
    static constexpr Orb::U32 nextHopUnchanged = 0x100000;
    static constexpr Orb::U32 ipv6NextHopUnchanged = 0x200000;
    static constexpr Orb::U32 setValue33 = 0x2000000;
    static constexpr Orb::U32 asPathReplace = 0x4000000;
    static constexpr Orb::U32 setValue35 = 0x10000000;
    static constexpr Orb::U32 largeCommunity = 0x20000000;

    Orb::U32 bits = 0;
    bool has(Orb::U32 bit) const noexcept { return (bits & bit) != 0; }
    friend bool operator==(SetFlags, SetFlags) = default;
  };

  enum Attribute : Orb::AttributeId {
    permit_ = 1,
    matchRule_,
    subRouteMap_,
    setFlags_,
    setField_,  // any of the set fields below
  };

  using AsPath = Orb::OrderedMap<Orb::U32, Orb::U32>;

  Orb::U32 seqno() const noexcept { return seqno_; }
  Map const* map() const noexcept;

  Acl::MatchPermit permit() const noexcept { return permitValue_; }
  void permitIs(Acl::MatchPermit v);

  /// Match rules keyed by option, at most one per option.
  Orb::HashMap<Orb::U32, MatchRule> const& matchRule() const noexcept { return matchRules_; }
  MatchRule const* matchRule(MatchOption option) const { return matchRules_.get(option); }
  void matchRuleIs(MatchRule const& rule);
  void matchRuleDel(MatchOption option);

  Orb::String const& subRouteMap() const noexcept { return subRouteMapValue_; }
  void subRouteMapIs(Orb::String const& name);

  SetFlags setFlags() const noexcept { return setFlagsValue_; }
  void setFlagsIs(SetFlags flags);
  /// Turns one presence bit on or off.
  void setFlagIs(Orb::U32 bit, bool present);

  // Set fields; each setter notifies setField_.
  Kiwi::IpAddr nextHop() const noexcept { return f_.nextHop; }
  void nextHopIs(Kiwi::IpAddr v);
  Kiwi::Ip6Addr const& ipv6NextHop() const noexcept { return f_.ipv6NextHop; }
  void ipv6NextHopIs(Kiwi::Ip6Addr const& v);
  bool nextHopPeerAddr() const noexcept { return f_.nextHopPeerAddr; }
  void nextHopPeerAddrIs(bool v);
  bool ipv6NextHopPeerAddr() const noexcept { return f_.ipv6NextHopPeerAddr; }
  void ipv6NextHopPeerAddrIs(bool v);
  bool nextHopUnchanged() const noexcept { return f_.nextHopUnchanged; }
  void nextHopUnchangedIs(bool v);
  bool ipv6NextHopUnchanged() const noexcept { return f_.ipv6NextHopUnchanged; }
  void ipv6NextHopUnchangedIs(bool v);
  /// IS-IS level, valid 1 to 3.
  Orb::U32 level() const noexcept { return f_.level; }
  void levelIs(Orb::U32 v);
  Orb::S32 metric() const noexcept { return f_.metric; }
  void metricIs(Orb::S32 v);
  MedType medType() const noexcept { return f_.medType; }
  void medTypeIs(MedType v);
  /// OSPF metric type, valid 1 and 2.
  Orb::U32 metricType() const noexcept { return f_.metricType; }
  void metricTypeIs(Orb::U32 v);
  Acl::BGPOrigin origin() const noexcept { return f_.origin; }
  void originIs(Acl::BGPOrigin v);
  Orb::U32 setValue2() const noexcept { return f_.setValue2; }
  void setValue2Is(Orb::U32 v);
  Orb::S32 setValue3() const noexcept { return f_.setValue3; }
  void setValue3Is(Orb::S32 v);
  Orb::S32 setValue19() const noexcept { return f_.setValue19; }
  void setValue19Is(Orb::S32 v);
  Orb::U32 setValue25() const noexcept { return f_.setValue25; }
  void setValue25Is(Orb::U32 v);
  Orb::S32 setValue26() const noexcept { return f_.setValue26; }
  void setValue26Is(Orb::S32 v);
  /// The AS-path prepend last-AS count.
  Orb::U32 setValue33() const noexcept { return f_.setValue33; }
  void setValue33Is(Orb::U32 v);
  Orb::S32 setValue35() const noexcept { return f_.setValue35; }
  void setValue35Is(Orb::S32 v);
  /// AS numbers by position.
  AsPath const& asPathPrepend() const noexcept { return f_.asPathPrepend; }
  void asPathPrependIs(AsPath v);
  AsPath const& asPathReplace() const noexcept { return f_.asPathReplace; }
  void asPathReplaceIs(AsPath v);
  Orb::Ptr<CommunitySet const> const& communityAddReplace() const noexcept {
    return f_.communityAddReplace;
  }
  void communityAddReplaceIs(Orb::Ptr<CommunitySet const> v);
  Orb::Ptr<CommunitySet const> const& communityDelete() const noexcept {
    return f_.communityDelete;
  }
  void communityDeleteIs(Orb::Ptr<CommunitySet const> v);
  Orb::Ptr<CommunitySet const> const& extCommunity() const noexcept { return f_.extCommunity; }
  void extCommunityIs(Orb::Ptr<CommunitySet const> v);
  Orb::Ptr<CommunitySet const> const& largeCommunity() const noexcept { return f_.largeCommunity; }
  void largeCommunityIs(Orb::Ptr<CommunitySet const> v);
  Acl::ExtCommLinkBandwidthSetFlag extCommLbwFlag() const noexcept { return f_.lbwFlag; }
  void extCommLbwFlagIs(Acl::ExtCommLinkBandwidthSetFlag v);
  float extCommLbwValue() const noexcept { return f_.lbwValue; }
  void extCommLbwValueIs(float v);

 private:
  friend class Map;
  MapEntry(Orb::U32 seqno, Map const* map);

  template <class T>
  void fieldIs(T& field, T v);

  struct Fields {
    Kiwi::IpAddr nextHop;
    Kiwi::Ip6Addr ipv6NextHop;
    bool nextHopPeerAddr = false;
    bool ipv6NextHopPeerAddr = false;
    bool nextHopUnchanged = false;
    bool ipv6NextHopUnchanged = false;
    Orb::U32 level = 0;
    Orb::S32 metric = 0;
    MedType medType = medTypeNone;
    Orb::U32 metricType = 0;
    Acl::BGPOrigin origin = Acl::originIgp;
    Orb::U32 setValue2 = 0;
    Orb::S32 setValue3 = 0;
    Orb::S32 setValue19 = 0;
    Orb::U32 setValue25 = 0;
    Orb::S32 setValue26 = 0;
    Orb::U32 setValue33 = 0;
    Orb::S32 setValue35 = 0;
    AsPath asPathPrepend;
    AsPath asPathReplace;
    Orb::Ptr<CommunitySet const> communityAddReplace;
    Orb::Ptr<CommunitySet const> communityDelete;
    Orb::Ptr<CommunitySet const> extCommunity;
    Orb::Ptr<CommunitySet const> largeCommunity;
    Acl::ExtCommLinkBandwidthSetFlag lbwFlag = Acl::lbwNone;
    float lbwValue = 0;
  };

  Orb::U32 seqno_;
  Acl::MatchPermit permitValue_ = Acl::permit;
  Orb::HashMap<Orb::U32, MatchRule> matchRules_;
  Orb::String subRouteMapValue_;
  SetFlags setFlagsValue_;
  Fields f_;
};

}  // namespace Routing::RouteMap
