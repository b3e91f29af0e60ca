// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What tests set in place of the machine's time and user (clock.h). Private to the platform room.
#pragma once

#include "platform/clock.h"

namespace tarnwick::platform {

const ClockOverride& CurrentClockOverride();

}  // namespace tarnwick::platform
