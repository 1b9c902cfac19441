// Counting the command stream and nothing more.
#include "Rib/NullSink.h"

namespace Rib {

void NullSink::execute(CogOp const& /*op*/) {
  ++commands_;
}

void NullSink::commit(CommitKind /*kind*/) {
  ++commits_;
}

}  // namespace Rib
