// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The desktop's own plug-in sees to it.
#include "native_look.h"

namespace tarnwick::app {

void PrepareLook() {}

void ApplyLook(QApplication& /*application*/) {}

}  // namespace tarnwick::app
