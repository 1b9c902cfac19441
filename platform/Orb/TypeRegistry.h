// The type registry: runtime descriptors of the library's reactor, record and
// command types, filled by static registrations when a library is loaded.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Orb/Entity.h"

namespace Orb {

struct TypeInfo {
  std::string name;
  /// Attribute ids with their names, for traces and tools.
  std::vector<std::pair<AttributeId, std::string>> attributes;
  /// Operations offered through the generic interface, by name.
  std::vector<std::pair<std::string, std::function<void(Object&)>>> actions;
};

class TypeRegistry {
 public:
  static TypeRegistry& instance();

  void typeIs(TypeInfo info);
  TypeInfo const* type(std::string_view name) const;
  /// Registered type names in name order.
  std::vector<std::string> typeNames() const;
  /// The attribute's name, or its number as text when unknown.
  std::string attributeName(std::string_view type, AttributeId id) const;
  /// Runs the named action of `type` on `target`; false when there is none.
  bool doAction(std::string_view type, std::string_view action, Object& target) const;

 private:
  std::vector<TypeInfo> types_;
};

/// Declared at namespace scope in a source file: registers at load time.
struct TypeRegistration {
  explicit TypeRegistration(TypeInfo info) { TypeRegistry::instance().typeIs(std::move(info)); }
};

}  // namespace Orb
