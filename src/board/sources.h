// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The list of all that a load can read.
#pragma once

#include <memory>
#include <vector>

#include "intake/source.h"
#include "options/options.h"

namespace tarnwick::board {

using Sources = std::vector<std::unique_ptr<intake::Source>>;

// In the order in which they are read; a new source is a line here.
Sources EverySource(const intake::ReadingRules& rules = intake::kDesigned);

// The same for the options window.
std::vector<options::Mailer> Mailers();

}  // namespace tarnwick::board
