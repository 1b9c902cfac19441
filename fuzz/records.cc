// Fuzzes the generic text conversion of every value type in the type
// registry (the community clause records, the prefix-list family, and any
// type registered later): a text that reads prints as a text that reads
// again to the same value and prints the same. Other text must be refused
// with a range error, never crash.
#include <any>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzCheck.h"
#include "Orb/Text.h"
#include "Orb/TypeRegistry.h"
#include "TesselUtil/CommSetClauseText.h"

namespace {

// A record carries its community set as an address, which no corpus file can
// know: the input's "0xLIVE" stands for a set that lives while the fuzzer
// runs.
constexpr std::string_view kLiveToken = "0xLIVE";

std::string withLiveSet(std::string_view input) {
  static auto const live =
      Routing::RouteMap::CommunitySet::create({Acl::commSetAdd_, true, {"CUSTOMERS", "PEERS"}, {}});
  static std::string const address = Orb::pointerToStrep(live.get());
  std::string text;
  for (std::size_t at = 0;;) {
    std::size_t const next = input.find(kLiveToken, at);
    text.append(input.substr(at, next - at));
    if (next == std::string_view::npos) break;
    text += address;
    at = next + kLiveToken.size();
  }
  return text;
}

template <class T>
void requireSameValue(std::string const& type, std::any const& a, std::any const& b,
                      std::string const& text) {
  T const* x = std::any_cast<T>(&a);
  T const* y = std::any_cast<T>(&b);
  if (!x || !y || !(*x == *y))
    Fuzz::finding(type + ": printed text reads back as another value: " + Fuzz::shown(text));
}

void roundTrip(Orb::TypeRegistry const& registry, std::string const& type,
               std::string const& text) {
  std::any value;
  try {
    value = registry.valueFromStrep(type, text);
  } catch (Orb::RangeError const&) {
    return;
  }
  std::string const printed = registry.valueToStrep(type, value);
  std::any again;
  try {
    again = registry.valueFromStrep(type, printed);
  } catch (Orb::RangeError const& e) {
    Fuzz::finding(type + ": printed text is refused: " + Fuzz::shown(printed) + ": " + e.what());
  }
  Fuzz::requireSame(type + " prints the same after reading its own text", printed,
                    registry.valueToStrep(type, again));
  if (type == "Tessel::MapEntryCommSetClause")
    requireSameValue<Tessel::MapEntryCommSetClause>(type, value, again, printed);
  if (type == "Tessel::CommSetClauseInMapEntry")
    requireSameValue<Tessel::CommSetClauseInMapEntry>(type, value, again, printed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text = withLiveSet({reinterpret_cast<char const*>(data), size});
  auto const& registry = Orb::TypeRegistry::instance();
  static std::vector<std::string> const valueTypes = [&] {
    std::vector<std::string> types;
    for (std::string const& name : registry.typeNames()) {
      if (registry.type(name)->valueFromStrep) types.push_back(name);
    }
    return types;
  }();
  for (std::string const& type : valueTypes)
    roundTrip(registry, type, text);
  return 0;
}
