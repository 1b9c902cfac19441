// A reconcile: a fresh start worked out aside, the policy map's library
// reasons brought in line with it, then the engine objects that differ from
// the mirror deleted, written or resent, in the engine's tree order.
#include "Tessel/Reconcile.h"

#include <charconv>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Orb/Trace.h"
#include "RibDynamicPrefixList/Cog.h"
#include "RibDynamicPrefixList/DynPfxConfigSm.h"
#include "Tessel/AclConfigSm.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/Cog.h"
#include "Tessel/FreshStart.h"
#include "Tessel/PeerFilterConfigSm.h"
#include "Tessel/PolicyReasons.h"
#include "Tessel/Root.h"
#include "Tessel/RouteMapConfigSm.h"
#include "Tessel/TraceLevels.h"
#include "Tessel/UpdatePolicyMap.h"
#include "Tessel/VrfStatusSm.h"

namespace Tessel {

namespace {

using Rib::PathElement;
using Path = std::vector<PathElement>;
using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::PolicyType;
using RoutingPolicyMap::Requester;

constexpr std::string_view kPeerFilterPrefix = ".PEER_FILTER.";
constexpr std::string_view kListKeyPrefix = "/policy/commlist ";
constexpr std::string_view kSetKeyPrefix = "/policy/commset ";
constexpr std::string_view kAsPathKeyPrefix = "/policy/asplist ";

bool isId(PathElement const& e, Orb::U32 id) {
  return e.kind == PathElement::Kind::pathId && e.tag == id;
}

// ---- the policy map

/// A reason as the library registers it: its own plugin, with the CLI modes
/// and texts of a sequence's references and of a dynamic prefix list's match
/// map. Any other reason was put there by another part of the agent.
bool libraryReason(Requester const& r) {
  if (r.pluginType != RoutingPolicyMap::pluginTypeRouting) return false;
  if (r.cliMode == RoutingPolicyMap::cliModeRouteMap) {
    return r.configCli == pmapRmapNestedRmap || r.configCli == pmapRmapNestedV4Dpl ||
           r.configCli == pmapRmapNestedV6Dpl;
  }
  return r.cliMode == RoutingPolicyMap::cliModeDynamicPrefixList &&
         r.configCli == pmapDynPfxMatchMap;
}

using Reason = std::tuple<PolicyType, Orb::Name, Requester>;

template <class Visit>
void eachReason(PolicyMap const& pmap, Visit visit) {
  auto walk = [&](PolicyType type, PolicyMap::Requesters const& coll) {
    for (auto const& [name, requester] : coll) {
      for (auto const& [reason, unused] : requester->reason())
        visit(type, name, reason);
    }
  };
  walk(RoutingPolicyMap::policyTypeRouteMap, pmap.routeMap());
  walk(RoutingPolicyMap::policyTypeDynamicPrefixList, pmap.dynamicPrefixList());
  walk(RoutingPolicyMap::policyTypeRedistributedDynPfx, pmap.redistributedDynPfx());
}

std::set<Reason> libraryReasons(PolicyMap const& pmap) {
  std::set<Reason> out;
  eachReason(pmap, [&](PolicyType type, Orb::Name const& name, Requester const& r) {
    if (libraryReason(r)) out.emplace(type, name, r);
  });
  return out;
}

/// The policy map as the rest of the agent wrote it: what a fresh start
/// reads, before it registers its own references.
Orb::Ptr<PolicyMap> withoutLibraryReasons(PolicyMap const& live) {
  auto out = PolicyMap::create("reconcile");
  eachReason(live, [&](PolicyType type, Orb::Name const& name, Requester const& r) {
    if (libraryReason(r)) return;
    updatePolicyMap(type, r.pluginType, r.cliMode, r.configCli, r.configKey, out, name, false);
  });
  return out;
}

bool holdsReason(PolicyMap const& pmap, Reason const& r) {
  auto const& [type, name, reason] = r;
  auto entry = type == RoutingPolicyMap::policyTypeRouteMap ? pmap.routeMap(name)
               : type == RoutingPolicyMap::policyTypeDynamicPrefixList
                   ? pmap.dynamicPrefixList(name)
                   : pmap.redistributedDynPfx(name);
  return entry && entry->hasReason(reason);
}

/// The route map and sequence of a sequence's key, "MAP seqNo N".
bool sequenceOf(std::string_view key, Orb::String& map, Orb::U32& seqno) {
  std::size_t const at = key.rfind(" seqNo ");
  if (at == std::string_view::npos) return false;
  std::string_view const digits = key.substr(at + 7);
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), seqno);
  if (ec != std::errc() || end != digits.data() + digits.size()) return false;
  map = Orb::String(key.substr(0, at));
  return true;
}

/// Has the reactor a missing reason belongs to register what it refers to
/// now, so that its memory of what it registered stays true.
void registerAgain(VrfStatusSm& sm, Requester const& r) {
  if (r.cliMode == RoutingPolicyMap::cliModeDynamicPrefixList) {
    auto* dpl = sm.dynPfxConfigSm();
    if (auto* list = dpl ? dpl->orbDynamicPrefixList(Orb::Name(r.configKey)) : nullptr)
      list->handleDynamicPrefixListVersion();
    return;
  }
  Orb::String map;
  Orb::U32 seqno = 0;
  if (!sequenceOf(r.configKey.view(), map, seqno)) return;
  OrbRouteMap* rm = sm.routeMapConfigSm()->orbRouteMap(Orb::Name(map));
  if (OrbSeqMapEntry* seq = rm ? rm->seqMapEntry(seqno) : nullptr)
    seq->addReferredPoliciesToPolicyMap();
}

std::size_t reconcilePolicyMap(Root& root, VrfStatusSm& sm, std::set<Reason> const& want) {
  PolicyMap& pmap = *root.policyMap();
  std::size_t changed = 0;
  for (Reason const& r : libraryReasons(pmap)) {
    if (want.contains(r) || !holdsReason(pmap, r)) continue;
    auto const& [type, name, reason] = r;
    ORB_TRACE(traceDelete, "reconcile: withdraw " << reason << " from " << name);
    // What the withdrawal unlists withdraws its own references in turn.
    updatePolicyMap(type, reason.pluginType, reason.cliMode, reason.configCli, reason.configKey,
                    root.policyMap(), name, true);
    ++changed;
  }
  for (Reason const& r : want) {
    if (holdsReason(pmap, r)) continue;
    auto const& [type, name, reason] = r;
    ORB_TRACE(traceHandler, "reconcile: register " << reason << " under " << name);
    registerAgain(sm, reason);
    if (!holdsReason(pmap, r)) {
      updatePolicyMap(type, reason.pluginType, reason.cliMode, reason.configCli, reason.configKey,
                      root.policyMap(), name, false);
    }
    ++changed;
  }
  return changed;
}

// ---- the engine

/// The engine object a node belongs to, by its path.
enum class Kind {
  none,
  modes,
  routeMap,
  prefixList,
  stdAcl,
  asPathList,
  communityList,
  communitySet,
  dynamicPrefixList,
};

/// How many elements of `path` name its object, and the object's kind.
std::pair<Kind, std::size_t> objectOf(Path const& path) {
  if (path.empty()) return {Kind::none, 0};
  if (isId(path[0], 256)) return {Kind::modes, 1};
  if (!isId(path[0], 512) || path.size() < 2) return {Kind::none, 0};
  if (path[1].kind == PathElement::Kind::stringKey && path[1].tag == 576)
    return {Kind::routeMap, 2};
  if (path.size() < 3 || path[1].kind != PathElement::Kind::pathId) return {Kind::none, 0};
  switch (path[1].tag) {
    case 603:
      return {Kind::prefixList, 3};
    case 602:
      return {Kind::stdAcl, 3};
    case 534:
      return {Kind::asPathList, 3};
    case 528:
      return {Kind::communityList, 3};
    case 524:
    case 526:
    case 631:
      return {Kind::communitySet, 3};
    case 627:
      return {Kind::dynamicPrefixList, 3};
    default:
      return {Kind::none, 0};
  }
}

/// One engine object that differs, with the nodes below it that do.
struct Object {
  Kind kind = Kind::none;
  Path top;
  bool had = false;     // the mirror holds its top node
  bool wanted = false;  // a fresh start holds it
  std::vector<Rib::NodeChange> below;
};

/// The sequence number of a community-list entry key: the literal
/// "/commlist/entry " cut by the number, then the set name (which starts
/// with a dot), or beyond 16 the number, a blank and the set name.
bool communityEntrySeqno(std::string_view key, Orb::U32& seqno) {
  if (!key.empty() && key[0] >= '0' && key[0] <= '9') {
    auto [end, ec] = std::from_chars(key.data(), key.data() + key.size(), seqno);
    return ec == std::errc() && end != key.data() + key.size() && *end == ' ';
  }
  std::size_t const dot = key.find('.');
  if (dot == std::string_view::npos || dot > 16) return false;
  seqno = static_cast<Orb::U32>(16 - dot);
  return true;
}

/// The sequence number of an AS-path entry key, "N/asplist/entry".
bool asPathEntrySeqno(std::string_view key, Orb::U32& seqno) {
  auto [end, ec] = std::from_chars(key.data(), key.data() + key.size(), seqno);
  return ec == std::errc() && std::string_view(end, key.data() + key.size()) == "/asplist/entry";
}

class EngineRepair {
 public:
  EngineRepair(Root& root, VrfStatusSm& sm, Rib::EngineModel const& have,
               Rib::EngineModel const& want)
      : root_(root), sm_(sm), have_(have), want_(want), cog_(cogFactory(root.vrfName())) {}

  /// Sends the repair; the number of objects it touched.
  std::size_t run() {
    std::vector<Object> objects = differing();
    for (Object const& o : objects)
      deleteStale(o);
    for (Object const& o : objects)
      write(o);
    // Maps resent last: their clauses name the lists written above.
    for (Orb::String const& map : resend_)
      resendMap(map);
    if (!objects.empty()) cog_->doCommit();
    return objects.size();
  }

 private:
  std::vector<Object> differing() const {
    std::vector<Object> out;
    for (Rib::NodeChange const& change : Rib::changedNodes(have_, want_)) {
      auto const [kind, depth] = objectOf(change.path);
      if (kind == Kind::none) {
        // The tree's bare containers come and go with what is below them.
        if (change.path.size() > 1) {
          ORB_TRACE(traceError, "Error: reconcile knows no object of node "
                                    << change.path.size() << " deep under " << change.path[0].tag);
        }
        continue;
      }
      Path top(change.path.begin(), change.path.begin() + static_cast<std::ptrdiff_t>(depth));
      if (out.empty() || out.back().top != top) {
        Object o{kind, top, have_.holds(top), want_.holds(top), {}};
        out.push_back(std::move(o));
      }
      out.back().below.push_back(change);
    }
    return out;
  }

  static std::string_view keyText(Path const& top, std::string_view prefix) {
    std::string_view text = top.back().text.view();
    if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
    return text;
  }

  Acl::AclListConfig const& lists() const { return *root_.aclListConfig(); }

  // ---- deletions

  void deleteStale(Object const& o) {
    Orb::String const name(o.kind == Kind::routeMap || o.kind == Kind::prefixList ||
                                   o.kind == Kind::stdAcl || o.kind == Kind::dynamicPrefixList
                               ? o.top.back().text.view()
                               : std::string_view());
    if (o.had && !o.wanted) {
      switch (o.kind) {
        case Kind::routeMap:
          cog_->doDeleteRouteMap(name);
          return;
        case Kind::prefixList: {
          bool const v6 = name.view().starts_with(".ipv6.");
          cog_->doDelIpPrefixList(v6 ? Orb::String(name.view().substr(6)) : name,
                                  v6 ? Cog::ipv6 : Cog::ipv4);
          return;
        }
        case Kind::stdAcl:
          cog_->doDelIpStdAcl(name);
          return;
        case Kind::asPathList:
          cog_->doDeleteAsPathList(Orb::String(keyText(o.top, kAsPathKeyPrefix)));
          return;
        case Kind::communityList:
          cog_->doDelCommunityList(Orb::String(keyText(o.top, kListKeyPrefix)));
          return;
        case Kind::communitySet:
          cog_->doDelCommSet(Orb::String(keyText(o.top, kSetKeyPrefix)), setKindOf(o.top));
          return;
        case Kind::dynamicPrefixList:
          RibDynamicPrefixList::cogFactory()->doDelDynamicPrefixList(name);
          return;
        default:
          return;
      }
    }
    if (!o.wanted) return;
    // Entries only the mirror holds, in a list that stays; a private list
    // goes and comes back whole with its map.
    if (o.kind == Kind::communityList && privateOwner(keyText(o.top, kListKeyPrefix))) return;
    for (Rib::NodeChange const& c : o.below) {
      if (c.inB || c.path.size() == o.top.size()) continue;
      deleteEntry(o, c.path);
    }
  }

  void deleteEntry(Object const& o, Path const& path) {
    switch (o.kind) {
      case Kind::prefixList: {
        if (path.size() != 4 || path[3].kind != PathElement::Kind::u32Key) return;
        std::string_view const id = o.top.back().text.view();
        bool const v6 =
            id.starts_with(".ipv6.") && lists().ipv6PrefixList(Orb::Name(id.substr(6))) != nullptr;
        cog_->doDelIpPrefixListEntry(Orb::String(v6 ? id.substr(6) : id), path[3].number,
                                     v6 ? Cog::ipv6 : Cog::ipv4);
        return;
      }
      case Kind::asPathList: {
        Orb::U32 seqno = 0;
        if (path.size() != 5 || !asPathEntrySeqno(path[4].text.view(), seqno)) return;
        cog_->doDelAsPathListEntry(Orb::String(keyText(o.top, kAsPathKeyPrefix)), seqno);
        return;
      }
      case Kind::communityList: {
        if (path.size() != 5) return;
        // The entry node alone: its set and its twin are objects of their own.
        bool const twin = keyText(o.top, kListKeyPrefix).starts_with(".exact.");
        sendDelete(twin ? "delCommunityListEntryExact" : "delCommunityListEntry", path);
        return;
      }
      default:
        // Below a route map, an ACL or a dynamic prefix list nothing is
        // deleted by itself: the object is sent whole.
        return;
    }
  }

  void sendDelete(std::string_view op, Path const& path) {
    RibPath out = cog_->ribPathIs(path[0].tag);
    for (std::size_t i = 1; i < path.size(); ++i) {
      PathElement const& e = path[i];
      switch (e.kind) {
        case PathElement::Kind::pathId:
          out->doPushPath(e.tag);
          break;
        case PathElement::Kind::stringKey:
          out->doPushString(e.tag, e.text.view());
          break;
        case PathElement::Kind::u32Key:
          out->doPushU32(e.tag, e.number);
          break;
      }
    }
    Orb::Ptr<Rib::CogOp> command = ribOpIs(op, out);
    command->isDelete = true;
    command->doExecute();
  }

  static Acl::CommunityType setKindOf(Path const& top) {
    switch (top[1].tag) {
      case 526:
        return Acl::communityExtended;
      case 631:
        return Acl::communityLarge;
      default:
        return Acl::communityStandard;
    }
  }

  // ---- writes

  void write(Object const& o) {
    if (!o.wanted) return;
    switch (o.kind) {
      case Kind::modes:
        cog_->doRouteMapOpConfig(root_.routeMapConfig()->routeMapOpMode());
        cog_->doAsPathRegexMode(lists().regexMode());
        return;
      case Kind::routeMap:
        resend_.insert(Orb::String(o.top.back().text.view()));
        return;
      case Kind::stdAcl:
        writeAcl(o);
        return;
      case Kind::dynamicPrefixList:
        writeDynamicPrefixList(o);
        return;
      case Kind::prefixList:
        writePrefixList(o);
        return;
      case Kind::asPathList:
        writeAsPathList(o);
        return;
      case Kind::communityList:
        writeCommunityList(o);
        return;
      case Kind::communitySet:
        writeCommunitySet(o);
        return;
      default:
        return;
    }
  }

  bool topDiffers(Object const& o) const {
    return !o.below.empty() && o.below.front().path.size() == o.top.size();
  }

  void writeAcl(Object const& o) {
    Orb::Name const name(o.top.back().text.view());
    auto* acls = sm_.aclConfigSm() ? sm_.aclConfigSm()->ipConfigSm() : nullptr;
    if (OrbAcl* acl = acls ? acls->acl(name) : nullptr) acl->handleCurrCfg();
  }

  void writeDynamicPrefixList(Object const& o) {
    Orb::Name const name(o.top.back().text.view());
    auto* dpl = sm_.dynPfxConfigSm();
    auto* list = dpl ? dpl->orbDynamicPrefixList(name) : nullptr;
    if (!list) return;
    // Its writes only add to the node: a value it no longer has goes with it.
    if (o.had) RibDynamicPrefixList::cogFactory()->doDelDynamicPrefixList(name);
    list->handleDynamicPrefixListVersion();
  }

  void writePrefixList(Object const& o) {
    std::string_view const id = o.top.back().text.view();
    bool const v6 =
        id.starts_with(".ipv6.") && lists().ipv6PrefixList(Orb::Name(id.substr(6))) != nullptr;
    Orb::String const name(v6 ? id.substr(6) : id);
    if (topDiffers(o)) {
      if (v6) {
        cog_->doAddIpv6PrefixList(name);
      } else {
        cog_->doAddIpPrefixList(name);
      }
    }
    for (Rib::NodeChange const& c : o.below) {
      if (!c.inB || c.path.size() != 4) continue;
      Orb::U32 const seqno = c.path[3].number;
      if (v6) {
        auto list = lists().ipv6PrefixList(Orb::Name(name));
        if (auto const* e = list ? list->prefixEntry(seqno) : nullptr)
          cog_->doAddIpv6PrefixListEntry(name, seqno, e->action, e->prefix, e->ge, e->le);
      } else {
        auto list = lists().prefixList(Orb::Name(name));
        if (auto const* e = list ? list->prefixEntry(seqno) : nullptr)
          cog_->doAddIpPrefixListEntry(name, seqno, e->action, e->prefix, e->ge, e->le);
      }
    }
  }

  void writeAsPathList(Object const& o) {
    Orb::String const name(keyText(o.top, kAsPathKeyPrefix));
    if (topDiffers(o)) cog_->doAddAsPathList(name);
    auto list = lists().asPathList(Orb::Name(name));
    for (Rib::NodeChange const& c : o.below) {
      Orb::U32 seqno = 0;
      if (!c.inB || c.path.size() != 5 || !asPathEntrySeqno(c.path[4].text.view(), seqno)) continue;
      if (auto const* e = list ? list->pathEntry(seqno) : nullptr)
        cog_->doAddAsPathListEntry(name, seqno, e->action, e->regex, e->origin);
    }
  }

  void writeCommunityList(Object const& o) {
    std::string_view const key = keyText(o.top, kListKeyPrefix);
    std::string_view list = key;
    if (list.starts_with(".exact.")) list.remove_prefix(7);
    if (std::string const* map = privateOwner(key)) {
      resend_.insert(Orb::String(*map));
      return;
    }
    if (topDiffers(o)) cog_->doAddCommunityList(Orb::String(key));
    for (Rib::NodeChange const& c : o.below) {
      Orb::U32 seqno = 0;
      if (!c.inB || c.path.size() != 5 || !communityEntrySeqno(c.path[4].text.view(), seqno))
        continue;
      writeEntry(Orb::Name(list), seqno);
    }
  }

  void writeCommunitySet(Object const& o) {
    std::string_view const name = keyText(o.top, kSetKeyPrefix);
    if (std::string const* map = privateOwner(name)) resend_.insert(Orb::String(*map));
    auto const found = entriesOfSet().find(std::string(name));
    if (found == entriesOfSet().end()) return;
    for (auto const& [list, seqno] : found->second)
      writeEntry(list, seqno);
  }

  /// Writes a configured entry (its set, itself and its twin) once.
  void writeEntry(Orb::Name const& listName, Orb::U32 seqno) {
    if (!entriesWritten_.emplace(listName, seqno).second) return;
    auto list = lists().communityList(listName);
    auto entry = list ? list->communityListEntry(seqno) : nullptr;
    if (entry && entry->version() != 0) cog_->doAddCommunityListEntry(listName, *entry);
  }

  void resendMap(Orb::String const& engineName) {
    std::string_view const name = engineName.view();
    if (name.starts_with(kPeerFilterPrefix)) {
      auto* filters = sm_.peerFilterConfigSm();
      Orb::Name const filter(name.substr(kPeerFilterPrefix.size()));
      if (OrbPeerFilter* f = filters ? filters->orbPeerFilter(filter) : nullptr)
        f->handleMapVersion();
      return;
    }
    if (OrbRouteMap* rm = sm_.routeMapConfigSm()->orbRouteMap(Orb::Name(engineName)))
      rm->handleMapVersion();
  }

  // ---- who owns what the library names itself

  /// The map (under its engine name) whose clauses own a private community
  /// list or set of this name, or null.
  std::string const* privateOwner(std::string_view name) {
    if (privateOwners_.empty()) {
      auto add = [&](std::string const& engineName, Routing::RouteMap::Map const& map) {
        for (auto const& [seqno, entry] : map.mapEntry()) {
          std::string const seq = engineName + std::to_string(seqno);
          for (char const* variant : {"ar", "del"}) {
            privateOwners_.emplace(".cl" + seq + variant, engineName);
            privateOwners_.emplace(".cs" + seq + variant, engineName);
          }
          privateOwners_.emplace(".e" + seq, engineName);
          privateOwners_.emplace(".l" + seq, engineName);
        }
      };
      for (auto const& [name, map] : root_.routeMapConfig()->routeMap())
        add(name.str(), *map);
      for (auto const& [name, filter] : root_.peerFilterConfig()->peerFilter())
        add(std::string(kPeerFilterPrefix) + name.str(), *filter);
      privateOwners_.emplace("", "");  // built, even when empty
    }
    auto const found = privateOwners_.find(std::string(name));
    return found == privateOwners_.end() || name.empty() ? nullptr : &found->second;
  }

  /// The configured entries that write each set name (two when names of
  /// lists and numbers run together).
  std::map<std::string, std::vector<std::pair<Orb::Name, Orb::U32>>> const& entriesOfSet() {
    if (!entriesBuilt_) {
      entriesBuilt_ = true;
      for (auto const& [name, list] : lists().communityList()) {
        for (auto const& [seqno, entry] : list->communityListEntry())
          entriesOfSet_[Cog::getCommunitySetName(name, seqno).str()].emplace_back(name, seqno);
      }
    }
    return entriesOfSet_;
  }

  Root& root_;
  VrfStatusSm& sm_;
  Rib::EngineModel const& have_;
  Rib::EngineModel const& want_;
  Orb::Ptr<Cog> cog_;
  std::set<Orb::String> resend_;
  std::set<std::pair<Orb::Name, Orb::U32>> entriesWritten_;
  std::map<std::string, std::string> privateOwners_;
  std::map<std::string, std::vector<std::pair<Orb::Name, Orb::U32>>> entriesOfSet_;
  bool entriesBuilt_ = false;
};

}  // namespace

ReconcileCount reconcile(Root& root) {
  ORB_TRACE(traceHandler, "void Tessel::Root::doReconcile() vrf: " << root.vrfName());
  ReconcileCount count;
  VrfStatusSm* sm = root.vrfStatusSm().get();
  Rib::EngineModel const* mirror = root.mirror();
  if (!root.current() || !mirror || !sm || sm->vrfName() != root.vrfName()) {
    ORB_TRACE(traceHandler,
              "reconcile: nothing to reconcile against (no mirror, no machine, "
              "or a rename not yet reached it)");
    return count;
  }
  count.reconciled = true;
  auto const policyMap = withoutLibraryReasons(*root.policyMap());
  RootInputs const inputs{root.routeMapConfig(), root.peerFilterConfig(), root.aclListConfig(),
                          root.aclConfig(),      root.dynPfxListConfig(), policyMap};
  std::set<Reason> wantedReasons;
  Rib::EngineModel const want =
      freshStart(inputs, root.vrfName(), [&] { wantedReasons = libraryReasons(*policyMap); });
  // The policy map first: what it lists or unlists, the machine sends or
  // deletes itself, and the engine repair then starts from there.
  count.reasons = reconcilePolicyMap(root, *sm, wantedReasons);
  count.objects = EngineRepair(root, *sm, *mirror, want).run();
  // Only worth the walk when someone reads the answer.
  if (Orb::traceEnabled(traceDelete) && !(*mirror == want)) {
    ORB_TRACE(traceDelete, "reconcile: the engine still differs in "
                               << Rib::changedNodes(*mirror, want).size() << " nodes");
  }
  ORB_TRACE(traceDelete, "reconcile: " << count.objects << " engine objects and " << count.reasons
                                       << " policy-map reasons repaired");
  return count;
}

}  // namespace Tessel
