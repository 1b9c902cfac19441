// The walk order of the collections. Command streams are emitted in this order,
// so it must depend on the keys alone and must not drift between releases.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "Orb/HashMap.h"
#include "Orb/OrderedMap.h"
#include "Orb/String.h"

namespace Orb {
namespace {

template <class Map>
auto keysOf(Map const& m) {
  std::vector<std::decay_t<decltype(m.begin()->first)>> out;
  for (auto const& kv : m)
    out.push_back(kv.first);
  return out;
}

// The documented order, built from the hash values rather than from the map.
template <class K, class H = Hasher<K>>
std::vector<K> hashOrder(std::vector<K> keys) {
  std::sort(keys.begin(), keys.end(),
            [](K const& a, K const& b) { return H{}(a) != H{}(b) ? H{}(a) < H{}(b) : a < b; });
  return keys;
}

std::vector<U32> numbers(U32 count) {
  std::vector<U32> out(count);
  std::iota(out.begin(), out.end(), 0u);
  return out;
}

template <class K, class H = Hasher<K>>
HashMap<K, int, H> mapOf(std::vector<K> const& keys) {
  HashMap<K, int, H> m;
  for (K const& k : keys)
    m.insert(k, 0);
  return m;
}

TEST(HashGolden, ValuesAreFixedAcrossReleases) {
  EXPECT_EQ(hashBytes(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(hashBytes("R"), 0xaf640f4c86024335ULL);
  // High bytes count as unsigned whatever the signedness of char.
  EXPECT_EQ(hashBytes("\xff"), 0xaf64724c8602eb6eULL);
  EXPECT_EQ(hashOf(10u), 0x483d7d79ddc76878ULL);
  EXPECT_EQ(hashOf(10u, 7), 0x9f0a64e2cd8539b9ULL);
  EXPECT_EQ(hashOf("R"), 0x2ca4a2e115040f88ULL);
  EXPECT_EQ(hashFinish(hashMix(hashMix(hashMix(0, 1), 2), 3)), 0xbc3a7e674fd6f817ULL);
  EXPECT_EQ(Hasher<Name>{}(Name("R")), hashOf("R"));
  EXPECT_EQ(Hasher<String>{}(String("R")), hashOf("R"));
}

TEST(HashMapOrder, TenToHundredWalkInAFixedOrderThatIsNeitherInsertionNorSorted) {
  std::vector<U32> inserted{10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
  EXPECT_EQ(keysOf(mapOf(inserted)), (std::vector<U32>{10, 40, 30, 80, 60, 100, 50, 90, 70, 20}));
}

TEST(HashMapOrder, OrderIgnoresInsertionOrderGrowthAndShrinking) {
  auto keys = numbers(10000);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
  auto m = mapOf(keys);
  EXPECT_EQ(keysOf(m), hashOrder(keys));

  std::vector<U32> kept;
  for (U32 k : keys) {
    if (k % 271 == 0) {
      kept.push_back(k);
    } else {
      EXPECT_TRUE(m.erase(k)) << k;
    }
  }
  EXPECT_EQ(m.size(), kept.size());
  EXPECT_EQ(keysOf(m), hashOrder(kept));
  EXPECT_FALSE(m.erase(1));
}

TEST(HashMapOrder, EqualHashesWalkInKeyOrderAndStayDistinct) {
  // Four keys share every hash value.
  struct Coarse {
    HashValue operator()(U32 k) const noexcept { return hashOf(k / 4); }
  };
  auto keys = numbers(64);
  auto m = mapOf<U32, Coarse>(std::vector<U32>(keys.rbegin(), keys.rend()));
  EXPECT_EQ(keysOf(m), (hashOrder<U32, Coarse>(keys)));

  EXPECT_FALSE(m.insert(5u, 1).second);
  EXPECT_TRUE(m.erase(7u));
  EXPECT_EQ(*m.get(5u), 0);
  for (U32 k : keys)
    EXPECT_EQ(m.contains(k), k != 7) << k;
}

TEST(HashMapErase, EraseByIteratorWhileWalkingVisitsEveryElementOnce) {
  auto keys = numbers(500);
  auto m = mapOf(keys);
  std::vector<U32> visited;
  std::vector<U32> odd;
  for (auto it = m.begin(); it != m.end();) {
    visited.push_back(it->first);
    if (it->first % 2 == 0) {
      it = m.erase(it);
    } else {
      odd.push_back(it->first);
      ++it;
    }
  }
  EXPECT_EQ(visited, hashOrder(keys));
  EXPECT_EQ(keysOf(m), hashOrder(odd));
  EXPECT_EQ(m.size(), odd.size());

  // A cleared map has no table at all and must still take erases and inserts.
  m.clear();
  EXPECT_FALSE(m.erase(1));
  m.insert(5u, 0);
  EXPECT_EQ(keysOf(m), std::vector<U32>{5});
}

TEST(OrderedMapOrder, WalksInByteWiseKeyOrder) {
  OrderedMap<Name, int> m;
  for (char const* k : {"b", "a", "B", "\xff", "ab", ""})
    m.insert(Name(k), 0);
  EXPECT_EQ(keysOf(m), (std::vector<Name>{"", "B", "a", "ab", "b", "\xff"}));
}

}  // namespace
}  // namespace Orb
