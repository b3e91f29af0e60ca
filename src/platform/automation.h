// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Objects that another program offers to be worked by: on Windows those of its automation, asked by
// the names of their members. On other systems no program offers any.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::platform {

class AutomationObject;

// What a member is or is given. Truth is 1 or 0, texts are UTF-8, dates are local. Nothing stands
// for Null, and for what has no other form here.
using AutomationValue =
    std::variant<std::monostate, int64_t, std::string, DateTime, std::shared_ptr<AutomationObject>>;

class AutomationObject {
 public:
  virtual ~AutomationObject() = default;

  // The value of a property, or what a method gives. The call waits for the other program, which
  // may ask its user first. Throws Error where there is no such member or the program refuses.
  virtual AutomationValue Ask(const std::string& member,
                              const std::vector<AutomationValue>& arguments = {}) = 0;
};

// The object that a program is known by, such as "Outlook.Application": of the program that runs,
// or that is started for it. nullptr where there is no such program.
std::shared_ptr<AutomationObject> FindAutomation(const std::string& name);

}  // namespace tarnwick::platform
