// The replacement in progress and the kinds of holds it drops when it ends.
#include "Tessel/Holds.h"

namespace Tessel {

namespace {
int replacements = 0;  // nested, on the event thread
std::vector<HoldsBase*>& kinds() {
  static std::vector<HoldsBase*> all;
  return all;
}
}  // namespace

bool machineReplacing() noexcept {
  return replacements > 0;
}

MachineReplacement::MachineReplacement() noexcept {
  ++replacements;
}

MachineReplacement::~MachineReplacement() {
  if (--replacements > 0) return;
  for (HoldsBase* kind : kinds())
    kind->clear();
}

std::size_t holdsLeft() noexcept {
  std::size_t held = 0;
  for (HoldsBase const* kind : kinds())
    held += kind->size();
  return held;
}

HoldsBase::HoldsBase() {
  kinds().push_back(this);
}

HoldsBase::~HoldsBase() {
  std::erase(kinds(), this);
}

}  // namespace Tessel
