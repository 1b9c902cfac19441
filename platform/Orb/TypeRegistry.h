// The type registry: runtime descriptors of the library's reactor, record and
// command types, filled by static registrations when a library is loaded.
#pragma once

#include <any>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/RangeError.h"

namespace Orb {

struct ROTOR_API TypeInfo {
  using Attributes = std::vector<std::pair<AttributeId, std::string>>;
  using Actions = std::vector<std::pair<std::string, std::function<void(Object&)>>>;

  TypeInfo(std::string typeName, Attributes typeAttributes = {}, Actions typeActions = {})
      : name(std::move(typeName)),
        attributes(std::move(typeAttributes)),
        actions(std::move(typeActions)) {}

  std::string name;
  /// Attribute ids with their names, for traces and tools.
  Attributes attributes;
  /// Operations offered through the generic interface, by name. They run
  /// only on objects that `isInstance` accepts.
  Actions actions;
  std::function<bool(Object const&)> isInstance;
  /// For value types: the text form read into a value (raising RangeError
  /// that names the field at fault) and a value written as text.
  std::function<std::any(std::string_view)> valueFromStrep;
  std::function<std::string(std::any const&)> valueToStrep;

  /// Declares the objects of this type to be the `T`s.
  template <class T>
  TypeInfo&& objectsOf() && {
    isInstance = [](Object const& o) { return dynamic_cast<T const*>(&o) != nullptr; };
    return std::move(*this);
  }
  /// Declares this a value type `T`, read by `read(std::string_view)` and
  /// written by `write(T const&)`.
  template <class T, class Read, class Write>
  TypeInfo&& valuesOf(Read read, Write write) && {
    valueFromStrep = [read](std::string_view text) { return std::any(T(read(text))); };
    valueToStrep = [write, type = name](std::any const& value) -> std::string {
      T const* v = std::any_cast<T>(&value);
      if (!v) throw RangeError(type + ": the value is of another type");
      return write(*v);
    };
    return std::move(*this);
  }
};

class ROTOR_API TypeRegistry {
 public:
  static TypeRegistry& instance();

  void typeIs(TypeInfo info);
  TypeInfo const* type(std::string_view name) const;
  /// Registered type names in name order.
  std::vector<std::string> typeNames() const;
  /// The attribute's name, or its number as text when unknown.
  std::string attributeName(std::string_view type, AttributeId id) const;
  /// Runs the named action of `type` on `target`; false when there is none.
  /// A target of another type is refused with an error trace.
  bool doAction(std::string_view type, std::string_view action, Object& target) const;

  /// The generic text-to-value conversion of a registered value type; a
  /// type without one, or text that does not read, raises RangeError.
  std::any valueFromStrep(std::string_view type, std::string_view text) const;
  /// The text form of `value`, which must hold a value of `type`.
  std::string valueToStrep(std::string_view type, std::any const& value) const;

 private:
  TypeInfo const& valueType(std::string_view type) const;
  std::vector<TypeInfo> types_;
};

/// Declared at namespace scope in a source file: registers at load time.
struct ROTOR_API TypeRegistration {
  explicit TypeRegistration(TypeInfo info) { TypeRegistry::instance().typeIs(std::move(info)); }
};

}  // namespace Orb
