// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The desktop's keyring (Secret Service, KWallet; on Windows the system's credentials), for
// repository::Keyring. A call waits for the keyring, which may ask the person to open it first.
#pragma once

#include "repository/keyring.h"

namespace tarnwick::app {

class DesktopKeyring : public repository::Keyring {
 public:
  std::string WhyNot() override;
  std::optional<platform::Secret> Find(const std::string& name) override;
  std::string Keep(const std::string& name, const platform::Secret& password) override;
  void Remove(const std::string& name) override;
};

}  // namespace tarnwick::app
