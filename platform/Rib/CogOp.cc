// Executing and committing engine commands through the installed sink.
#include "Rib/CogOp.h"

#include "Orb/Recycler.h"
#include "Rib/EngineSink.h"

namespace Rib {

namespace {
constinit Orb::Recycler recycler(sizeof(CogOp), 256);
}  // namespace

void CogOp::doSetU32(Orb::U32 tag, Orb::U32 value, Orb::U32 /*reserved*/) {
  if (!values) values = CogValueTagArrayIs();
  values->valueIs(tag, value);
}

void CogOp::doExecute() {
  if (EngineSink* sink = engineSink()) sink->execute(*this);
}

void CogOp::doCommit() {
  if (EngineSink* sink = engineSink()) sink->commit(CommitKind::synchronous);
}

void* CogOp::operator new(std::size_t size) {
  return recycler.take(size);
}

void CogOp::operator delete(void* block, std::size_t size) noexcept {
  recycler.give(block, size);
}

Orb::Ptr<CogOp> CogOpIs(std::string_view name, RibPath path) {
  return Orb::make<CogOp>(name, std::move(path));
}

void CogCommit::doCommit() {
  if (EngineSink* sink = engineSink()) sink->commit(CommitKind::transaction);
}

}  // namespace Rib
