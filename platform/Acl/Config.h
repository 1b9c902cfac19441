// Acl::Config: the access-list configuration of all ACL types. Its per-type
// configurations arrive with the reactor that reads them.
#pragma once

#include "Orb/Entity.h"

namespace Acl {

class Config : public Orb::Entity {
 public:
  static Orb::Ptr<Config> create(Orb::Name name) { return new Config(std::move(name)); }

 private:
  explicit Config(Orb::Name name) : Entity(std::move(name)) {}
};

}  // namespace Acl
