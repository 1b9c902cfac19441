// The check every engine path makes against the current root's VRF, and the
// one case where a path for another VRF is expected: a per-VRF machine being
// retired sends its tear-down for the VRF it was built for, which the root may
// have left already.
#pragma once

#include "L3/VrfName.h"
#include "Orb/Api.h"
#include "Orb/Types.h"

namespace Tessel {

/// Whether a machine for `vrfName` is being retired right now.
ROTOR_API bool vrfRetiring(L3::VrfName const& vrfName) noexcept;

/// Changes whenever what the path check accepts may have changed: a root
/// made, renamed or gone, a retirement begun or ended. A translator that
/// checked its VRF at one value need not check again while it holds.
ROTOR_API Orb::U64 vrfCheckEpoch() noexcept;
ROTOR_API void vrfCheckChanged() noexcept;

/// While it lives, paths for the VRF of a machine being retired pass the
/// check, so its tear-down goes out for its own VRF after a rename or once a
/// later root is current.
class ROTOR_API RetiringVrf {
 public:
  explicit RetiringVrf(L3::VrfName const& vrfName) noexcept;
  ~RetiringVrf();
  RetiringVrf(RetiringVrf const&) = delete;
  RetiringVrf& operator=(RetiringVrf const&) = delete;

 private:
  friend bool vrfRetiring(L3::VrfName const& vrfName) noexcept;
  L3::VrfName vrfName_;
  RetiringVrf const* outer_;
};

}  // namespace Tessel
