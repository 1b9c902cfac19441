// The AS-path withdrawal rules, applied to the shadow configuration as it
// changes.
#include "AsPathHoldBack.h"

namespace Scenario {

namespace {

bool validUnder(Acl::AsPathEntry const& e, Acl::RegexMode mode) {
  if (mode == Acl::regexModeAsn) return e.validInMode0;
  if (mode == Acl::regexModeString) return e.validInMode1;
  return false;
}

}  // namespace

class AsPathHoldBack::ConfigWatch final : public Orb::Notifiee {
 public:
  ConfigWatch(AsPathHoldBack& owner, Orb::Ptr<Orb::Entity const> config)
      : Notifiee(std::move(config)), owner_(owner) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const& key) override {
    if (attribute == Acl::AclListConfig::regexMode_) {
      if (owner_.up_) owner_.reevaluateAll();
    } else if (attribute == Acl::AclListConfig::asPathList_) {
      owner_.listChanged(key.name());
    }
  }

 private:
  AsPathHoldBack& owner_;
};

class AsPathHoldBack::ListWatch final : public Orb::Notifiee {
 public:
  ListWatch(AsPathHoldBack& owner, Orb::Ptr<Acl::AsPathList const> list)
      : Notifiee(list), owner_(owner), name_(list->name()) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const& key) override {
    if (attribute == Acl::AsPathList::pathEntry_) owner_.entryChanged(name_, key.u32());
  }

 private:
  AsPathHoldBack& owner_;
  Orb::Name name_;
};

AsPathHoldBack::AsPathHoldBack(Orb::Ptr<Acl::AclListConfig const> config)
    : config_(std::move(config)), configWatch_(std::make_unique<ConfigWatch>(*this, config_)) {
  for (auto const& [name, list] : config_->asPathList())
    listWatch_[name] = std::make_unique<ListWatch>(*this, list);
}

AsPathHoldBack::~AsPathHoldBack() = default;

void AsPathHoldBack::upIs(bool up) {
  if (up && !up_) {
    up_ = true;
    reevaluateAll();
  }
  up_ = up;
}

bool AsPathHoldBack::correctedInPlace(Orb::Name const& name) const {
  auto const held = held_.find(name);
  if (held == held_.end() || held->second.empty()) return false;
  auto list = config_->asPathList(name);
  if (!list) return false;
  for (auto const& [seqno, entry] : list->pathEntry()) {
    if (!validUnder(entry, config_->regexMode())) return false;
  }
  return true;
}

void AsPathHoldBack::listChanged(Orb::Name const& name) {
  auto list = config_->asPathList(name);
  held_.erase(name);
  if (!list) {
    listWatch_.erase(name);
    // Removed by the reactor, or left behind when there is none.
    if (up_) {
      stale_.erase(name);
    } else {
      stale_.insert(name);
    }
    return;
  }
  listWatch_[name] = std::make_unique<ListWatch>(*this, list);
}

void AsPathHoldBack::entryChanged(Orb::Name const& name, Orb::U32 seqno) {
  if (!up_) return;
  auto list = config_->asPathList(name);
  if (!list) return;
  std::set<Orb::U32>& held = held_[name];
  Acl::AsPathEntry const* entry = list->pathEntry(seqno);
  if (!entry) {
    held.erase(seqno);
  } else if (!validUnder(*entry, config_->regexMode())) {
    held.insert(seqno);
  }
  // A valid entry clears nothing: that is what keeps a corrected list out.
}

void AsPathHoldBack::reevaluateAll() {
  held_.clear();
  for (auto const& [name, list] : config_->asPathList()) {
    stale_.erase(name);
    for (auto const& [seqno, entry] : list->pathEntry()) {
      if (!validUnder(entry, config_->regexMode())) held_[name].insert(seqno);
    }
  }
}

}  // namespace Scenario
