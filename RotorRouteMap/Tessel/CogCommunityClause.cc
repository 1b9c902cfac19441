// Community clauses of route-map sequences: the private community lists that
// set clauses copy from their values or from named lists, the index of which
// clause copied which list, and the community matches.
#include <string>
#include <string_view>

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
  auto const& colls = users->commListUser();
  for (auto it = colls.begin(); it != colls.end();) {
    Orb::Ptr<CommSetClauseMapEntryColl> const coll = it->second;
    ++it;  // the collection may leave the index below
    coll->commSetClauseDel(added);
    coll->commSetClauseDel(deleted);
    if (!coll->commSetClause().empty()) continue;
    ORB_TRACE(traceCommand, " community-list is not longer used by any route-map:"
                                << coll->name() << " removing from the tracking structure");
    users->commListUserDel(coll->name());
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
