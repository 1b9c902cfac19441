// Mapping of configured interface names to the kernel's interface names.
#pragma once

#include "Orb/Api.h"

#include <string>
#include <string_view>

namespace Kiwi {

/// The seam through which the host supplies its own interface naming.
class ROTOR_API IntfNameMap {
 public:
  virtual ~IntfNameMap() = default;
  virtual std::string kernelName(std::string_view configured) const = 0;
};

/// The default mapping, deterministic and independent of the machine:
///  - a leading type word is abbreviated, matched without regard to case:
///    Ethernet -> eth, Vlan -> vlan, Loopback -> lo, Port-Channel -> po,
///    Management -> mgmt, Tunnel -> tun; other words are lower-cased;
///  - the rest is kept, except that '/' becomes '_' (kernel names have no '/');
///  - an empty name stays empty.
/// So "Ethernet1/2" becomes "eth1_2", "Vlan10" "vlan10", "Port-Channel5" "po5".
class ROTOR_API DefaultIntfNameMap final : public IntfNameMap {
 public:
  std::string kernelName(std::string_view configured) const override;
};

/// Installs the host's mapping (nullptr restores the default); returns the
/// previous one.
ROTOR_API IntfNameMap const* intfNameMapIs(IntfNameMap const* map) noexcept;

/// The kernel's name for a configured interface name, through the installed
/// mapping.
ROTOR_API std::string platIntfToKernelIntf(std::string_view configured);

}  // namespace Kiwi
