// The process-wide type registry.
#include "Orb/TypeRegistry.h"

#include <algorithm>

#include "Orb/Trace.h"

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
  auto const* t = this->type(type);
  if (!t) return false;
  for (auto const& [name, fn] : t->actions) {
    if (name != action) continue;
    // An action reaches into its target as the registered type.
    if (!t->isInstance) {
      ORB_TRACE(0, "Error: action " << action << " of " << type
                                    << " refused: the type cannot check its objects");
      return false;
    }
    if (!t->isInstance(target)) {
      ORB_TRACE(0, "Error: action " << action << " of " << type
                                    << " refused: the object is of another type");
      return false;
    }
    fn(target);
    return true;
  }
  return false;
}

TypeInfo const& TypeRegistry::valueType(std::string_view type) const {
  auto const* t = this->type(type);
  if (!t || !t->valueFromStrep || !t->valueToStrep) {
    throw RangeError(std::string(type) + ": not a registered value type");
  }
  return *t;
}

std::any TypeRegistry::valueFromStrep(std::string_view type, std::string_view text) const {
  return valueType(type).valueFromStrep(text);
}

std::string TypeRegistry::valueToStrep(std::string_view type, std::any const& value) const {
  return valueType(type).valueToStrep(value);
}

}  // namespace Orb
