// Community clauses of route-map sequences: the private community lists that
// set clauses copy from their values or from named lists, the index of which
// clause copied which list, and the community matches.
#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Orb/Assert.h"
#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/CommunityListLookup.h"
#include "Tessel/Root.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Routing::RouteMap::CommunitySet;

namespace {

// The index keeps one key per variant: deleting clauses and all others,
// which share the "ar" private list.
Acl::CommSetFlag trackedFlagOf(Acl::CommSetFlag flag) {
  return flag == Acl::commSetDelete_ ? Acl::commSetDelete_ : Acl::commSetAdd_;
}

CommListUsers* commListUsersOfRoot() {
  return rmRoot ? rmRoot->commListUsers().get() : nullptr;
}

// Takes the keys out of the collection of `list`; a collection left without
// a clause leaves the index.
void forgetIn(CommListUsers& users, Orb::Name const& list,
              std::initializer_list<MapEntryCommSetClause const*> keys) {
  Orb::Ptr<CommSetClauseMapEntryColl> const coll = users.commListUser(list);
  if (!coll) return;
  for (MapEntryCommSetClause const* key : keys)
    coll->commSetClauseDel(*key);
  if (!coll->commSetClause().empty()) return;
  ORB_TRACE(traceCommand, " community-list is not longer used by any route-map:"
                              << coll->name() << " removing from the tracking structure");
  users.commListUserDel(coll->name());
}

// The set of the clause `key` stands for, as `map` has it now; null when the
// map has no such clause.
Orb::Ptr<CommunitySet const> clauseSetOf(Routing::RouteMap::Map const& map,
                                         MapEntryCommSetClause const& key) {
  using Flags = Routing::RouteMap::MapEntry::SetFlags;
  auto const entry = map.mapEntry(key.mapSeqno());
  if (!entry) return nullptr;
  bool const del = key.flag() == Acl::commSetDelete_;
  if (!entry->setFlags().has(del ? Flags::communityDelete : Flags::communityAddReplace))
    return nullptr;
  return del ? entry->communityDelete() : entry->communityAddReplace();
}

// "A B" becomes ".exact.A .exact.B".
std::string exactTwinsOf(std::string_view names) {
  std::string out;
  while (!names.empty()) {
    std::size_t const blank = names.find(' ');
    std::string_view const name = names.substr(0, blank);
    if (!name.empty()) {
      if (!out.empty()) out += ' ';
      out += ".exact.";
      out += name;
    }
    if (blank == std::string_view::npos) break;
    names.remove_prefix(blank + 1);
  }
  return out;
}

}  // namespace

// ---- Set clauses

void Cog::doSetCommunity(Orb::String const& mapName, U32 seqno,
                         Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_ASSERT(commSet);
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetCommunity(Orb::String const& mapName, U32 seqno, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno << " flag="
                << Acl::valueToStrep(commSet->flag()) << ", useCL=" << commSet->useCL());
  doDeleteInternalCommunityList(mapName, seqno, commSet->flag());
  doAddInternalCommunityList(mapName, seqno, commSet);
  doApplyCommListToRouteMap(mapName, seqno,
                            getInternalCommunityListName(mapName, seqno, commSet->flag()),
                            commSet->flag());
}

void Cog::doAddInternalCommunityList(Orb::String const& mapName, U32 seqno,
                                     Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddInternalCommunityList(Orb::String const& mapName, U32 seqno, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno);
  Orb::String const clName = getInternalCommunityListName(mapName, seqno, commSet->flag());
  Orb::String const csName = getInternalCommunitySetName(mapName, seqno, commSet->flag());
  ORB_TRACE(traceCommand, "clName=" << clName << ", csName=" << csName);
  if (commSet->useCL()) {
    doAddInternalMergeCommunityListName(mapName, seqno, commSet);
    return;
  }
  doAddSetCommSet(csName, commSet, Acl::communityStandard);
  doAddCommunityList(clName);
  // One entry at sequence 10, sent as a deny: fixed, and what the engine
  // expects of a private list.
  doAddCommunitySetToList(clName, 10, csName, Acl::deny);
}

void Cog::doAddInternalMergeCommunityListName(Orb::String const& mapName, U32 seqno,
                                              Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddInternalMergeCommunityListName(Orb::String const& mapName, "
            "U32 seqno, Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno);
  Orb::String const clName = getInternalCommunityListName(mapName, seqno, commSet->flag());
  doAddCommunityList(clName);
  for (Orb::Name const& listName : commSet->listNames()) {
    ORB_TRACE(traceHandler, "merging: " << listName << "into " << clName);
    // A list that is not configured adds nothing now; its reactor refreshes
    // this clause when it arrives.
    Orb::Ptr<Acl::CommunityList const> list = configuredCommunityList(listName);
    if (!list) continue;
    for (auto const& [entrySeqno, entry] : list->communityListEntry()) {
      doAddCommunitySetToList(clName, entrySeqno, getCommunitySetName(listName, entrySeqno),
                              entry->permit());
    }
  }
}

void Cog::doApplyCommListToRouteMap(Orb::String const& mapName, U32 seqno,
                                    Orb::String const& clName, Acl::CommSetFlag flag) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doApplyCommListToRouteMap(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& clName, Acl::CommSetFlag flag)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(flag));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setCommunity", ribMapSetPathIs(mapName, seqno));
  if (flag == Acl::commSetDelete_) {
    op->values->doPushString(14, clName);
  } else {
    op->values->doPushString(12, clName);
    op->values->doPushFlag(11, flag != Acl::commSetAdd_);
  }
  op->doExecute();
  ORB_TRACE(traceCommand, " Set  Private  clName=" << clName << " to routemap=" << mapName);
}

void Cog::doDeleteInternalCommunityList(Orb::String const& mapName, U32 seqno,
                                        Acl::CommSetFlag flag) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doDeleteInternalCommunityList(Orb::String const& mapName, U32 "
            "seqno, Acl::CommSetFlag flag)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(flag));
  Orb::String const clName = getInternalCommunityListName(mapName, seqno, flag);
  Orb::String const csName = getInternalCommunitySetName(mapName, seqno, flag);
  ORB_TRACE(traceCommand, "deleting clName=" << clName << ", csName=" << csName);
  doDelCommunityList(clName);
  doDelCommSet(csName, Acl::communityStandard);
}

void Cog::doSetExtCommunity(Orb::String const& mapName, U32 seqno,
                            Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_ASSERT(commSet);
  Acl::CommSetFlag const flag = commSet->flag();
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetExtCommunity(Orb::String const& mapName, U32 seqno, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(flag));
  Orb::String const setName(".e" + mapName.str() + std::to_string(seqno));
  doDelCommSet(setName, Acl::communityExtended);
  bool const linkBandwidth = doAddSetCommSet(setName, commSet, Acl::communityExtended);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setExtCommunity", ribMapSetPathIs(mapName, seqno));
  op->values->doPushString(flag == Acl::commSetDelete_ ? 15 : 13, setName);
  // A link-bandwidth set is always added: replacing would drop the route's
  // other extended communities along with its bandwidth.
  if (flag == Acl::commSetAdd_ || linkBandwidth) {
    op->values->doPushFlag(24, false);
  } else if (flag != Acl::commSetDelete_) {
    op->values->doPushU8(24, 2);
  }
  op->doExecute();
}

void Cog::doSetLargeCommunity(Orb::String const& mapName, U32 seqno,
                              Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_ASSERT(commSet);
  Acl::CommSetFlag const flag = commSet->flag();
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetLargeCommunity(Orb::String const& mapName, U32 seqno, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(flag));
  Orb::String const setName(".l" + mapName.str() + std::to_string(seqno));
  doDelCommSet(setName, Acl::communityLarge);
  doAddSetCommSet(setName, commSet, Acl::communityLarge);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setLargeCommunity", ribMapSetPathIs(mapName, seqno));
  op->values->doPushString(flag == Acl::commSetDelete_ ? 37 : 36, setName);
  // Each kind spells add and replace its own way in the engine: standard as a
  // flag, extended as 2, large as 4.
  if (flag == Acl::commSetAdd_) {
    op->values->doPushFlag(38, false);
  } else if (flag != Acl::commSetDelete_) {
    op->values->doPushU8(38, 4);
  }
  op->doExecute();
}

// ---- The index of list users

void Cog::addRmClauseToCommListUsers(Orb::String const& mapName, U32 seqno,
                                     Orb::Ptr<CommunitySet const> const& commSet) {
  ORB_ASSERT(commSet);
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::addRmClauseToCommListUsers(Orb::String const& mapName, U32 seqno, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(commSet->flag()));
  if (commSet->listNames().empty()) return;
  CommSetClauseInMapEntry const record(
      MapEntryCommSetClause(mapName, seqno, trackedFlagOf(commSet->flag())), commSet);
  Orb::String const clName = getInternalCommunityListName(mapName, seqno, commSet->flag());
  CommListUsers* users = commListUsersOfRoot();
  for (Orb::Name const& listName : commSet->listNames()) {
    ORB_TRACE(traceHandler, "merging: " << listName << "into " << clName);
    if (users) users->commListUserIs(listName)->commSetClauseIs(record);
  }
}

void Cog::delRmFromCommListUsers(Orb::String const& mapName, U32 seqno) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::delRmFromCommListUsers(Orb::String const& mapName, "
            "U32 seqno)"
                << ": map=" << mapName << " seqno=" << seqno);
  CommListUsers* users = commListUsersOfRoot();
  if (!users) {
    ORB_TRACE(traceCommand,
              " commListUsers is empty. Tessel SMs are getting deleted in a test. "
              "Return early");
    return;
  }
  MapEntryCommSetClause const added(mapName, seqno, Acl::commSetAdd_);
  MapEntryCommSetClause const deleted(mapName, seqno, Acl::commSetDelete_);
  // Only the lists the sequence stands under, in name order, as a walk of
  // the whole index meets them: the cost follows the sequence, not the index.
  std::vector<Orb::Name> lists;
  for (MapEntryCommSetClause const* key : {&added, &deleted}) {
    if (auto const* under = users->listsOf(*key))
      lists.insert(lists.end(), under->begin(), under->end());
  }
  std::sort(lists.begin(), lists.end());
  lists.erase(std::unique(lists.begin(), lists.end()), lists.end());
  for (Orb::Name const& list : lists)
    forgetIn(*users, list, {&added, &deleted});
}

void Cog::delStaleRmFromCommListUsers(Orb::String const& mapName,
                                      Routing::RouteMap::Map const* map) {
  CommListUsers* users = commListUsersOfRoot();
  if (!users) return;
  // Found first, forgotten after: forgetting changes the index.
  std::vector<std::pair<MapEntryCommSetClause, Orb::Name>> stale;
  auto const& clauses = users->clauseLists();
  for (auto it = users->firstClauseOf(mapName);
       it != clauses.end() && it->first.mapName() == mapName; ++it) {
    MapEntryCommSetClause const& key = it->first;
    Orb::Ptr<CommunitySet const> const current = map ? clauseSetOf(*map, key) : nullptr;
    for (Orb::Name const& list : it->second) {
      // A clause the send recorded holds the set the map has now.
      auto const coll = users->commListUser(list);
      auto const* record = coll ? coll->commSetClause(key) : nullptr;
      if (current && record && record->commSet() == current) continue;
      stale.emplace_back(key, list);
    }
  }
  for (auto const& [key, list] : stale) {
    ORB_TRACE(traceCommand,
              "void Tessel::Cog::delStaleRmFromCommListUsers(Orb::String const& "
              "mapName, Routing::RouteMap::Map const* map)"
                  << ": map=" << mapName << " seqno=" << key.mapSeqno()
                  << " flag=" << Acl::valueToStrep(key.flag()) << " list=" << list);
    forgetIn(*users, list, {&key});
  }
}

void Cog::refreshCommListUsersOf(Orb::String const& listName) {
  CommListUsers* users = commListUsersOfRoot();
  Orb::Ptr<CommSetClauseMapEntryColl> const coll =
      users ? users->commListUser(Orb::Name(listName)) : nullptr;
  ORB_TRACE(traceCommand, "void Tessel::Cog::refreshCommListUsersOf(Orb::String const& listName)"
                              << ": listName=" << listName
                              << " users=" << (coll ? coll->commSetClause().size() : 0));
  if (!coll) return;
  // Rebuilding a clause reads the configuration and writes the engine; it
  // never changes the index, so the walk is safe.
  for (auto const& [key, record] : coll->commSetClause())
    doSetCommunity(record.mapName(), record.mapSeqno(), record.commSet());
}

// ---- Community matches

void Cog::doAddMatchCommunity(Orb::String const& mapName, U32 seqno,
                              Routing::RouteMap::CommListSet const& commListSet, bool invert,
                              bool exact, Acl::CommunityType type) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchCommunity(Orb::String const& mapName, U32 seqno, "
            "Routing::RouteMap::CommListSet const& commListSet, bool invert, bool exact, "
            "Acl::CommunityType type)"
                << ": map=" << mapName << " seqno=" << seqno
                << " lists=" << commListSet.stringValue() << " invert=" << invert
                << " exact=" << exact << " type=" << Acl::valueToStrep(type));
  std::string comm = commListSet.stringValue();
  // An exact match names the exact twins the list reactor keeps.
  if (exact) comm = exactTwinsOf(comm);
  ORB_ASSERT(!comm.empty());
  U32 keyTag = 0, valueTag = 0;
  std::string_view opName;
  switch (type) {
    case Acl::communityStandard:
      keyTag = 585, valueTag = 13, opName = "commList";
      break;
    case Acl::communityExtended:
      keyTag = 629, valueTag = 14, opName = "extCommList";
      break;
    case Acl::communityLarge:
      keyTag = 634, valueTag = 35, opName = "largeCommList";
      break;
    default:
      ORB_TRACE(traceError, "Error: unrecognized community type: " << static_cast<U32>(type));
      ORB_ASSERT(0);
  }
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushString(keyTag, comm);
  Orb::Ptr<Rib::CogOp> op = ribOpIs(opName, path);
  if (invert) op->values->doPushFlag(0, true);
  op->values->doPushString(valueTag, comm);
  op->doExecute();
}

void Cog::doAddMatchCommInst(Orb::String const& mapName, U32 seqno, U32 low, U32 high,
                             bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchCommInst(Orb::String const& mapName, U32 "
            "seqno, U32 low, U32 high, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " [" << low << ", " << high
                << "] invert: " << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushU32(625, low);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("CommInstances", path);
  if (invert) op->values->doPushFlag(0, true);
  op->values->doPushU32(31, low);
  op->values->doPushU32(32, high);
  op->doExecute();
}

}  // namespace Tessel
