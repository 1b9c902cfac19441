// A locale that writes numbers as "12.345,5", for tests showing that what the
// library writes does not follow the host's locale. Built under the test's
// temporary directory when the machine has none installed.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace TestSupport {

/// The name of a German UTF-8 locale that setlocale and std::locale accept,
/// or empty when none can be had.
inline std::string decimalCommaLocale() {
  static std::string const name = [] {
    std::string const german = "de_DE.UTF-8";
    auto usable = [&] {
      if (!std::setlocale(LC_NUMERIC, german.c_str())) return false;
      std::setlocale(LC_NUMERIC, "C");
      return true;
    };
    if (usable()) return german;
    std::string const dir = testing::TempDir() + "rotor-locales";
    // Made once for all the test programs of a run, and moved in place
    // whole, so a program running beside never reads half of it.
    std::string const made = dir + "/" + german;
    std::string const make = "test -d '" + made + "' || { mkdir -p '" + dir +
                             "' && localedef -i de_DE -f UTF-8 '" + made + ".$$' 2>/dev/null && " +
                             "{ mv -T '" + made + ".$$' '" + made + "' || rm -rf '" + made +
                             ".$$'; }; }";
    if (std::system(make.c_str()) != 0) return std::string();
    ::setenv("LOCPATH", dir.c_str(), 1);
    return usable() ? german : std::string();
  }();
  return name;
}

}  // namespace TestSupport
