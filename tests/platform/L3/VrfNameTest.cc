// VRF names: the length limit and the error reported past it.
#include <gtest/gtest.h>

#include <string>

#include "L3/VrfName.h"
#include "Orb/RangeError.h"

namespace {

TEST(VrfName, AcceptsUpToMaxLengthBytesAndRejectsOneMore) {
  std::string const longest(L3::VrfName::maxLength, 'v');
  EXPECT_EQ(L3::VrfName(Orb::String(longest)).value().size(), 100u);
  try {
    L3::VrfName(Orb::String(longest + "v"));
    FAIL() << "a 101-byte name was accepted";
  } catch (Orb::RangeError const& e) {
    EXPECT_STREQ(e.what(), "VrfName::value::bytes > VrfName::maxLength not allowed");
  }
}

}  // namespace
