// Recording the command stream.
#include "Rib/RecordingSink.h"

namespace Rib {

void RecordingSink::execute(CogOp const& op) {
  records_.push_back(RecordedCommand::of(op));
}

void RecordingSink::commit(CommitKind kind) {
  records_.push_back(RecordedCommand::of(kind));
  ++commits_;
}

std::vector<std::string> RecordingSink::lines() const {
  std::vector<std::string> out;
  out.reserve(records_.size());
  for (RecordedCommand const& r : records_)
    out.push_back(commandLine(r));
  return out;
}

std::string RecordingSink::text() const {
  std::string out;
  for (RecordedCommand const& r : records_) {
    out += commandLine(r);
    out += '\n';
  }
  return out;
}

void RecordingSink::clear() noexcept {
  records_.clear();
  commits_ = 0;
}

}  // namespace Rib
