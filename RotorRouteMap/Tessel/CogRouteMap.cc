// Route maps and their sequences, and the translation of one whole map into
// its command stream.
#include <algorithm>

#include "Orb/Assert.h"
#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Routing::RouteMap::MapEntry;
using SetFlags = MapEntry::SetFlags;

namespace {

// The producer may hand over negative values for fields the engine only knows
// as unsigned; the engine wants them floored at 0.
U32 nonNegative(Orb::S32 v) {
  return static_cast<U32>(std::max<Orb::S32>(v, 0));
}

}  // namespace

void Cog::doInsertRouteMap(Orb::Ptr<Routing::RouteMap::Map const> const& map,
                           Orb::String const& mapName) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doInsertRouteMap(Orb::Ptr<Routing::RouteMap::Map const> const& "
            "map, Orb::String const& mapName)"
                << ": map=" << mapName);
  ORB_ASSERT(map);
  if (map->mapEntry().empty()) return;

  // The order of the steps below is the order the engine receives the set
  // attributes in; it is not the order of the flag bits, and must stay.
  for (auto const& [key, entryPtr] : map->mapEntry()) {
    U32 const seqno = entryPtr->seqno();
    SetFlags const flags = entryPtr->setFlags();

    doAddMapSequence(mapName, entryPtr->permit(), seqno);
    for (auto const& [option, storedRule] : entryPtr->matchRule()) {
      // A copy, so the handlers never hold on to the model's storage.
      Routing::RouteMap::MatchRule const rule = storedRule;
      doAddMatchRule(mapName, seqno, rule);
    }
    if (!entryPtr->subRouteMap().empty()) {
      doAddSubRouteMap(mapName, seqno, entryPtr->subRouteMap());
    }

    if (flags.has(SetFlags::asPathPrepend)) {
      auto const& asPath = entryPtr->asPathPrepend();
      doSetAsPathPrepend_(vrfName_, mapName, seqno, asPath.begin(),
                          static_cast<U32>(asPath.size()));
    }
    if (flags.has(SetFlags::setValue33)) {
      doSetIntValue(mapName, seqno, 33, entryPtr->setValue33());
    }
    if (flags.has(SetFlags::asPathReplace)) {
      auto const& asPath = entryPtr->asPathReplace();
      doSetAsPathReplace_(vrfName_, mapName, seqno, asPath.begin(),
                          static_cast<U32>(asPath.size()));
    }
    if (flags.has(SetFlags::nextHop) || flags.has(SetFlags::ipv6NextHop)) {
      doSetNextHop(mapName, seqno, entryPtr->nextHop(), entryPtr->ipv6NextHop(),
                   flags.has(SetFlags::ipv6NextHop));
    }
    if (flags.has(SetFlags::setValue19)) {
      doSetIntValue(mapName, seqno, 19, nonNegative(entryPtr->setValue19()));
    }
    if (flags.has(SetFlags::setValue26)) {
      doSetIntValue(mapName, seqno, 26, nonNegative(entryPtr->setValue26()));
    }
    if (flags.has(SetFlags::level)) {
      U32 const level = entryPtr->level();
      if (level < 1 || level > 3) {
        ORB_TRACE(traceError, "doInsertRouteMap invalid level: " << level);
        ORB_ASSERT(0);
      }
      doSetU8Value(mapName, seqno, 0, static_cast<U8>(level));
    }
    if (flags.has(SetFlags::metric)) {
      doSetMetric(mapName, seqno, nonNegative(entryPtr->metric()), entryPtr->medType());
    }
    if (flags.has(SetFlags::metricType)) {
      U32 const metricType = entryPtr->metricType();
      if (metricType != 1 && metricType != 2) {
        ORB_TRACE(traceError, "doInsertRouteMap invalid metric type: " << metricType);
        ORB_ASSERT(0);
      }
      // The engine numbers OSPF external types 3 and 4.
      doSetIntValue(mapName, seqno, 10, metricType + 2);
    }
    if (flags.has(SetFlags::origin)) {
      Acl::BGPOrigin const origin = entryPtr->origin();
      if (origin > Acl::originIncomplete) {
        ORB_TRACE(traceError, "doInsertRouteMap invalid origin " << Acl::valueToStrep(origin));
        ORB_ASSERT(0);
      }
      doSetIntValue(mapName, seqno, 6, origin);
    }
    if (flags.has(SetFlags::setValue2)) {
      doSetIntValue(mapName, seqno, 2, entryPtr->setValue2());
    }
    if (flags.has(SetFlags::communityAddReplace)) {
      ORB_ASSERT(entryPtr->communityAddReplace());
      ORB_ASSERT(entryPtr->communityAddReplace()->flag() != Acl::commSetDelete_);
      addRmClauseToCommListUsers(mapName, seqno, entryPtr->communityAddReplace());
      doSetCommunity(mapName, seqno, entryPtr->communityAddReplace());
    }
    if (flags.has(SetFlags::communityDelete)) {
      ORB_ASSERT(entryPtr->communityDelete());
      ORB_ASSERT(entryPtr->communityDelete()->flag() == Acl::commSetDelete_);
      addRmClauseToCommListUsers(mapName, seqno, entryPtr->communityDelete());
      doSetCommunity(mapName, seqno, entryPtr->communityDelete());
    }
    if (flags.has(SetFlags::extCommunity)) {
      doSetExtCommunity(mapName, seqno, entryPtr->extCommunity());
    }
    // Unconditional: a sequence that no longer sets link bandwidth must reset
    // what an earlier version of it set.
    doSetExtCommunityLbwOpts(mapName, seqno, entryPtr->extCommLbwFlag(),
                             entryPtr->extCommLbwValue());
    if (flags.has(SetFlags::largeCommunity)) {
      doSetLargeCommunity(mapName, seqno, entryPtr->largeCommunity());
    }
    if (flags.has(SetFlags::setValue3)) {
      doSetIntValue(mapName, seqno, 3, nonNegative(entryPtr->setValue3()));
    }
    if (flags.has(SetFlags::setValue25)) {
      doSetIntValue(mapName, seqno, 25, entryPtr->setValue25());
    }
    if (flags.has(SetFlags::nextHopPeerAddr)) {
      doSetNextHopPeerAddr(mapName, seqno, 27, entryPtr->nextHopPeerAddr());
    }
    if (flags.has(SetFlags::ipv6NextHopPeerAddr)) {
      doSetNextHopPeerAddr(mapName, seqno, 28, entryPtr->ipv6NextHopPeerAddr());
    }
    if (flags.has(SetFlags::nextHopUnchanged)) {
      doSetNextHopUnchanged(mapName, seqno, 31, entryPtr->nextHopUnchanged());
    }
    if (flags.has(SetFlags::ipv6NextHopUnchanged)) {
      doSetNextHopUnchanged(mapName, seqno, 32, entryPtr->ipv6NextHopUnchanged());
    }
    if (flags.has(SetFlags::setValue35)) {
      doSetIntValue(mapName, seqno, 35, nonNegative(entryPtr->setValue35()));
    }
  }
}

void Cog::doDeleteRouteMap(Orb::String const& mapName) {
  ORB_TRACE(traceDelete, "void Tessel::Cog::doDeleteRouteMap(Orb::String const& mapName)"
                             << ": map=" << mapName);
  RibPath path = ribPathIs(512);
  path->doPushString(576, mapName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("deleteRouteMap", path);
  op->isDelete = true;
  op->doExecute();
}

void Cog::doAddMapSequence(Orb::String const& mapName, Acl::MatchPermit permit, U32 seqno) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMapSequence(Orb::String const& mapName, Acl::MatchPermit "
            "permit, U32 seqno)"
                << ": map=" << mapName << " permit=" << Acl::valueToStrep(permit)
                << " seqno=" << seqno);
  RibPath mapPath = ribPathIs(512);
  mapPath->doPushString(576, mapName);
  Orb::Ptr<Rib::CogOp> mapOp = ribOpIs("routeMap", mapPath);
  mapOp->values->doPushString(0, mapName);
  mapOp->doExecute();

  Orb::Ptr<Rib::CogOp> seqOp = ribOpIs("routeMapSeq", ribMapSeqPathIs(mapName, seqno));
  seqOp->values->doPushU32(0, seqno);
  seqOp->values->doPushFlag(1, permit == Acl::permit);
  seqOp->doExecute();
}

void Cog::doDeleteMapSequence(Orb::String const& mapName, U32 seqno) {
  ORB_TRACE(traceDelete,
            "void Tessel::Cog::doDeleteMapSequence(Orb::String const& mapName, U32 "
            "seqno)"
                << ": map=" << mapName << " seqno=" << seqno);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("deleteRouteMap", ribMapSeqPathIs(mapName, seqno));
  op->isDelete = true;
  op->doExecute();
}

void Cog::doAddSubRouteMap(Orb::String const& mapName, U32 seqno,
                           Orb::String const& subRouteMapName) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddSubRouteMap(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& subRouteMapName)"
                << ": map=" << mapName << " seqno=" << seqno << " subRouteMap=" << subRouteMapName);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushString(622, subRouteMapName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("subRouteMap", path);
  op->values->doPushString(1, subRouteMapName);
  op->doExecute();
}

}  // namespace Tessel
