// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/password_strength.h"

#include <algorithm>
#include <cstring>
#include <set>

#if __has_include(<zxcvbn.h>)
#include <zxcvbn.h>
#endif

#include "platform/secret.h"

namespace tarnwick::options {

namespace {

// The estimate's cost grows with the square of the length, and more.
constexpr size_t kMostBytes = 100;
constexpr double kBitsOfFullMeter = 80;

// Bits below which a password is called so. Each guess takes half a second and 256 MB; a hundred
// large machines would try some ten thousand a second: 2^13.
constexpr struct {
  double bits;
  const char* text;
} kGrades[] = {{33, "Weak: found within days"},
               {45, "Fair: found within years by somebody who spends much on it"},
               {60, "Good: found by nobody who has less than thousands of machines"},
               {1e9, "Strong"}};

#if !__has_include(<zxcvbn.h>)
// As if each character that was not there before were one of the twenty that somebody would try.
double ZxcvbnMatch(const char* password, const void* /*words*/, const void* /*parts*/) {
  constexpr double kBits = 4.3;
  return kBits *
         static_cast<double>(std::set<char>(password, password + std::strlen(password)).size());
}
#endif

}  // namespace

PasswordStrength EstimateStrength(std::string_view password) {
  if (password.empty()) return {};
  // The estimator wants a text that ends.
  platform::Secret text(std::min(password.size(), kMostBytes) + 1);
  std::copy_n(password.begin(), text.Size() - 1, text.Data());
  double bits = ZxcvbnMatch(text.Data(), nullptr, nullptr);
  const auto* grade =
      std::ranges::find_if(kGrades, [&](const auto& candidate) { return bits < candidate.bits; });
  int percent = static_cast<int>(std::clamp(bits / kBitsOfFullMeter, 0.0, 1.0) * 100);
  return {percent, grade->text};
}

}  // namespace tarnwick::options
