// AS-path access lists, their entries and the regular-expression mode, as
// engine commands under the list node 534.
#include <string>

#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

namespace {

Orb::String listKey(Orb::String const& name) {
  return "/policy/asplist " + name;
}

Orb::String entryKey(U32 seqno) {
  return Orb::String(std::to_string(seqno) + "/asplist/entry");
}

// The engine's origin code: bit 8 always, plus the bit of a known origin.
U32 originCode(Acl::BGPOrigin origin) {
  constexpr U32 kOriginBit[] = {1, 2, 4};
  U32 const index = static_cast<U32>(origin);
  return 256 | (index < 3 ? kOriginBit[index] : 0);
}

}  // namespace

void Cog::doAddAsPathList(Orb::String const& name) {
  ORB_TRACE(traceCommand, "void Tessel::Cog::doAddAsPathList(Orb::String const& name)"
                              << ": name=" << name);
  RibPath path = ribPathIs(512);
  path->doPushPath(534);
  path->doPushString(535, listKey(name));
  auto values = Rib::CogValueTagArrayIs();
  values->doPushString(0, name);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("addAsPathList", path);
  op->values = values;
  op->doExecute();
}

void Cog::doDeleteAsPathList(Orb::String const& name) {
  ORB_TRACE(traceDelete, "void Tessel::Cog::doDeleteAsPathList(Orb::String const& name)"
                             << ": name=" << name);
  RibPath path = ribPathIs(512);
  path->doPushPath(534);
  path->doPushString(535, listKey(name));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("deleteAsPathList", path);
  op->isDelete = true;
  op->doExecute();
}

void Cog::doAddAsPathListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit permit,
                               Orb::String const& regex, Acl::BGPOrigin origin) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddAsPathListEntry(Orb::String const& name, U32 seqno, "
            "Acl::MatchPermit permit, Orb::String const& regex, Acl::BGPOrigin origin)"
                << ": name=" << name << " seqno=" << seqno
                << " permit=" << Acl::valueToStrep(permit) << " regex=" << regex
                << " origin=" << Acl::valueToStrep(origin));
  RibPath path = ribPathIs(512);
  path->doPushPath(534);
  path->doPushString(535, listKey(name));
  path->doPushPath(536);
  path->doPushString(537, entryKey(seqno));
  auto values = Rib::CogValueTagArrayIs();
  values->doPushU32(0, seqno);
  values->doPushString(1, regex);
  values->doPushU32(2, originCode(origin));
  // Unlike prefix lists, a deny entry is told by the flag's absence.
  if (permit == Acl::permit) values->doPushFlag(3, true);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("addAsPathListEntry", path);
  op->values = values;
  op->doExecute();
}

void Cog::doDelAsPathListEntry(Orb::String const& name, U32 seqno) {
  ORB_TRACE(traceDelete,
            "void Tessel::Cog::doDelAsPathListEntry(Orb::String const& name, U32 seqno)"
                << ": name=" << name << " seqno=" << seqno);
  RibPath path = ribPathIs(512);
  path->doPushPath(534);
  path->doPushString(535, listKey(name));
  path->doPushPath(536);
  path->doPushString(537, entryKey(seqno));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("delAsPathListEntry", path);
  op->isDelete = true;
  op->doExecute();
}

void Cog::doAsPathRegexMode(Acl::RegexMode mode) {
  ORB_TRACE(traceCommand, "void Tessel::Cog::doAsPathRegexMode(Acl::RegexMode mode)"
                              << " vrf: " << vrfName_ << " mode: " << Acl::valueToStrep(mode));
  // The mode node takes the place of the policy root, so it is still checked
  // against the root's VRF.
  RibPath path = ribPathIs(256);
  Orb::Ptr<Rib::CogOp> op = Rib::CogOpIs("AsPathRegexMode", path);
  op->doSetU32(16, mode == Acl::regexModeString ? 2 : 1, 0);
  op->doExecute();
}

}  // namespace Tessel
