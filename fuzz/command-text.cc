// Fuzzes the canonical command text: a line that parses prints back to the
// same bytes and parses again to the same record; a stream likewise. Any
// other text must be refused with a range error, never crash.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzCheck.h"
#include "Rib/CommandText.h"

namespace {

void oneLine(std::string_view text) {
  Rib::RecordedCommand record;
  try {
    record = Rib::parseCommandLine(text);
  } catch (Orb::RangeError const&) {
    return;
  }
  std::string const printed = Rib::commandLine(record);
  Fuzz::requireSame("a parsed line prints back as itself", text, printed);
  Rib::RecordedCommand again;
  try {
    again = Rib::parseCommandLine(printed);
  } catch (Orb::RangeError const& e) {
    Fuzz::finding("a printed line is refused: " + Fuzz::shown(printed) + ": " + e.what());
  }
  if (!(again == record)) Fuzz::finding("a printed line parses to another record: " + printed);
}

void stream(std::string_view text) {
  std::vector<Rib::RecordedCommand> records;
  try {
    records = Rib::parseCommandText(text);
  } catch (Orb::RangeError const&) {
    return;
  }
  std::string printed;
  for (Rib::RecordedCommand const& r : records)
    printed += Rib::commandLine(r) + '\n';
  Fuzz::requireSame("a parsed stream prints back as itself", text, printed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(data), size);
  oneLine(text);
  stream(text);
  return 0;
}
