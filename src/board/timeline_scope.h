// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The list's filter as the timeline counts by it.
#pragma once

#include "board/list_filter.h"
#include "timeline/query.h"

namespace tarnwick::board {

timeline::Scope TimelineScope(const ListFilter& filter);

}  // namespace tarnwick::board
