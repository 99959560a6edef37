#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/observable.h"
#include "platform/settings.h"
#include "reading/gravatar_service.h"

namespace tidewrack {

/// The picture of one avatar view: looked up while the setting avatarGravatarEnabled is on, gone when it is
/// turned off. A view that shows one sender after another gives it each address; a picture that arrives for
/// an earlier one is dropped. Main thread only.
class SenderAvatar {
 public:
  /// Calls `changed` after each change of the picture. Service and settings outlive the avatar.
  SenderAvatar(GravatarService& service, Settings& settings, std::function<void()> changed);

  void setAddress(std::string_view address);

  /// Null while there is none: the view draws initials.
  [[nodiscard]] const GravatarService::PicturePointer& image() const { return image_; }

 private:
  void identityChanged();
  void setImage(GravatarService::PicturePointer image);
  Task<> lookUp();

  GravatarService& service_;
  Settings& settings_;
  std::function<void()> changed_;
  std::string address_;
  std::string identity_;  ///< "on:" or "off:" and the address.
  GravatarService::PicturePointer image_;
  Subscription subscription_;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace tidewrack
