// Standard IP access lists in the engine: the list node under its configured
// name and its address entries.
#include "Tessel/Cog.h"

namespace Tessel {

namespace {

RibPath aclPath(Cog const& cog, Orb::String const& name) {
  RibPath path = cog.ribPathIs(512);
  path->doPushPath(602);
  path->doPushString(517, name);
  return path;
}

RibPath aclEntryPath(Cog const& cog, Orb::String const& name, U32 seqno) {
  RibPath path = aclPath(cog, name);
  path->doPushU32(518, seqno);
  return path;
}

}  // namespace

void Cog::doAddIpStdAcl(Orb::String const& name) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doAddIpStdAcl", aclPath(*this, name));
  op->values->doPushString(0, name);
  op->doExecute();
}

void Cog::doAddIpStdAclEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                             Kiwi::IpAddrWithFullMask const& source) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doAddIpStdAclEntry", aclEntryPath(*this, name, seqno));
  op->values->doPushU32(9, seqno);
  op->values->doPushFlag(8, action != Acl::deny);
  op->values->doPushIpAddr(0, source.address());
  // An address value prints in dotted form: a /16 mask reaches the engine as
  // 255.255.0.0, a full mask and not a wildcard.
  op->values->doPushIpAddr(4, Kiwi::IpAddr(source.mask()));
  op->doExecute();
}

void Cog::doDelIpStdAcl(Orb::String const& name) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doDelIpStdAcl", aclPath(*this, name));
  op->isDelete = true;
  op->doExecute();
}

void Cog::doDelIpStdAclEntry(Orb::String const& name, U32 seqno) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doDelIpStdAclEntry", aclEntryPath(*this, name, seqno));
  op->isDelete = true;
  op->doExecute();
}

}  // namespace Tessel
