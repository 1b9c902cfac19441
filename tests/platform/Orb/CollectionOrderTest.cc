// The walk order of the collections. Command streams are emitted in this order,
// so it must depend on the keys alone and must not drift between releases.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
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
  std::sort(keys.begin(), keys.end(), [](K const& a, K const& b) {
    HashValue ha = H{}(a);
    HashValue hb = H{}(b);
    return ha != hb ? ha < hb : a < b;
  });
  return keys;
}

std::vector<U32> numbers(U32 count) {
  std::vector<U32> out;
  for (U32 i = 0; i < count; ++i)
    out.push_back(i);
  return out;
}

std::vector<Name> names(int count) {
  std::vector<Name> out;
  for (int i = 0; i < count; ++i)
    out.emplace_back("R" + std::to_string(i));
  return out;
}

template <class K>
HashMap<K, int> mapOf(std::vector<K> const& keys) {
  HashMap<K, int> m;
  for (K const& k : keys)
    m.insert(k, 0);
  return m;
}

TEST(HashGolden, ValuesAreFixedAcrossReleases) {
  EXPECT_EQ(hashBytes(""), 0xcbf29ce484222325ULL);
  EXPECT_EQ(hashBytes("R"), 0xaf640f4c86024335ULL);
  EXPECT_EQ(hashOf(10u), 0x483d7d79ddc76878ULL);
  EXPECT_EQ(hashOf(10u, 7), 0x9f0a64e2cd8539b9ULL);
  EXPECT_EQ(hashOf("R"), 0x2ca4a2e115040f88ULL);
  EXPECT_EQ(hashFinish(hashMix(hashMix(hashMix(0, 1), 2), 3)), 0xbc3a7e674fd6f817ULL);
}

TEST(HashGolden, CollectionsHashNumbersAndNamesWithSeedZero) {
  EXPECT_EQ(Hasher<U32>{}(10u), hashOf(10u));
  EXPECT_EQ(Hasher<Name>{}(Name("R")), hashOf("R"));
  EXPECT_EQ(Hasher<String>{}(String("R")), hashOf("R"));
}

TEST(HashGolden, HashBytesTreatsHighBytesAsUnsigned) {
  // FNV-1a of the single byte 0xff, as the platform-independent value.
  HashValue expected = (0xcbf29ce484222325ULL ^ 0xffULL) * 0x100000001b3ULL;
  EXPECT_EQ(hashBytes("\xff"), expected);
}

TEST(HashMapOrder, TenToHundredWalkInAFixedOrderThatIsNeitherInsertionNorSorted) {
  std::vector<U32> inserted{10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
  auto walked = keysOf(mapOf(inserted));
  EXPECT_EQ(walked, (std::vector<U32>{10, 40, 30, 80, 60, 100, 50, 90, 70, 20}));
  EXPECT_EQ(walked, hashOrder(inserted));
  EXPECT_NE(walked, inserted);
}

TEST(HashMapOrder, IterationOrderIgnoresInsertionOrder) {
  auto ascending = numbers(1000);
  auto descending = ascending;
  std::reverse(descending.begin(), descending.end());
  auto shuffled = ascending;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(42));
  auto expected = hashOrder(ascending);
  EXPECT_EQ(keysOf(mapOf(ascending)), expected);
  EXPECT_EQ(keysOf(mapOf(descending)), expected);
  EXPECT_EQ(keysOf(mapOf(shuffled)), expected);
}

TEST(HashMapOrder, NameKeysWalkInHashOrder) {
  auto keys = names(300);
  auto expected = hashOrder(keys);
  std::reverse(keys.begin(), keys.end());
  EXPECT_EQ(keysOf(mapOf(keys)), expected);
}

TEST(HashMapOrder, EqualHashesWalkInKeyOrder) {
  // Four keys share every hash value.
  struct Coarse {
    HashValue operator()(U32 k) const noexcept { return hashOf(k / 4); }
  };
  HashMap<U32, int, Coarse> m;
  auto keys = numbers(64);
  for (auto it = keys.rbegin(); it != keys.rend(); ++it)
    m.insert(*it, 0);
  EXPECT_EQ(keysOf(m), (hashOrder<U32, Coarse>(keys)));
  for (U32 k : keys)
    EXPECT_TRUE(m.contains(k)) << k;
}

TEST(HashMapOrder, OrderSurvivesGrowthAndShrinking) {
  auto keys = numbers(10000);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
  auto m = mapOf(keys);
  ASSERT_EQ(m.size(), 10000u);
  EXPECT_EQ(keysOf(m), hashOrder(keys));

  std::vector<U32> kept;
  for (U32 k : keys) {
    if (k % 271 == 0) {
      kept.push_back(k);
    } else {
      EXPECT_TRUE(m.erase(k));
    }
  }
  EXPECT_EQ(m.size(), kept.size());
  EXPECT_EQ(keysOf(m), hashOrder(kept));
  EXPECT_TRUE(m.contains(0));
  EXPECT_FALSE(m.contains(1));
  EXPECT_FALSE(m.erase(1));

  // Growing again after the shrink lands every key in its place.
  for (U32 k = 20000; k < 20500; ++k) {
    m.insert(k, 0);
    kept.push_back(k);
  }
  EXPECT_EQ(keysOf(m), hashOrder(kept));
}

TEST(HashMapAccess, InsertKeepsTheFirstValueAndSetOverwrites) {
  HashMap<Name, int> m;
  auto [it, added] = m.insert(Name("a"), 1);
  EXPECT_TRUE(added);
  EXPECT_EQ(it->second, 1);
  auto [again, addedAgain] = m.insert(Name("a"), 2);
  EXPECT_FALSE(addedAgain);
  EXPECT_EQ(again->second, 1);
  EXPECT_EQ(m.set(Name("a"), 3), 3);
  EXPECT_EQ(m.set(Name("b"), 4), 4);
  ASSERT_NE(m.get(Name("a")), nullptr);
  EXPECT_EQ(*m.get(Name("a")), 3);
  EXPECT_EQ(m.get(Name("c")), nullptr);
  EXPECT_EQ(m.find(Name("c")), m.end());
  EXPECT_EQ(m.size(), 2u);
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
  for (U32 k : keys)
    EXPECT_EQ(m.contains(k), k % 2 == 1) << k;
}

TEST(HashMapErase, EmptiedMapIsReusable) {
  auto m = mapOf(numbers(40));
  for (auto it = m.begin(); it != m.end();)
    it = m.erase(it);
  EXPECT_TRUE(m.empty());
  EXPECT_EQ(m.begin(), m.end());
  m.insert(3u, 0);
  m.insert(1u, 0);
  EXPECT_EQ(keysOf(m), hashOrder<U32>({1, 3}));
  m.clear();
  EXPECT_FALSE(m.erase(1));
  m.insert(5u, 0);
  EXPECT_EQ(keysOf(m), std::vector<U32>{5});
}

TEST(HashMapCopy, CopyKeepsContentAndOrderAndIsIndependent) {
  HashMap<Name, int> original;
  for (int i = 0; i < 200; ++i)
    original.insert(Name("k" + std::to_string(i)), i);
  HashMap<Name, int> copy = original;
  std::vector<std::pair<Name, int>> a(original.begin(), original.end());
  std::vector<std::pair<Name, int>> b(copy.begin(), copy.end());
  EXPECT_EQ(a, b);

  copy.set(Name("k1"), -1);
  copy.erase(Name("k2"));
  EXPECT_EQ(*original.get(Name("k1")), 1);
  EXPECT_TRUE(original.contains(Name("k2")));

  HashMap<Name, int> assigned;
  assigned.insert(Name("gone"), 0);
  assigned = original;
  std::vector<std::pair<Name, int>> c(assigned.begin(), assigned.end());
  EXPECT_EQ(c, a);

  HashMap<Name, int> moved = std::move(assigned);
  std::vector<std::pair<Name, int>> d(moved.begin(), moved.end());
  EXPECT_EQ(d, a);
}

TEST(OrderedMapOrder, WalksInByteWiseKeyOrder) {
  OrderedMap<Name, int> m;
  for (char const* k : {"b", "a", "B", "\xff", "ab", ""})
    m.insert(Name(k), 0);
  EXPECT_EQ(keysOf(m), (std::vector<Name>{"", "B", "a", "ab", "b", "\xff"}));
  auto lb = m.lowerBound(Name("aa"));
  ASSERT_NE(lb, m.end());
  EXPECT_EQ(lb->first, Name("ab"));
}

TEST(OrderedMapOrder, NumbersWalkAscendingWhateverTheInsertionOrder) {
  auto keys = numbers(300);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
  OrderedMap<U32, int> m;
  for (U32 k : keys)
    m.insert(k, 0);
  EXPECT_EQ(keysOf(m), numbers(300));
}

}  // namespace
}  // namespace Orb
