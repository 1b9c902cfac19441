// Paths, commits and the set-operation mode command of the translator.
#include "Tessel/Cog.h"

#include "Orb/Assert.h"
#include "Orb/Recycler.h"
#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Root.h"
#include "Tessel/TraceLevels.h"
#include "Tessel/VrfCheck.h"

namespace Tessel {

namespace {
Orb::TypeRegistration cogType(
    Orb::TypeInfo("Tessel::Cog", {},
                  {{"doSyncCommit", [](Orb::Object& o) { static_cast<Cog&>(o).doSyncCommit(); }}})
        .objectsOf<Cog>());
constinit Orb::Recycler recycler(sizeof(Cog), 16);
}  // namespace

void* Cog::operator new(std::size_t size) {
  return recycler.take(size);
}

void Cog::operator delete(void* block, std::size_t size) noexcept {
  recycler.give(block, size);
}

Orb::Ptr<Cog> cogFactory(L3::VrfName vrfName) {
  return Orb::make<Cog>(std::move(vrfName));
}

RibPath cogVrePath(L3::VrfName const& vrfName, bool) {
  if (rmRoot && !vrfRetiring(vrfName)) ORB_ASSERT(rmRoot->vrfName() == vrfName);
  return Rib::CogTagArrayIs();
}

Orb::Ptr<Rib::CogOp> ribOpIs(std::string_view name, RibPath path) {
  Orb::Ptr<Rib::CogOp> op = Rib::CogOpIs(name, std::move(path));
  op->values = Rib::CogValueTagArrayIs();
  return op;
}

Orb::Ptr<Rib::CogOp> ribOpIs(Orb::String const& name, RibPath path) {
  return ribOpIs(name.view(), std::move(path));
}

RibPath Cog::ribPathIs(U32 id) const {
  Root const* const root = rmRoot.get();
  Orb::U64 const epoch = vrfCheckEpoch();
  RibPath path;
  if (root != vrfCheckedFor_ || epoch != vrfCheckedAt_) {
    path = cogVrePath(vrfName_, false);
    vrfCheckedFor_ = root;
    vrfCheckedAt_ = epoch;
  } else {
    path = Rib::CogTagArrayIs();
  }
  path->doPushPath(id);
  return path;
}

RibPath Cog::ribMapSeqPathIs(Orb::String const& mapName, U32 seqno) const {
  RibPath path = ribPathIs(512);
  path->doPushString(576, mapName);
  path->doPushPath(577);
  path->doPushU32(578, seqno);
  return path;
}

void Cog::doCommit() {
  Rib::CogCommit::doCommit();
}

void Cog::doSyncCommit() {
  ORB_TRACE(traceCommand, "void Tessel::Cog::doSyncCommit()");
  Orb::String listName = Orb::String("/policy/asplist ") + "not_a_funny_name";
  RibPath path = ribPathIs(512);
  path->doPushPath(534);
  path->doPushString(535, listName);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("deleteAsPathList", path);
  op->isDelete = true;
  op->doExecute();
  op->doCommit();
}

void Cog::doRouteMapOpConfig(Routing::RouteMap::RouteMapOpModeType mode) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doRouteMapOpConfig(Routing::RouteMap::RouteMapOpModeType mode)"
                << " vrf: " << vrfName_ << " config: " << Routing::RouteMap::valueToStrep(mode));
  RibPath path = Rib::CogTagArrayIs();
  path->doPushPath(256);
  Orb::Ptr<Rib::CogOp> op = Rib::CogOpIs("RouteMapSetOpMode", path);
  op->doSetU32(18, mode, 0);
  op->doExecute();
}

}  // namespace Tessel
