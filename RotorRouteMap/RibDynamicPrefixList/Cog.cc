// Engine commands of dynamic prefix lists.
#include "RibDynamicPrefixList/Cog.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/TraceLevels.h"

namespace RibDynamicPrefixList {

using Tessel::traceCommand;

namespace {
Orb::TypeRegistration cogType({"RibDynamicPrefixList::Cog", {}, {}});

// The key of one list below the shared node.
Rib::RibPath listPath(Cog const& cog, Orb::String const& name) {
  Rib::RibPath path = cog.cogPath();
  path->doPushString(628, name);
  return path;
}
}  // namespace

Orb::Ptr<Cog> cogFactory() {
  return Orb::make<Cog>();
}

Rib::RibPath Cog::cogPath() const {
  ORB_TRACE(traceCommand, "RibPath RibDynamicPrefixList::Cog::cogPath()");
  Rib::RibPath path = Rib::CogTagArrayIs();
  path->doPushPath(512);
  path->doPushPath(627);
  return path;
}

void Cog::doAddDynamicPrefixListEntry(Orb::String const& dynPfxListName,
                                      Orb::String const& v4PfxName, Orb::String const& v6PfxName,
                                      Orb::String const& matchMapName) {
  ORB_TRACE(traceCommand,
            "void RibDynamicPrefixList::Cog::doAddDynamicPrefixListEntry(Orb::String "
            "dynPfxListName, Orb::String v4PfxName, Orb::String v6PfxName, Orb::String "
            "matchMapName)"
                << " Setting DynamicPrefixList: " << dynPfxListName);
  Rib::RibPath path = listPath(*this, dynPfxListName);
  auto send = [&](std::string_view op, Orb::U32 tag, Orb::String const& value) {
    Orb::Ptr<Rib::CogOp> cmd = Rib::CogOpIs(op, path);
    cmd->values = Rib::CogValueTagArrayIs();
    cmd->values->doPushString(tag, value);
    cmd->doExecute();
  };
  send("addDynamicPrefixList", 0, dynPfxListName);
  if (!v4PfxName.empty()) {
    ORB_TRACE(traceCommand, "Setting ipv4_prefix_list_name: " << v4PfxName);
    send("ipv4_prefix_list_name", 1, v4PfxName);
  }
  if (!v6PfxName.empty()) {
    ORB_TRACE(traceCommand, "Setting ipv6_prefix_list_name: " << v6PfxName);
    // The engine knows IPv6 prefix lists by this prefixed name only.
    send("ipv6_prefix_list_name", 2, ".ipv6." + v6PfxName);
  }
  ORB_TRACE(traceCommand, "Setting match_map: " << matchMapName);
  send("match_map", 3, matchMapName);
  Rib::CogCommit::doCommit();
}

void Cog::doDelDynamicPrefixList(Orb::String const& dynPfxListName) {
  ORB_TRACE(traceCommand,
            "void RibDynamicPrefixList::Cog::doDelDynamicPrefixList(Orb::String dynPfxListName)"
                << " Deleting DynamicPrefixList: " << dynPfxListName);
  Orb::Ptr<Rib::CogOp> cmd = Rib::CogOpIs("delDynamicPrefixList", listPath(*this, dynPfxListName));
  cmd->values = Rib::CogValueTagArrayIs();
  cmd->isDelete = true;
  cmd->doExecute();
  Rib::CogCommit::doCommit();
}

}  // namespace RibDynamicPrefixList
