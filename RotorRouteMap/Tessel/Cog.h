// Tessel::Cog: the per-VRF translator. Every engine command the library sends
// is one of its operations; it is made for one batch of changes and holds no
// state between them.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "Acl/CommunityList.h"
#include "Acl/Enums.h"
#include "Kiwi/IpAddr.h"
#include "Kiwi/Prefix.h"
#include "L3/VrfName.h"
#include "Orb/Api.h"
#include "Orb/Ptr.h"
#include "Orb/String.h"
#include "Rib/CogOp.h"
#include "Routing/RouteMap/Map.h"
#include "Routing/RouteMap/Types.h"

namespace Tessel {

using Orb::U32;
using Orb::U8;
using Rib::RibPath;

class ROTOR_API Cog : public Orb::Object {
 public:
  /// Which node space of the engine a prefix list lives in.
  enum PrefixListFamily : U32 { ipv4 = 0, ipv6 = 1 };

  explicit Cog(L3::VrfName vrfName) : vrfName_(std::move(vrfName)) {}

  L3::VrfName const& vrfName() const noexcept { return vrfName_; }

  /// The path of a top-level node of the VRF's policy tree.
  RibPath ribPathIs(U32 id) const;
  /// The path of one route-map sequence: 512, 576 = mapName, 577, 578 = seqno.
  RibPath ribMapSeqPathIs(Orb::String const& mapName, U32 seqno) const;
  /// The path of a sequence's set node (601), where set clauses and the
  /// community clauses write their attributes.
  RibPath ribMapSetPathIs(Orb::String const& mapName, U32 seqno) const {
    RibPath path = ribMapSeqPathIs(mapName, seqno);
    path->doPushPath(601);
    return path;
  }

  /// Commits everything executed so far as one transaction.
  void doCommit();
  /// Commits and waits for the engine, carrying a harmless removal of an
  /// AS-path list that never exists.
  void doSyncCommit();
  /// Sends the global route-map set-operation mode; does not commit.
  void doRouteMapOpConfig(Routing::RouteMap::RouteMapOpModeType mode);

  /// The engine's name of a prefix list: IPv6 lists share the node space of
  /// IPv4 lists and are kept apart by a ".ipv6." prefix.
  static Orb::String prefixListId(Orb::String const& name, PrefixListFamily family);

  // Prefix lists and standard IP access lists. None of these commits.

  /// Creates the node of an IPv4 list under its engine name.
  void doAddIpPrefixList(Orb::String const& name);
  /// Creates the node of an IPv6 list under its engine name.
  void doAddIpv6PrefixList(Orb::String const& name);
  /// One removal for both families; the engine drops the list's entries
  /// with it.
  void doDelIpPrefixList(Orb::String const& name, PrefixListFamily family);
  /// Adds or replaces one entry. A zero ge and le send the prefix's own
  /// length as both bounds; otherwise only the configured bounds are sent.
  /// Any action other than deny is sent as permit.
  void doAddIpPrefixListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                              Kiwi::Prefix const& prefix, U32 ge, U32 le);
  void doAddIpv6PrefixListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                                Kiwi::Ip6Prefix const& prefix, U32 ge, U32 le);
  void doDelIpPrefixListEntry(Orb::String const& name, U32 seqno, PrefixListFamily family);
  /// Standard ACLs go under their configured name, with no family prefix.
  void doAddIpStdAcl(Orb::String const& name);
  /// Sends the address and its full mask, the mask as a dotted address.
  void doAddIpStdAclEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                          Kiwi::IpAddrWithFullMask const& source);
  void doDelIpStdAcl(Orb::String const& name);
  void doDelIpStdAclEntry(Orb::String const& name, U32 seqno);

  // Route maps and sequences. None of these commits.

  /// Sends the whole map: every sequence with its match rules, sub-route-map
  /// and set clauses, in the map's own iteration order. An empty map sends
  /// nothing at all.
  void doInsertRouteMap(Orb::Ptr<Routing::RouteMap::Map const> const& map,
                        Orb::String const& mapName);
  void doDeleteRouteMap(Orb::String const& mapName);
  /// Re-announces the map before the sequence, so a sequence never reaches
  /// the engine ahead of its map.
  void doAddMapSequence(Orb::String const& mapName, Acl::MatchPermit permit, U32 seqno);
  /// Same operation name as the map removal; the engine tells them apart by
  /// the depth of the path.
  void doDeleteMapSequence(Orb::String const& mapName, U32 seqno);
  void doAddSubRouteMap(Orb::String const& mapName, U32 seqno, Orb::String const& subRouteMapName);

  // Match clauses. A true `invert` is sent as flag 0; a false one is not sent.

  /// Sends one rule through the handler of its option; unknown options are
  /// traced and skipped.
  void doAddMatchRule(Orb::String const& mapName, U32 seqno,
                      Routing::RouteMap::MatchRule const& rule);
  /// The value is also the key, so several values of one option coexist.
  void doAddMatchIntValue(Orb::String const& mapName, U32 seqno, U32 keyTag, U32 valueTag,
                          U32 value, bool invert);
  void doAddMatchStrValue(Orb::String const& mapName, U32 seqno, U32 keyTag, U32 valueTag,
                          Orb::String const& value, bool invert);
  /// Configured protocol 1 to 9, sent as the engine's protocol code.
  void doAddMatchProto(Orb::String const& mapName, U32 seqno, U32 protocol, bool invert);
  /// OSPF metric type 1 or 2.
  void doAddMatchMetricType(Orb::String const& mapName, U32 seqno, U32 type, bool invert);
  /// Route type 1 to 4; type 5 is accepted and not sent.
  void doAddMatchRouteType(Orb::String const& mapName, U32 seqno, U32 type, bool invert);
  /// Matches on the kernel's name of the configured interface.
  void doAddMatchInterface(Orb::String const& mapName, U32 seqno, Orb::String const& intfName,
                           bool invert);
  void doAddMatchGateway(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr address, bool invert);
  void doAddMatchNextHop(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr address,
                         Kiwi::Ip6Addr const& ip6Address, bool isIpv6, bool invert);
  void doAddMatchAccessList(Orb::String const& mapName, U32 seqno, Orb::String const& listName,
                            bool invert);
  void doAddMatchPrefixList(Orb::String const& mapName, U32 seqno, Orb::String const& listName,
                            bool isIpv6, bool invert);
  /// Names the list as configured, without the family prefix, and cannot be
  /// inverted.
  void doAddMatchDynamicPrefixList(Orb::String const& mapName, U32 seqno,
                                   Orb::String const& listName, bool isIpv6);
  void doAddMatchNextHopPrefixList(Orb::String const& mapName, U32 seqno,
                                   Orb::String const& listName, bool isIpv6, bool invert);
  void doAddMatchResolvedNextHopPrefixList(Orb::String const& mapName, U32 seqno,
                                           Orb::String const& listName, bool isIpv6, bool invert);
  /// Always sends the invert flag, true or false.
  void doAddMatchContribAggAttr(Orb::String const& mapName, U32 seqno, Orb::String const& mapName2,
                                bool invert);
  void doAddMatchAsRange(Orb::String const& mapName, U32 seqno, U32 low, U32 high, bool invert);
  void doAddMatchAsPathLength(Orb::String const& mapName, U32 seqno, U32 first, U32 second,
                              bool invert);
  void doAddMatchInstance(Orb::String const& mapName, U32 seqno, U32 instance, U32 extra,
                          bool invert);
  /// Community-list match (standard, extended or large); an exact match
  /// names the lists' exact twins. The list names must not be empty.
  void doAddMatchCommunity(Orb::String const& mapName, U32 seqno,
                           Routing::RouteMap::CommListSet const& commListSet, bool invert,
                           bool exact, Acl::CommunityType type);
  /// Community-instance count match, keyed by the lowest count.
  void doAddMatchCommInst(Orb::String const& mapName, U32 seqno, U32 low, U32 high, bool invert);

  // Set clauses: attributes of the set node (601) below the sequence.

  void doSetIntValue(Orb::String const& mapName, U32 seqno, U32 tag, U32 value);
  void doSetU8Value(Orb::String const& mapName, U32 seqno, U32 tag, U8 value);
  void doSetStrValue(Orb::String const& mapName, U32 seqno, U32 tag, Orb::String const& value);
  void doSetNextHop(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr nextHop,
                    Kiwi::Ip6Addr const& ipv6NextHop, bool isIpv6);
  /// Commits right after its command, unlike the other set operations.
  void doSetNextHopPeerAddr(Orb::String const& mapName, U32 seqno, U32 tag, bool value);
  /// Commits right after its command, unlike the other set operations.
  void doSetNextHopUnchanged(Orb::String const& mapName, U32 seqno, U32 tag, bool value);
  void doSetAsPathPrependLastAs(Orb::String const& mapName, U32 seqno, U8 count);
  /// Sends the metric and the MED mode; aborts on a MED type above 8.
  void doSetMetric(Orb::String const& mapName, U32 seqno, U32 metric,
                   Routing::RouteMap::MedType medType);
  /// "type-1" or "type-2"; other text is traced and not sent.
  void doSetMetricType(Orb::String const& mapName, U32 seqno, Orb::String const& type);
  /// AS numbers as decimal text separated by blanks.
  void doSetAsPathPrepend(Orb::String const& mapName, U32 seqno, Orb::String const& list);
  /// AS numbers as decimal text separated by blanks.
  void doSetAsPathReplace(Orb::String const& mapName, U32 seqno, Orb::String const& list);
  /// Link-bandwidth options of the extended-community set; sent for every
  /// sequence, so "none" resets what an earlier version set.
  void doSetExtCommunityLbwOpts(Orb::String const& mapName, U32 seqno,
                                Acl::ExtCommLinkBandwidthSetFlag lbwFlag, float value);
  /// Standard community set of a clause: rebuilds the clause's private list
  /// of this variant and applies it to the sequence.
  void doSetCommunity(Orb::String const& mapName, U32 seqno,
                      Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);
  /// Extended community set, written as the set ".e<map><seqno>"; a set with
  /// a link-bandwidth community is always added, never replacing.
  void doSetExtCommunity(Orb::String const& mapName, U32 seqno,
                         Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);
  /// Large community set, written as the set ".l<map><seqno>".
  void doSetLargeCommunity(Orb::String const& mapName, U32 seqno,
                           Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);
  /// Records the clause as a user of the community lists its set names, so
  /// that a change of one of them rebuilds the clause.
  void addRmClauseToCommListUsers(Orb::String const& mapName, U32 seqno,
                                  Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);

  // AS-path access lists and the AS-path regular-expression mode. Lists are
  // keyed by "/policy/asplist " + name, entries by seqno + "/asplist/entry".
  // None of these commits.

  /// Makes the list node; its value carries the plain name.
  void doAddAsPathList(Orb::String const& name);
  /// Removes the list node with whatever entries the engine holds under it.
  void doDeleteAsPathList(Orb::String const& name);
  /// Writes one entry. The origin goes as 256 plus one bit per known origin
  /// (none for an unknown one); a deny entry carries no action at all.
  void doAddAsPathListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit permit,
                            Orb::String const& regex, Acl::BGPOrigin origin);
  void doDelAsPathListEntry(Orb::String const& name, U32 seqno);
  /// The dialect the engine compiles AS-path expressions in: mode 1 is the
  /// engine's 2, every other mode its 1.
  void doAsPathRegexMode(Acl::RegexMode mode);

  // Private community lists of route-map clauses. None of these commits by
  // itself; the list and set commands they call do.

  /// Builds the clause's private list: from its own values (one entry at
  /// sequence 10), or merged from the lists it names.
  void doAddInternalCommunityList(Orb::String const& mapName, U32 seqno,
                                  Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);
  /// Fills the private list with the entries of every named list that is
  /// configured, in name order; entries keep their own sequence numbers.
  void doAddInternalMergeCommunityListName(
      Orb::String const& mapName, U32 seqno,
      Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet);
  /// Points the sequence's standard community set at the private list.
  void doApplyCommListToRouteMap(Orb::String const& mapName, U32 seqno, Orb::String const& clName,
                                 Acl::CommSetFlag flag);
  /// Deletes the private list and set of one variant ("ar" or "del").
  void doDeleteInternalCommunityList(Orb::String const& mapName, U32 seqno, Acl::CommSetFlag flag);
  /// Forgets every use the sequence made of any community list, dropping the
  /// lists no sequence uses any more from the index.
  void delRmFromCommListUsers(Orb::String const& mapName, U32 seqno);
  /// After `map` was sent whole as `mapName`: forgets the uses recorded for
  /// `mapName` that the map no longer makes (a sequence gone, a clause
  /// turned off or given another set), so that only the clauses the engine
  /// has now are rebuilt when a list changes. With a null map (the map went)
  /// forgets all of them. Sends nothing.
  void delStaleRmFromCommListUsers(Orb::String const& mapName, Routing::RouteMap::Map const* map);
  /// Rebuilds every clause recorded as a user of `listName`, in the index's
  /// hash order.
  void refreshCommListUsersOf(Orb::String const& listName);

  // Community lists and community sets. Only the removals and the set
  // writes commit by themselves.

  void doAddCommunityList(Orb::String const& listName);
  /// Commits.
  void doDelCommunityList(Orb::String const& listName);
  /// Rewrites the entry's set (deleting it as every kind first), then the
  /// entry in the list and in the list's exact twin.
  void doAddCommunityListEntry(Orb::String const& listName, Acl::CommunityListEntry const& entry);
  /// Deletes the entry's set as every kind, then the entry and its twin.
  void doDelCommunityListEntry(Orb::String const& listName, U32 seqno);
  /// Writes the set of a configured entry, of the kind its list type says;
  /// commits.
  void doAddListCommSet(Orb::String const& setName, Acl::CommunityListEntry const& entry);
  /// Writes a clause's set as `type`; commits. True only for an extended set
  /// holding a link-bandwidth community.
  bool doAddSetCommSet(Orb::String const& setName,
                       Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet,
                       Acl::CommunityType type);
  /// Commits. Aborts on a type other than standard, extended or large.
  void doDelCommSet(Orb::String const& setName, Acl::CommunityType type);
  /// Adds an entry to a list the library made itself; always sent as a
  /// standard entry, with no exact twin.
  void doAddCommunitySetToList(Orb::String const& listName, U32 seqno, Orb::String const& setName,
                               Acl::MatchPermit permit);

  /// The set of a configured entry: "." + list name + sequence, with no
  /// separator, so entry 2 of a1 and entry 12 of a share one name.
  static Orb::String getCommunitySetName(Orb::String const& listName, U32 seqno);
  /// The private set of a clause: ".cs" + map + sequence + "del" or "ar".
  static Orb::String getInternalCommunitySetName(Orb::String const& mapName, U32 seqno,
                                                 Acl::CommSetFlag flag);
  /// The private list of a clause: ".cl" + map + sequence + "del" or "ar".
  static Orb::String getInternalCommunityListName(Orb::String const& mapName, U32 seqno,
                                                  Acl::CommSetFlag flag);

  // A translator lives for one change, and some commands make one of their
  // own: its storage is recycled.
  static void* operator new(std::size_t size);
  static void operator delete(void* block, std::size_t size) noexcept;

 private:
  L3::VrfName vrfName_;
  /// Carried for the engine command library; no operation reads it.
  U32 reserved_ = 0;
  /// The root, and the check's epoch, at which this translator's VRF was
  /// last found acceptable: every path is checked, but the comparison runs
  /// again only when the root, its name or a retirement has changed since.
  mutable void const* vrfCheckedFor_ = nullptr;
  mutable Orb::U64 vrfCheckedAt_ = 0;
};

/// The only way reactors obtain a translator.
ROTOR_API Orb::Ptr<Cog> cogFactory(L3::VrfName vrfName);

/// A new, empty path for the VRF. Asserts that the VRF is the current root's
/// when a root exists. The flag adds nothing to the path.
ROTOR_API RibPath cogVrePath(L3::VrfName const& vrfName, bool);

/// A new command with that name and path, no values, not a deletion.
ROTOR_API Orb::Ptr<Rib::CogOp> ribOpIs(Orb::String const& name, RibPath path);
/// As above for a literal name, which goes to the command without a copy
/// through an intermediate String.
ROTOR_API Orb::Ptr<Rib::CogOp> ribOpIs(std::string_view name, RibPath path);
template <std::size_t N>
Orb::Ptr<Rib::CogOp> ribOpIs(char const (&name)[N], RibPath path) {
  return ribOpIs(std::string_view(name, N - 1), std::move(path));
}

/// Sends the first `count` AS numbers from `first` on (in key order) under
/// set tag 18, packed back to back as 32-bit numbers in host byte order: a
/// byte string of 4 * count bytes, not text. `count` must not exceed the
/// elements left in the collection.
ROTOR_API void doSetAsPathPrepend_(L3::VrfName const& vrfName, Orb::String const& mapName,
                                   U32 seqno,
                                   Routing::RouteMap::MapEntry::AsPath::const_iterator first,
                                   U32 count);
/// As doSetAsPathPrepend_, under set tag 34.
ROTOR_API void doSetAsPathReplace_(L3::VrfName const& vrfName, Orb::String const& mapName,
                                   U32 seqno,
                                   Routing::RouteMap::MapEntry::AsPath::const_iterator first,
                                   U32 count);

ROTOR_API std::string valueToStrep(Cog::PrefixListFamily v);
/// Reads "ipv4", "ipv6" or a decimal number; anything else raises
/// Orb::RangeError naming PrefixListFamily.
ROTOR_API Cog::PrefixListFamily prefixListFamilyFromStrep(std::string_view text);
ROTOR_API std::ostream& operator<<(std::ostream& os, Cog::PrefixListFamily v);
/// The family of a number; numbers outside the named values are kept.
ROTOR_API Cog::PrefixListFamily PrefixListFamilyInstance(U32 v);
/// The family of a text, as prefixListFamilyFromStrep.
ROTOR_API Cog::PrefixListFamily PrefixListFamilyInstance(std::string_view text);
ROTOR_API std::string stringValue(Cog::PrefixListFamily v);
/// The family at `position` in declaration order (0 ipv4, 1 ipv6); a
/// position past the last one is an Orb::RangeError.
template <class E>
E sequenceToValue(U32 position);
template <>
ROTOR_API Cog::PrefixListFamily sequenceToValue<Cog::PrefixListFamily>(U32 position);

}  // namespace Tessel
