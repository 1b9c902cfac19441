// Set clauses of a route-map sequence: attributes of the set node below the
// sequence, written by three generic operations and the conversions on top.
#include <charconv>
#include <string_view>
#include <system_error>
#include <vector>

#include "Orb/Assert.h"
#include "Orb/InlineVector.h"
#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Routing::RouteMap::MapEntry;

namespace {

// The engine unpacks the AS numbers as raw 32-bit words in the host's order,
// so they go as bytes, not as text. Packed on the stack for the usual short
// path.
void setPackedAsPath(L3::VrfName const& vrfName, Orb::String const& mapName, U32 seqno, U32 tag,
                     MapEntry::AsPath::const_iterator it, U32 count) {
  Orb::InlineVector<char, 16 * sizeof(U32)> bytes;
  for (U32 i = 0; i < count; ++i, ++it) {
    U32 const number = it->second;
    bytes.append(reinterpret_cast<char const*>(&number), sizeof number);
  }
  cogFactory(vrfName)->doSetStrValue(mapName, seqno, tag,
                                     std::string_view(bytes.data(), bytes.size()));
}

// Blank-separated decimal AS numbers, keyed by their position in the text. A
// piece that is not a number is traced and left out.
MapEntry::AsPath asPathOfText(std::string_view text) {
  MapEntry::AsPath asPath;
  U32 position = 0;
  while (!text.empty()) {
    std::size_t const blank = text.find(' ');
    std::string_view const piece = text.substr(0, blank);
    text.remove_prefix(blank == text.npos ? text.size() : blank + 1);
    if (piece.empty()) continue;
    U32 number = 0;
    auto [end, ec] = std::from_chars(piece.data(), piece.data() + piece.size(), number);
    if (ec != std::errc() || end != piece.data() + piece.size()) {
      ORB_TRACE(traceError, "Error: invalid AS number " << piece);
      continue;
    }
    asPath.set(position++, number);
  }
  return asPath;
}

}  // namespace

void Cog::doSetIntValue(Orb::String const& mapName, U32 seqno, U32 tag, U32 value) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetIntValue(Orb::String const& mapName, U32 seqno, U32 tag, U32 "
            "value)"
                << ": map=" << mapName << " seqno=" << seqno << " tag=" << tag
                << " value=" << value);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setIntValue", ribMapSetPathIs(mapName, seqno));
  op->values->doPushU32(tag, value);
  op->doExecute();
}

void Cog::doSetU8Value(Orb::String const& mapName, U32 seqno, U32 tag, U8 value) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetU8Value(Orb::String const& mapName, U32 seqno, U32 tag, U8 "
            "value)"
                << ": map=" << mapName << " seqno=" << seqno << " tag=" << tag
                << " value=" << U32(value));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setU8Value", ribMapSetPathIs(mapName, seqno));
  op->values->doPushU8(tag, value);
  op->doExecute();
}

void Cog::doSetStrValue(Orb::String const& mapName, U32 seqno, U32 tag, Orb::String const& value) {
  // The value may be packed binary, so only its length is traced.
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetStrValue(Orb::String const& mapName, U32 seqno, U32 tag, "
            "Orb::String const& value)"
                << ": map=" << mapName << " seqno=" << seqno << " tag=" << tag
                << " bytes=" << value.size());
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setStrValue", ribMapSetPathIs(mapName, seqno));
  op->values->doPushString(tag, value);
  op->doExecute();
}

void Cog::doSetNextHop(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr nextHop,
                       Kiwi::Ip6Addr const& ipv6NextHop, bool isIpv6) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetNextHop(Orb::String const& mapName, U32 seqno, Kiwi::IpAddr "
            "nextHop, Kiwi::Ip6Addr const& ipv6NextHop, bool isIpv6)"
                << ": map=" << mapName << " seqno=" << seqno << " nextHop=" << nextHop
                << " ipv6NextHop=" << ipv6NextHop << " isIpv6=" << isIpv6);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setNextHop", ribMapSetPathIs(mapName, seqno));
  if (isIpv6) {
    op->values->doPushIp6Addr(8, ipv6NextHop);
  } else {
    op->values->doPushIpAddr(7, nextHop);
  }
  op->doExecute();
}

void Cog::doSetNextHopPeerAddr(Orb::String const& mapName, U32 seqno, U32 tag, bool value) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetNextHopPeerAddr(Orb::String const& mapName, U32 seqno, U32 "
            "tag, bool value)"
                << ": map=" << mapName << " seqno=" << seqno << " tag=" << tag
                << " value=" << value);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setNextHopPeerAddr", ribMapSetPathIs(mapName, seqno));
  op->values->doPushFlag(tag, value);
  op->doExecute();
  // Committed at once, even in the middle of a map: this attribute has
  // always reached the engine in a transaction of its own.
  doCommit();
}

void Cog::doSetNextHopUnchanged(Orb::String const& mapName, U32 seqno, U32 tag, bool value) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetNextHopUnchanged(Orb::String const& mapName, U32 seqno, U32 "
            "tag, bool value)"
                << ": map=" << mapName << " seqno=" << seqno << " tag=" << tag
                << " value=" << value);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("setNextHopUnchanged", ribMapSetPathIs(mapName, seqno));
  op->values->doPushFlag(tag, value);
  op->doExecute();
  // Committed at once, mid-map, as doSetNextHopPeerAddr.
  doCommit();
}

void Cog::doSetAsPathPrependLastAs(Orb::String const& mapName, U32 seqno, U8 count) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetAsPathPrependLastAs(Orb::String const& mapName, U32 seqno, "
            "U8 count)"
                << ": map=" << mapName << " seqno=" << seqno << " count=" << U32(count));
  doSetIntValue(mapName, seqno, 33, count);
}

void Cog::doSetMetric(Orb::String const& mapName, U32 seqno, U32 metric,
                      Routing::RouteMap::MedType medType) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetMetric(Orb::String const& mapName, U32 seqno, U32 metric, "
            "Routing::RouteMap::MedType medType)"
                << ": map=" << mapName << " seqno=" << seqno << " metric " << metric << " med type "
                << U32(medType));
  using namespace Routing::RouteMap;
  if (medType > medTypeDivide) {
    ORB_TRACE(traceError, "Error: invalid med type " << U32(medType));
    ORB_ASSERT(0);
  }
  // The engine's numbering of the MED modes; 3 to 6 are deliberately not in
  // the configured order.
  static constexpr U32 medCodes[] = {0, 1, 2, 4, 5, 6, 3, 7, 8};
  switch (medType) {
    case medTypeNone:
    case medTypeAdd:
    case medTypeSubtract:
      doSetIntValue(mapName, seqno, 1, metric);
      doSetIntValue(mapName, seqno, 17, metric);
      break;
    case medTypeIgpCostSubtract:
    case medTypeDivide:
      doSetIntValue(mapName, seqno, 17, metric);
      break;
    default:
      // The IGP-cost modes and multiply carry no metric of their own.
      break;
  }
  if (medType != medTypeNone) doSetIntValue(mapName, seqno, 16, medCodes[medType]);
}

void Cog::doSetMetricType(Orb::String const& mapName, U32 seqno, Orb::String const& type) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetMetricType(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& type)"
                << ": map=" << mapName << " seqno=" << seqno << " type=" << type);
  if (type == "type-1") {
    doSetIntValue(mapName, seqno, 10, 3);
  } else if (type == "type-2") {
    doSetIntValue(mapName, seqno, 10, 4);
  } else {
    ORB_TRACE(traceError, "Error: ribAddMatchMetricType invalid type " << type);
  }
}

void Cog::doSetAsPathPrepend(Orb::String const& mapName, U32 seqno, Orb::String const& list) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetAsPathPrepend(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& list)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << list);
  MapEntry::AsPath const asPath = asPathOfText(list.view());
  doSetAsPathPrepend_(vrfName_, mapName, seqno, asPath.begin(), static_cast<U32>(asPath.size()));
}

void Cog::doSetAsPathReplace(Orb::String const& mapName, U32 seqno, Orb::String const& list) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetAsPathReplace(Orb::String const& mapName, U32 seqno, "
            "Orb::String const& list)"
                << ": map=" << mapName << " seqno=" << seqno << " list=" << list);
  MapEntry::AsPath const asPath = asPathOfText(list.view());
  doSetAsPathReplace_(vrfName_, mapName, seqno, asPath.begin(), static_cast<U32>(asPath.size()));
}

void doSetAsPathPrepend_(L3::VrfName const& vrfName, Orb::String const& mapName, U32 seqno,
                         MapEntry::AsPath::const_iterator first, U32 count) {
  ORB_TRACE(traceCommand,
            "void Tessel::doSetAsPathPrepend_(L3::VrfName const& vrfName, Orb::String const& "
            "mapName, U32 seqno, Routing::RouteMap::MapEntry::AsPath::const_iterator first, U32 "
            "count)"
                << ": vrf=" << vrfName << " map=" << mapName << " seqno=" << seqno
                << " count=" << count);
  setPackedAsPath(vrfName, mapName, seqno, 18, first, count);
}

void doSetAsPathReplace_(L3::VrfName const& vrfName, Orb::String const& mapName, U32 seqno,
                         MapEntry::AsPath::const_iterator first, U32 count) {
  ORB_TRACE(traceCommand,
            "void Tessel::doSetAsPathReplace_(L3::VrfName const& vrfName, Orb::String const& "
            "mapName, U32 seqno, Routing::RouteMap::MapEntry::AsPath::const_iterator first, U32 "
            "count)"
                << ": vrf=" << vrfName << " map=" << mapName << " seqno=" << seqno
                << " count=" << count);
  setPackedAsPath(vrfName, mapName, seqno, 34, first, count);
}

void Cog::doSetExtCommunityLbwOpts(Orb::String const& mapName, U32 seqno,
                                   Acl::ExtCommLinkBandwidthSetFlag lbwFlag, float value) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doSetExtCommunityLbwOpts(Orb::String const& mapName, U32 seqno, "
            "Acl::ExtCommLinkBandwidthSetFlag lbwFlag, float value)"
                << ": map=" << mapName << " seqno=" << seqno
                << " flag=" << Acl::valueToStrep(lbwFlag) << " value=" << value);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("ExtCommSetLinkBwOpts", ribMapSetPathIs(mapName, seqno));
  switch (lbwFlag) {
    case Acl::lbwAggregate:
      op->values->doPushU8(29, 1);
      break;
    case Acl::lbwValue: {
      // "%f" as the C locale writes it, whatever locale the agent runs in:
      // six decimals after a point. No float needs more than 47 characters.
      char text[58];
      auto const written = std::to_chars(text, text + sizeof text, static_cast<double>(value),
                                         std::chars_format::fixed, 6);
      ORB_ASSERT(written.ec == std::errc());
      op->values->doPushString(30, std::string_view(text, written.ptr));
      op->values->doPushU8(29, 2);
      break;
    }
    case Acl::lbwDivideEqual:
      op->values->doPushU8(29, 4);
      break;
    case Acl::lbwDivideRatio:
      op->values->doPushU8(29, 8);
      break;
    default:
      // "none", and any value the engine has no option bit for, clears the
      // options an earlier version of the sequence set.
      op->values->doPushReset(29);
      break;
  }
  op->doExecute();
}

}  // namespace Tessel
