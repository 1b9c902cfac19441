// Turning configured interface names into kernel names, through a mapping the
// host may replace.
#include "Kiwi/IntfName.h"

#include <atomic>

namespace Kiwi {

namespace {

// ASCII only: the result must not depend on the process locale.
bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    c = lower(c);
  return out;
}

struct Abbreviation {
  std::string_view word;  // lower case
  std::string_view kernel;
};

constexpr Abbreviation abbreviations[] = {
    {"ethernet", "eth"},    {"vlan", "vlan"},       {"loopback", "lo"},
    {"port-channel", "po"}, {"management", "mgmt"}, {"tunnel", "tun"},
};

DefaultIntfNameMap const defaultMap{};
std::atomic<IntfNameMap const*> installed{&defaultMap};

}  // namespace

std::string DefaultIntfNameMap::kernelName(std::string_view configured) const {
  // The type word runs over letters and hyphens ("Port-Channel"); a hyphen
  // that ends it belongs to the rest, so "Vlan-10" still reads as Vlan.
  std::size_t end = 0;
  while (end < configured.size() && (isLetter(configured[end]) || configured[end] == '-'))
    ++end;
  while (end > 0 && configured[end - 1] == '-')
    --end;

  std::string out = lowered(configured.substr(0, end));
  for (Abbreviation const& a : abbreviations) {
    if (out == a.word) {
      out = a.kernel;
      break;
    }
  }
  for (char c : configured.substr(end))
    out += c == '/' ? '_' : c;
  return out;
}

IntfNameMap const* intfNameMapIs(IntfNameMap const* map) noexcept {
  return installed.exchange(map != nullptr ? map : &defaultMap);
}

std::string platIntfToKernelIntf(std::string_view configured) {
  return installed.load()->kernelName(configured);
}

}  // namespace Kiwi
