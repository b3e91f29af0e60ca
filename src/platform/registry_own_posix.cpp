// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/registry_tree.h"

namespace tarnwick::platform {

std::string OwnProfileFolder() {
  return {};
}

std::unique_ptr<Registry> OpenOwnRegistry() {
  return nullptr;
}

}  // namespace tarnwick::platform
