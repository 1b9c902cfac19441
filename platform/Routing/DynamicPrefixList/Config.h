// Routing::DynamicPrefixList::Config: the configured dynamic prefix lists.
// Its entries arrive with the dynamic prefix-list reactor.
#pragma once

#include "Orb/Entity.h"

namespace Routing::DynamicPrefixList {

class Config : public Orb::Entity {
 public:
  static Orb::Ptr<Config> create(Orb::Name name) { return new Config(std::move(name)); }

 private:
  explicit Config(Orb::Name name) : Entity(std::move(name)) {}
};

}  // namespace Routing::DynamicPrefixList
