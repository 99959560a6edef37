#include "reading/sender_avatar.h"

#include <utility>

namespace tidewrack {

SenderAvatar::SenderAvatar(GravatarService& service, Settings& settings, std::function<void()> changed)
    : service_(service),
      settings_(settings),
      changed_(std::move(changed)),
      subscription_(settings.observe(SettingKey::avatarGravatarEnabled, [this] { identityChanged(); })) {}

void SenderAvatar::setAddress(std::string_view address) {
  address_ = address;
  identityChanged();
}

void SenderAvatar::identityChanged() {
  const bool isEnabled = settings_.boolean(SettingKey::avatarGravatarEnabled);
  std::string identity = (isEnabled ? "on:" : "off:") + address_;
  if (identity == identity_) {
    return;
  }
  identity_ = std::move(identity);
  setImage(nullptr);
  if (isEnabled) {
    lookUp();
  }
}

void SenderAvatar::setImage(GravatarService::PicturePointer image) {
  if (image_ != image) {
    image_ = std::move(image);
    changed_();
  }
}

Task<> SenderAvatar::lookUp() {
  const std::weak_ptr<int> alive = alive_;
  const std::string started = identity_;
  const std::string address = address_;
  auto image = co_await service_.avatar(address);
  if (!alive.expired() && identity_ == started) {
    setImage(std::move(image));
  }
}

}  // namespace tidewrack
