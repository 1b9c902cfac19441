// Retirements in progress and the epoch of the engine-path check.
#include "Tessel/VrfCheck.h"

namespace Tessel {

namespace {
// Single event thread: retirements nest, innermost first.
RetiringVrf const* innermost = nullptr;
Orb::U64 epoch = 0;
}  // namespace

bool vrfRetiring(L3::VrfName const& vrfName) noexcept {
  for (RetiringVrf const* r = innermost; r; r = r->outer_) {
    if (r->vrfName_ == vrfName) return true;
  }
  return false;
}

Orb::U64 vrfCheckEpoch() noexcept {
  return epoch;
}

void vrfCheckChanged() noexcept {
  ++epoch;
}

RetiringVrf::RetiringVrf(L3::VrfName const& vrfName) noexcept
    : vrfName_(vrfName), outer_(innermost) {
  innermost = this;
  vrfCheckChanged();
}

RetiringVrf::~RetiringVrf() {
  innermost = outer_;
  vrfCheckChanged();
}

}  // namespace Tessel
