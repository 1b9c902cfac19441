// Acl::AclListConfig: the VRF's prefix lists, AS-path lists and community
// lists. The lists themselves arrive with the reactors that read them.
#pragma once

#include "Orb/Entity.h"

namespace Acl {

class AclListConfig : public Orb::Entity {
 public:
  static Orb::Ptr<AclListConfig> create(Orb::Name name) {
    return new AclListConfig(std::move(name));
  }

 private:
  explicit AclListConfig(Orb::Name name) : Entity(std::move(name)) {}
};

}  // namespace Acl
