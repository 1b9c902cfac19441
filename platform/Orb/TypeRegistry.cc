// The process-wide type registry.
#include "Orb/TypeRegistry.h"

#include <algorithm>

namespace Orb {

TypeRegistry& TypeRegistry::instance() {
  static TypeRegistry registry;
  return registry;
}

void TypeRegistry::typeIs(TypeInfo info) {
  auto it = std::find_if(types_.begin(), types_.end(),
                         [&](TypeInfo const& t) { return t.name == info.name; });
  if (it != types_.end()) {
    *it = std::move(info);
  } else {
    types_.push_back(std::move(info));
  }
}

TypeInfo const* TypeRegistry::type(std::string_view name) const {
  for (auto const& t : types_) {
    if (t.name == name) return &t;
  }
  return nullptr;
}

std::vector<std::string> TypeRegistry::typeNames() const {
  std::vector<std::string> names;
  for (auto const& t : types_)
    names.push_back(t.name);
  std::sort(names.begin(), names.end());
  return names;
}

std::string TypeRegistry::attributeName(std::string_view type, AttributeId id) const {
  if (auto const* t = this->type(type)) {
    for (auto const& [aid, name] : t->attributes) {
      if (aid == id) return name;
    }
  }
  return std::to_string(id);
}

bool TypeRegistry::doAction(std::string_view type, std::string_view action, Object& target) const {
  if (auto const* t = this->type(type)) {
    for (auto const& [name, fn] : t->actions) {
      if (name == action) {
        fn(target);
        return true;
      }
    }
  }
  return false;
}

}  // namespace Orb
