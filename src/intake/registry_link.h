// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A registry file (NTUSER.DAT, user.reg) read by tarnwick-reader (reader_link.h), which is handed
// the file and answers for the keys and values that are asked for. Where they lead to on this
// machine, the program finds out.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "intake/letter_service.h"
#include "platform/registry.h"

namespace tarnwick::intake {

// As platform::ReadRegistryFile; nullptr where the program reads itself. Each call throws Error 75
// where the reader was lost over it.
std::unique_ptr<platform::RegistryKeys> OpenRegistryLink(const std::string& file,
                                                         platform::ProfileKind kind);

// The reader's end; opening: what OpenRegistryLink told it.
std::unique_ptr<LetterService> MakeRegistryService(std::string_view opening);

}  // namespace tarnwick::intake
