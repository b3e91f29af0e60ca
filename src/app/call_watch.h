// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The window's loop hears a second start.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "platform/raise_socket.h"

namespace tarnwick::app {

// heard is called for it from the loop, as long as the result lives, which is before calls goes.
std::unique_ptr<QObject> WatchCalls(const platform::RaiseSocket& calls,
                                    std::function<void()> heard);

}  // namespace tarnwick::app
