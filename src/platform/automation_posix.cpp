// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/automation.h"

namespace tarnwick::platform {

std::shared_ptr<AutomationObject> FindAutomation(const std::string& /*name*/) {
  return nullptr;
}

}  // namespace tarnwick::platform
