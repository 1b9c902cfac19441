// Match clauses of a route-map sequence: the dispatch on the rule's option and
// one command (or two) per condition on the sequence path.
#include "Kiwi/IntfName.h"
#include "Orb/Assert.h"
#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"
#include "TesselUtil/RibLookup.h"

namespace Tessel {

namespace {

void pushInvert(Rib::CogOp& op, bool invert) {
  if (invert) op.values->doPushFlag(0, true);
}

// The engine's address-family code of a prefix list.
U8 familyCode(bool isIpv6) {
  return isIpv6 ? 6 : 1;
}

Cog::PrefixListFamily family(bool isIpv6) {
  return isIpv6 ? Cog::ipv6 : Cog::ipv4;
}

// The three prefix-list matches differ only in operation and key tag; each
// names the list by its engine id, so IPv6 lists carry their prefix.
void sendPrefixListMatch(Cog const& cog, std::string_view operation, U32 keyTag,
                         Orb::String const& mapName, U32 seqno, Orb::String const& listName,
                         bool isIpv6, bool invert) {
  Orb::String const id = Cog::prefixListId(listName, family(isIpv6));
  RibPath path = cog.ribMapSeqPathIs(mapName, seqno);
  path->doPushString(keyTag, id);
  Orb::Ptr<Rib::CogOp> op = ribOpIs(operation, path);
  pushInvert(*op, invert);
  op->values->doPushU8(8, familyCode(isIpv6));
  op->values->doPushString(7, id);
  op->doExecute();
}

}  // namespace

void Cog::doAddMatchRule(Orb::String const& mapName, U32 seqno,
                         Routing::RouteMap::MatchRule const& rule) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchRule(Orb::String const& mapName, U32 seqno, "
            "Routing::RouteMap::MatchRule const& rule)"
                << ": map=" << mapName << " seqno=" << seqno << " option=" << U32(rule.option));
  U32 const option = rule.option;
  bool const invert = rule.invert;
  U32 keyTag = 0;
  U32 valueTag = 0;
  // First match wins: the community options must be claimed before the
  // string table, which lists 103 as well.
  if (option == 5) {
    doAddMatchGateway(mapName, seqno, rule.ipAddr, invert);
  } else if (option == 12 || option == 117) {
    doAddMatchNextHop(mapName, seqno, rule.ipAddr, rule.ip6Addr, option == 117, invert);
  } else if (option == 1) {
    doAddMatchAccessList(mapName, seqno, rule.strValue, invert);
  } else if (option == 2 || option == 116) {
    doAddMatchPrefixList(mapName, seqno, rule.strValue, option == 116, invert);
  } else if (option == 14 || option == 118) {
    doAddMatchNextHopPrefixList(mapName, seqno, rule.strValue, option == 118, invert);
  } else if (option == 15 || option == 119) {
    doAddMatchResolvedNextHopPrefixList(mapName, seqno, rule.strValue, option == 119, invert);
  } else if (option == 112) {
    doAddMatchMetricType(mapName, seqno, rule.intValue, invert);
  } else if (option == 122) {
    doAddMatchRouteType(mapName, seqno, rule.intValue, invert);
  } else if (option == 107) {
    doAddMatchInterface(mapName, seqno, rule.strValue, invert);
  } else if (option == 103 || option == 104 || option == 127) {
    Acl::CommunityType const type = option == 103   ? Acl::communityStandard
                                    : option == 104 ? Acl::communityExtended
                                                    : Acl::communityLarge;
    doAddMatchCommunity(mapName, seqno, rule.commListSet, invert, rule.exact, type);
  } else if (option == 113) {
    doAddMatchProto(mapName, seqno, rule.intValue, invert);
  } else if (option == 121) {
    doAddMatchAsRange(mapName, seqno, rule.intValue, rule.rangeHigh, invert);
  } else if (option == 126) {
    doAddMatchAsPathLength(mapName, seqno, rule.pathLengthFirst, rule.pathLengthSecond, invert);
  } else if (ribIsMatchOptionInt(option, &keyTag, &valueTag)) {
    doAddMatchIntValue(mapName, seqno, keyTag, valueTag, rule.intValue, invert);
  } else if (ribIsMatchOptionStr(option, &keyTag, &valueTag)) {
    doAddMatchStrValue(mapName, seqno, keyTag, valueTag, rule.strValue, invert);
  } else if (option == 125) {
    doAddMatchCommInst(mapName, seqno, rule.intValue, rule.rangeHigh, invert);
  } else if (option == 123 || option == 124) {
    doAddMatchDynamicPrefixList(mapName, seqno, rule.strValue, option == 124);
  } else if (option == 128) {
    doAddMatchContribAggAttr(mapName, seqno, rule.strValue, invert);
  } else if (option == 106) {
    // The engine's IS-IS instance match wants 15 as its second value.
    doAddMatchInstance(mapName, seqno, rule.intValue, 15, invert);
  } else {
    ORB_TRACE(traceError, "Error: add match option not implemented: " << option);
  }
}

void Cog::doAddMatchIntValue(Orb::String const& mapName, U32 seqno, U32 keyTag, U32 valueTag,
                             U32 value, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchIntValue(Orb::String const& mapName, U32 seqno, U32 "
            "keyTag, U32 valueTag, U32 value, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " keyTag=" << keyTag
                << " valueTag=" << valueTag << " value=" << value << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushU32(keyTag, value);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("matchIntValue", path);
  pushInvert(*op, invert);
  op->values->doPushU32(valueTag, value);
  op->doExecute();
}

void Cog::doAddMatchStrValue(Orb::String const& mapName, U32 seqno, U32 keyTag, U32 valueTag,
                             Orb::String const& value, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchStrValue(Orb::String const& mapName, U32 seqno, U32 "
            "keyTag, U32 valueTag, Orb::String const& value, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " keyTag=" << keyTag
                << " valueTag=" << valueTag << " value=" << value << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushString(keyTag, value);
  // The engine's operation is spelled with a lower-case s.
  Orb::Ptr<Rib::CogOp> op = ribOpIs("matchstrValue", path);
  pushInvert(*op, invert);
  op->values->doPushString(valueTag, value);
  op->doExecute();
}

void Cog::doAddMatchProto(Orb::String const& mapName, U32 seqno, U32 protocol, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchProto(Orb::String const& mapName, U32 seqno, U32 "
            "protocol, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " protocol=" << protocol
                << " invert=" << invert);
  // Configured protocol number to the engine's protocol code.
  static constexpr U32 codes[] = {0, 1, 24, 31, 10, 4, 9, 15, 49, 52};
  if (protocol < 1 || protocol > 9) ORB_ASSERT(0 && "Unsupported protocol");
  doAddMatchIntValue(mapName, seqno, 575, 24, codes[protocol], invert);
}

void Cog::doAddMatchMetricType(Orb::String const& mapName, U32 seqno, U32 type, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchMetricType(Orb::String const& mapName, U32 seqno, U32 "
            "type, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " type=" << type
                << " invert=" << invert);
  if (type != 1 && type != 2) ORB_ASSERT(0);
  // The engine numbers OSPF external types 3 and 4.
  doAddMatchIntValue(mapName, seqno, 613, 26, type + 2, invert);
}

void Cog::doAddMatchRouteType(Orb::String const& mapName, U32 seqno, U32 type, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchRouteType(Orb::String const& mapName, U32 seqno, U32 "
            "type, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " type=" << type
                << " invert=" << invert);
  // Type 5 is valid configuration the engine has no match for.
  if (type == 5) return;
  if (type < 1 || type > 4) ORB_ASSERT(0);
  doAddMatchIntValue(mapName, seqno, 624, 30, type, invert);
}

void Cog::doAddMatchInterface(Orb::String const& mapName, U32 seqno, Orb::String const& intfName,
                              bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchInterface(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& intfName, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " intf=" << intfName
                << " invert=" << invert);
  Orb::String const kernelName = Kiwi::platIntfToKernelIntf(intfName.view());
  if (invert) {
    RibPath path = ribMapSeqPathIs(mapName, seqno);
    path->doPushPath(591);
    Orb::Ptr<Rib::CogOp> op = ribOpIs("iflist", path);
    op->values->doPushFlag(0, true);
    op->doExecute();
  }
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushPath(591);
  path->doPushString(592, kernelName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("ifname", path);
  op->values->doPushString(1, kernelName);
  op->doExecute();
}

void Cog::doAddMatchGateway(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr address,
                            bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchGateway(Orb::String const& mapName, U32 seqno, "
            "Kiwi::IpAddr address, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " address=" << address
                << " invert=" << invert);
  if (invert) {
    RibPath path = ribMapSeqPathIs(mapName, seqno);
    path->doPushPath(593);
    Orb::Ptr<Rib::CogOp> op = ribOpIs("gwListInvert", path);
    op->values->doPushFlag(0, true);
    op->doExecute();
  }
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushPath(593);
  path->doPushString(594, address.stringValue());
  Orb::Ptr<Rib::CogOp> op = ribOpIs("gwListEntry", path);
  op->values->doPushIpAddr(0, address);
  op->doExecute();
}

void Cog::doAddMatchNextHop(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr address,
                            Kiwi::Ip6Addr const& ip6Address, bool isIpv6, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchNextHop(Orb::String const& mapName, U32 seqno, "
            "Kiwi::IpAddr address, Kiwi::Ip6Addr const& ip6Address, bool isIpv6, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " address=" << address
                << " ip6Address=" << ip6Address << " isIpv6=" << isIpv6 << " invert=" << invert);
  if (invert) {
    RibPath path = ribMapSeqPathIs(mapName, seqno);
    path->doPushPath(595);
    Orb::Ptr<Rib::CogOp> op = ribOpIs("nhListInvert", path);
    op->values->doPushFlag(0, true);
    op->doExecute();
  }
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushPath(595);
  path->doPushString(596, isIpv6 ? ip6Address.stringValue() : address.stringValue());
  Orb::Ptr<Rib::CogOp> op = ribOpIs("nhListEntry", path);
  if (isIpv6) {
    op->values->doPushIp6Addr(1, ip6Address);
  } else {
    op->values->doPushIpAddr(0, address);
  }
  op->doExecute();
}

void Cog::doAddMatchAccessList(Orb::String const& mapName, U32 seqno, Orb::String const& listName,
                               bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchAccessList(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& listName, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << listName
                << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushString(588, listName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("accessList", path);
  pushInvert(*op, invert);
  op->values->doPushU8(8, 2);
  op->values->doPushString(7, listName);
  op->doExecute();
}

void Cog::doAddMatchPrefixList(Orb::String const& mapName, U32 seqno, Orb::String const& listName,
                               bool isIpv6, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchPrefixList(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& listName, bool isIpv6, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << listName
                << " isIpv6=" << isIpv6 << " invert=" << invert);
  sendPrefixListMatch(*this, "prefixList", 587, mapName, seqno, listName, isIpv6, invert);
}

void Cog::doAddMatchDynamicPrefixList(Orb::String const& mapName, U32 seqno,
                                      Orb::String const& listName, bool isIpv6) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchDynamicPrefixList(Orb::String const& mapName, U32 "
            "seqno, Orb::String const& listName, bool isIpv6)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << listName
                << " isIpv6=" << isIpv6);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushString(626, listName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("dynamicPrefixList", path);
  op->values->doPushU8(8, familyCode(isIpv6));
  op->values->doPushString(7, listName);
  op->doExecute();
}

void Cog::doAddMatchNextHopPrefixList(Orb::String const& mapName, U32 seqno,
                                      Orb::String const& listName, bool isIpv6, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchNextHopPrefixList(Orb::String const& mapName, U32 "
            "seqno, Orb::String const& listName, bool isIpv6, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << listName
                << " isIpv6=" << isIpv6 << " invert=" << invert);
  sendPrefixListMatch(*this, "nextHopPrefixList", 619, mapName, seqno, listName, isIpv6, invert);
}

void Cog::doAddMatchResolvedNextHopPrefixList(Orb::String const& mapName, U32 seqno,
                                              Orb::String const& listName, bool isIpv6,
                                              bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchResolvedNextHopPrefixList(Orb::String const& mapName, "
            "U32 seqno, Orb::String const& listName, bool isIpv6, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << listName
                << " isIpv6=" << isIpv6 << " invert=" << invert);
  sendPrefixListMatch(*this, "resolvedNextHopPrefixList", 620, mapName, seqno, listName, isIpv6,
                      invert);
}

void Cog::doAddMatchContribAggAttr(Orb::String const& mapName, U32 seqno,
                                   Orb::String const& mapName2, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchContribAggAttr(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& mapName2, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " mapName2=" << mapName2
                << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushPath(635);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("aggAttrMapName", path);
  // Sent true or false, unlike the other matches: the node has no key, and
  // without a named map the flag is all the command carries.
  op->values->doPushFlag(0, invert);
  if (!mapName2.empty()) op->values->doPushString(36, mapName2);
  op->doExecute();
}

void Cog::doAddMatchAsRange(Orb::String const& mapName, U32 seqno, U32 low, U32 high, bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchAsRange(Orb::String const& mapName, U32 seqno, U32 low, "
            "U32 high, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " low=" << low << " high=" << high
                << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushU32(623, low);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("AsRangeEntry", path);
  pushInvert(*op, invert);
  op->values->doPushU32(28, low);
  op->values->doPushU32(29, high);
  op->doExecute();
}

void Cog::doAddMatchAsPathLength(Orb::String const& mapName, U32 seqno, U32 first, U32 second,
                                 bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchAsPathLength(Orb::String const& mapName, U32 seqno, U32 "
            "first, U32 second, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " first=" << first
                << " second=" << second << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushU32(630, first);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("AsPathLength", path);
  pushInvert(*op, invert);
  op->values->doPushU32(33, first);
  op->values->doPushU32(34, second);
  op->doExecute();
}

void Cog::doAddMatchInstance(Orb::String const& mapName, U32 seqno, U32 instance, U32 extra,
                             bool invert) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddMatchInstance(Orb::String const& mapName, U32 seqno, U32 "
            "instance, U32 extra, bool invert)"
                << ": map=" << mapName << " seqno=" << seqno << " instance=" << instance
                << " extra=" << extra << " invert=" << invert);
  RibPath path = ribMapSeqPathIs(mapName, seqno);
  path->doPushU32(607, instance);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("isisInstance", path);
  pushInvert(*op, invert);
  op->values->doPushU32(24, instance);
  op->values->doPushU32(23, extra);
  op->doExecute();
}

}  // namespace Tessel
