// Orb::HashMap: the runtime's hash collection.
//
// Iteration order is fixed by the keys alone: elements are walked in ascending
// order of their finished hash with seed 0 (`Hasher<K>`), and elements whose
// hashes are equal in ascending key order. The order therefore does not depend
// on insertion history, table size, machine or run, and it is neither
// insertion order nor sorted key order. Buckets are chosen by the top bits of
// the hash, so walking the buckets in index order is walking in hash order;
// growing and shrinking split and merge neighbouring buckets and keep that.
//
// Lookups, inserts and erases are O(1) on average. Erasing by key or inserting
// invalidates iterators; `erase(iterator)` returns the next position.
//
// Nodes come from chunks the map owns (each twice the size of the one before,
// up to 1,024 nodes), so filling a map costs a handful of allocations rather
// than one per element. Erased nodes are reused; all chunks go back to the
// heap when the map becomes empty.
#pragma once

#include <cstddef>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "Orb/Hash.h"

namespace Orb {

template <class K, class V, class H = Hasher<K>>
class HashMap {
  struct Node {
    template <class KK, class VV>
    Node(KK&& k, VV&& v, HashValue h) : kv(std::forward<KK>(k), std::forward<VV>(v)), hash(h) {}
    std::pair<K const, V> kv;
    HashValue hash;
    Node* next = nullptr;
  };

 public:
  using key_type = K;
  using mapped_type = V;
  using value_type = std::pair<K const, V>;

  template <bool Const>
  class Iter {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = HashMap::value_type;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<Const, value_type const&, value_type&>;
    using pointer = std::conditional_t<Const, value_type const*, value_type*>;

    Iter() = default;
    reference operator*() const { return node_->kv; }
    pointer operator->() const { return &node_->kv; }
    Iter& operator++() {
      node_ = node_->next;
      if (!node_) settle(bucket_ + 1);
      return *this;
    }
    Iter operator++(int) {
      Iter old = *this;
      ++*this;
      return old;
    }
    friend bool operator==(Iter const& a, Iter const& b) { return a.node_ == b.node_; }
    operator Iter<true>() const { return Iter<true>(map_, bucket_, node_); }

   private:
    friend class HashMap;
    using MapPtr = std::conditional_t<Const, HashMap const*, HashMap*>;
    Iter(MapPtr m, std::size_t b, Node* n) : map_(m), bucket_(b), node_(n) {}
    void settle(std::size_t from) {
      for (bucket_ = from; bucket_ < map_->buckets_.size(); ++bucket_) {
        if ((node_ = map_->buckets_[bucket_])) return;
      }
      node_ = nullptr;
    }
    MapPtr map_ = nullptr;
    std::size_t bucket_ = 0;
    Node* node_ = nullptr;
  };
  using iterator = Iter<false>;
  using const_iterator = Iter<true>;

  HashMap() = default;
  HashMap(HashMap const& o) {
    for (auto const& kv : o)
      insert(kv.first, kv.second);
  }
  HashMap(HashMap&& o) noexcept { swap(o); }
  HashMap& operator=(HashMap o) noexcept {
    swap(o);
    return *this;
  }
  ~HashMap() { clear(); }

  void swap(HashMap& o) noexcept {
    buckets_.swap(o.buckets_);
    std::swap(shift_, o.shift_);
    std::swap(size_, o.size_);
    chunks_.swap(o.chunks_);
    std::swap(free_, o.free_);
    std::swap(chunkNodes_, o.chunkNodes_);
  }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }

  iterator begin() {
    iterator it(this, 0, nullptr);
    it.settle(0);
    return it;
  }
  iterator end() { return iterator(this, buckets_.size(), nullptr); }
  const_iterator begin() const {
    const_iterator it(this, 0, nullptr);
    it.settle(0);
    return it;
  }
  const_iterator end() const { return const_iterator(this, buckets_.size(), nullptr); }

  iterator find(K const& k) {
    auto [b, n] = locate(k, H{}(k));
    return n ? iterator(this, b, n) : end();
  }
  const_iterator find(K const& k) const {
    auto [b, n] = locate(k, H{}(k));
    return n ? const_iterator(this, b, n) : end();
  }
  bool contains(K const& k) const { return locate(k, H{}(k)).second != nullptr; }

  /// The value under `k`, or null.
  V* get(K const& k) {
    Node* n = locate(k, H{}(k)).second;
    return n ? &n->kv.second : nullptr;
  }
  V const* get(K const& k) const {
    Node* n = locate(k, H{}(k)).second;
    return n ? &n->kv.second : nullptr;
  }

  /// Inserts when `k` is absent; returns the element and whether it is new.
  template <class VV>
  std::pair<iterator, bool> insert(K const& k, VV&& v) {
    HashValue h = H{}(k);
    if (buckets_.empty()) rehash(kMinBuckets);
    std::size_t b = h >> shift_;
    Node** link = &buckets_[b];
    while (*link && before(**link, h, k))
      link = &(*link)->next;
    if (*link && (*link)->hash == h && !(k < (*link)->kv.first)) {
      return {iterator(this, b, *link), false};
    }
    Node* n = new (allocNode()) Node(k, std::forward<VV>(v), h);
    n->next = *link;
    *link = n;
    ++size_;
    if (size_ > buckets_.size()) {
      rehash(buckets_.size() * 2);
      return {find(k), true};
    }
    return {iterator(this, b, n), true};
  }

  /// Inserts or overwrites; returns the stored value.
  template <class VV>
  V& set(K const& k, VV&& v) {
    auto [it, added] = insert(k, v);
    if (!added) it->second = std::forward<VV>(v);
    return it->second;
  }

  /// Removes `k`; returns whether it was present.
  bool erase(K const& k) {
    HashValue h = H{}(k);
    if (buckets_.empty()) return false;
    Node** link = &buckets_[h >> shift_];
    while (*link && before(**link, h, k))
      link = &(*link)->next;
    Node* n = *link;
    if (!n || n->hash != h || k < n->kv.first) return false;
    *link = n->next;
    freeNode(n);
    --size_;
    if (size_ == 0) {
      release();
    } else if (buckets_.size() > kMinBuckets && size_ * 4 < buckets_.size()) {
      rehash(buckets_.size() / 2);
    }
    return true;
  }

  /// Removes the element at `it`; returns the position after it.
  iterator erase(iterator it) {
    Node** link = &buckets_[it.bucket_];
    while (*link != it.node_)
      link = &(*link)->next;
    iterator next = it;
    ++next;
    *link = it.node_->next;
    freeNode(it.node_);
    --size_;
    return next;
  }

  void clear() noexcept {
    for (Node* head : buckets_) {
      while (head)
        std::exchange(head, head->next)->~Node();
    }
    release();
  }

 private:
  static constexpr std::size_t kMinBuckets = 8;

  static bool before(Node const& n, HashValue h, K const& k) {
    return n.hash < h || (n.hash == h && n.kv.first < k);
  }

  std::pair<std::size_t, Node*> locate(K const& k, HashValue h) const {
    if (buckets_.empty()) return {0, nullptr};
    std::size_t b = h >> shift_;
    Node* n = buckets_[b];
    while (n && before(*n, h, k))
      n = n->next;
    if (n && n->hash == h && !(k < n->kv.first)) return {b, n};
    return {b, nullptr};
  }

  // Every node is destroyed (or was never built): the chunks go too.
  void release() noexcept {
    std::vector<Node*>().swap(buckets_);
    size_ = 0;
    for (void* chunk : chunks_)
      ::operator delete(chunk);
    std::vector<void*>().swap(chunks_);
    free_ = nullptr;
    chunkNodes_ = kFirstChunkNodes;
  }

  union Slot {
    Slot* nextFree;
    alignas(Node) unsigned char node[sizeof(Node)];
  };
  static constexpr std::size_t kFirstChunkNodes = 8;
  static constexpr std::size_t kMaxChunkNodes = 1024;

  void* allocNode() {
    if (free_ == nullptr) {
      // Reserve first, so a failed push cannot lose the chunk.
      chunks_.reserve(chunks_.size() + 1);
      auto* chunk = static_cast<Slot*>(::operator new(chunkNodes_ * sizeof(Slot)));
      chunks_.push_back(chunk);
      for (std::size_t i = chunkNodes_; i-- > 0;)
        free_ = new (&chunk[i]) Slot{free_};
      if (chunkNodes_ < kMaxChunkNodes) chunkNodes_ *= 2;
    }
    Slot* slot = free_;
    free_ = slot->nextFree;
    return slot->node;
  }
  void freeNode(Node* n) noexcept {
    n->~Node();
    free_ = new (n) Slot{free_};
  }

  // Redistributes the nodes over `count` buckets (a power of two). Nodes are
  // taken in hash order and appended, so every chain stays sorted.
  void rehash(std::size_t count) {
    std::vector<Node*> fresh(count, nullptr);
    std::vector<Node**> tails(count);
    for (std::size_t i = 0; i < count; ++i)
      tails[i] = &fresh[i];
    unsigned shift = 64;
    for (std::size_t c = count; c > 1; c >>= 1)
      --shift;
    for (Node* head : buckets_) {
      while (head) {
        Node* n = std::exchange(head, head->next);
        n->next = nullptr;
        std::size_t b = n->hash >> shift;
        *tails[b] = n;
        tails[b] = &n->next;
      }
    }
    buckets_.swap(fresh);
    shift_ = shift;
  }

  std::vector<Node*> buckets_;
  unsigned shift_ = 64;
  std::size_t size_ = 0;
  std::vector<void*> chunks_;
  Slot* free_ = nullptr;
  std::size_t chunkNodes_ = kFirstChunkNodes;
};

}  // namespace Orb
