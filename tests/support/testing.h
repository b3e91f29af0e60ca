// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What nearly every test begins with.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "support/temp_folder.h"

namespace tarnwick {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

using Texts = std::vector<std::string>;

// The time that the clock stands at, until ClockOverride {} lets it go on.
inline void SetNow(const DateTime& now) {
  platform::ClockOverride clock;
  clock.now = now;
  platform::SetClockOverride(clock);
}

// A row of a table of tests.
struct Case {
  const char* what;
  std::string given;
  std::string expected;
};

}  // namespace tarnwick
