// The exported option and set-flag tables: every row, and what a miss leaves.
#include <gtest/gtest.h>

#include <string>

#include "TesselUtil/RibLookup.h"

namespace {

using SetFlags = Routing::RouteMap::MapEntry::SetFlags;

TEST(RibLookup, EveryTableHoldsExactlyItsRowsAndAMissLeavesTheTags) {
  // "option:key/value" for every option of 0..200 the lookup knows.
  auto tableOf = [](auto lookup) {
    std::string out;
    for (uint32_t option = 0; option <= 200; ++option) {
      uint32_t key = 11, value = 22;
      if (lookup(option, &key, &value)) {
        out +=
            std::to_string(option) + ":" + std::to_string(key) + "/" + std::to_string(value) + " ";
      } else {
        EXPECT_TRUE(key == 11 && value == 22) << option;
      }
    }
    return out;
  };
  EXPECT_EQ("100:581/2 105:600/21 108:590/4 109:609/18 110:608/17 111:606/26 115:589/3 ",
            tableOf(ribIsMatchOptionInt));
  EXPECT_EQ("101:582/9 102:583/10 103:585/13 120:621/27 ", tableOf(ribIsMatchOptionStr));

  // Single flags only: setValue2 is sent as an integer too but is not listed.
  std::string found;
  for (int bit = 0; bit < 32; ++bit) {
    uint32_t tag = 99;
    if (ribIsSetActionIntValue(SetFlags{uint32_t(1) << bit}, &tag)) {
      found += std::to_string(bit) + ":" + std::to_string(tag) + " ";
    } else {
      EXPECT_EQ(99u, tag) << bit;
    }
  }
  EXPECT_EQ("4:0 5:19 7:1 10:6 16:25 17:26 18:27 19:28 20:31 21:32 28:35 ", found);
  uint32_t tag = 99;
  EXPECT_FALSE(ribIsSetActionIntValue(SetFlags{SetFlags::metric | SetFlags::origin}, &tag));
  EXPECT_FALSE(ribIsSetActionIntValue(SetFlags{0}, &tag));
}

}  // namespace
