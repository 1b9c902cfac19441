// Orb::OrderedMap: the runtime's ordered (tree) collection, walked in
// ascending key order.
#pragma once

#include <map>
#include <utility>

namespace Orb {

/// An ordered collection with the same access words as `HashMap`.
template <class K, class V>
class OrderedMap {
  using Map = std::map<K, V>;

 public:
  using iterator = typename Map::iterator;
  using const_iterator = typename Map::const_iterator;
  using value_type = typename Map::value_type;
  using key_type = K;
  using mapped_type = V;

  std::size_t size() const noexcept { return m_.size(); }
  bool empty() const noexcept { return m_.empty(); }
  iterator begin() { return m_.begin(); }
  iterator end() { return m_.end(); }
  const_iterator begin() const { return m_.begin(); }
  const_iterator end() const { return m_.end(); }
  iterator find(K const& k) { return m_.find(k); }
  const_iterator find(K const& k) const { return m_.find(k); }
  /// The first element whose key is not below `k`.
  const_iterator lowerBound(K const& k) const { return m_.lower_bound(k); }
  bool contains(K const& k) const { return m_.find(k) != m_.end(); }

  V* get(K const& k) {
    auto it = m_.find(k);
    return it == m_.end() ? nullptr : &it->second;
  }
  V const* get(K const& k) const {
    auto it = m_.find(k);
    return it == m_.end() ? nullptr : &it->second;
  }
  template <class VV>
  std::pair<iterator, bool> insert(K const& k, VV&& v) {
    return m_.try_emplace(k, std::forward<VV>(v));
  }
  template <class VV>
  V& set(K const& k, VV&& v) {
    return m_.insert_or_assign(k, std::forward<VV>(v)).first->second;
  }
  bool erase(K const& k) { return m_.erase(k) != 0; }
  iterator erase(iterator it) { return m_.erase(it); }
  void clear() noexcept { m_.clear(); }

  friend bool operator==(OrderedMap const&, OrderedMap const&) = default;

 private:
  Map m_;
};

}  // namespace Orb
