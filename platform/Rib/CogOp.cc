// Executing and committing engine commands through the installed sink.
#include "Rib/CogOp.h"

#include "Orb/Recycler.h"
#include "Rib/EngineSink.h"

namespace Rib {

constinit Orb::Recycler CogOp::recycler(sizeof(CogOp), 256);

void CogOp::doSetU32(Orb::U32 tag, Orb::U32 value, Orb::U32 /*reserved*/) {
  if (!values) values = CogValueTagArrayIs();
  values->valueIs(tag, value);
}

void CogOp::doExecute() {
  if (EngineSink* sink = engineSink()) sink->execute(*this);
  if (EngineSink* mirror = engineMirror()) mirror->execute(*this);
}

void CogOp::doCommit() {
  if (EngineSink* sink = engineSink()) sink->commit(CommitKind::synchronous);
  if (EngineSink* mirror = engineMirror()) mirror->commit(CommitKind::synchronous);
}

void CogCommit::doCommit() {
  if (EngineSink* sink = engineSink()) sink->commit(CommitKind::transaction);
  if (EngineSink* mirror = engineMirror()) mirror->commit(CommitKind::transaction);
}

}  // namespace Rib
