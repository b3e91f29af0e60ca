// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How long a password would stand against somebody who has the file and guesses. An estimate: it
// knows common words, names, dates and patterns of the keyboard, but nothing of the person.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::options {

struct PasswordStrength {
  int percent = 0;   // for a meter
  std::string text;  // "Weak: found within days", "" for an empty password
};

// password: UTF-8, of which the first hundred bytes are looked at.
PasswordStrength EstimateStrength(std::string_view password);

}  // namespace tarnwick::options
