// The exported option and set-flag tables: every row, and what a miss leaves.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "TesselUtil/RibLookup.h"

namespace {

using SetFlags = Routing::RouteMap::MapEntry::SetFlags;

/// "option:key/value" for every option of 0..200 the lookup knows.
template <class Lookup>
std::string tableOf(Lookup lookup) {
  std::string out;
  for (uint32_t option = 0; option <= 200; ++option) {
    uint32_t key = 0;
    uint32_t value = 0;
    if (lookup(option, &key, &value)) {
      out += std::to_string(option) + ":" + std::to_string(key) + "/" + std::to_string(value) + " ";
    }
  }
  return out;
}

TEST(RibLookup, MatchOptionTablesHoldExactlyTheirRows) {
  EXPECT_EQ("100:581/2 105:600/21 108:590/4 109:609/18 110:608/17 111:606/26 115:589/3 ",
            tableOf(ribIsMatchOptionInt));
  EXPECT_EQ("101:582/9 102:583/10 103:585/13 120:621/27 ", tableOf(ribIsMatchOptionStr));
}

TEST(RibLookup, MissReturnsZeroAndLeavesTheTagsAlone) {
  uint32_t key = 11;
  uint32_t value = 22;
  EXPECT_EQ(0, ribIsMatchOptionInt(104, &key, &value));
  EXPECT_EQ(0, ribIsMatchOptionStr(104, &key, &value));
  EXPECT_EQ(0, ribIsMatchOptionInt(0xffffffff, &key, &value));
  EXPECT_EQ(11u, key);
  EXPECT_EQ(22u, value);
}

TEST(RibLookup, SetActionTagsForSingleFlagsOnly) {
  std::string found;
  for (int bit = 0; bit < 32; ++bit) {
    uint32_t tag = 99;
    if (ribIsSetActionIntValue(SetFlags{uint32_t(1) << bit}, &tag)) {
      char text[32];
      std::snprintf(text, sizeof text, "%#x:%u ", 1u << bit, tag);
      found += text;
    }
  }
  EXPECT_EQ(
      "0x10:0 0x20:19 0x80:1 0x400:6 0x10000:25 0x20000:26 0x40000:27 0x80000:28 0x100000:31 "
      "0x200000:32 0x10000000:35 ",
      found);

  // setValue2 goes to the engine as a plain integer too, but is not listed;
  // combined flags and no flag are never a single set action.
  uint32_t tag = 99;
  EXPECT_FALSE(ribIsSetActionIntValue(SetFlags{SetFlags::setValue2}, &tag));
  EXPECT_FALSE(ribIsSetActionIntValue(SetFlags{SetFlags::metric | SetFlags::origin}, &tag));
  EXPECT_FALSE(ribIsSetActionIntValue(SetFlags{0}, &tag));
  EXPECT_EQ(99u, tag);
}

}  // namespace
