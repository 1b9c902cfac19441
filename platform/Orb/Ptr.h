// Orb::Ptr: the intrusive reference-counted pointer to an Orb::Object.
#pragma once

#include <compare>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "Orb/Object.h"

namespace Orb {

/// Shares ownership of an Object; the object lives while a Ptr refers to it.
template <class T>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}
  Ptr(T* p) noexcept : p_(p) { ref(); }
  Ptr(Ptr const& o) noexcept : p_(o.p_) { ref(); }
  Ptr(Ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(Ptr<U> const& o) noexcept : p_(o.get()) {
    ref();
  }
  ~Ptr() { unref(); }

  Ptr& operator=(Ptr o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }

  T* get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

  friend bool operator==(Ptr const& a, Ptr const& b) noexcept { return a.p_ == b.p_; }
  friend bool operator==(Ptr const& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }
  template <class U>
  friend bool operator==(Ptr const& a, Ptr<U> const& b) noexcept {
    return a.get() == b.get();
  }

 private:
  void ref() const noexcept {
    if (p_) static_cast<Object const*>(p_)->newRef();
  }
  void unref() noexcept {
    if (p_) static_cast<Object const*>(p_)->deleteRef();
  }
  T* p_ = nullptr;
};

/// Creates a T and returns the first reference to it.
template <class T, class... Args>
Ptr<T> make(Args&&... args) {
  return Ptr<T>(new T(std::forward<Args>(args)...));
}

template <class T, class U>
Ptr<T> ptrCast(Ptr<U> const& p) noexcept {
  return Ptr<T>(static_cast<T*>(p.get()));
}

}  // namespace Orb
