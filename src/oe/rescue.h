// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Stores the messages of a file that nothing leads to (lost_mail.h), in the folder "Recovered from"
// and its folder's name, each with a note of how it was found and how much of it there is. A
// message that is stored already, under its key or with the same text, is not stored again; one
// whose text is gone is told of in the account of the load.
#pragma once

#include <string>

#include "oe/dbx_read.h"

namespace tarnwick::oe {

// folder: the one that the file belongs to. isCopy: the file is no folder's; all that it holds is
// taken. A file that holds nothing lost leaves nothing in the account.
void ReadLostMessages(const std::string& fileName, const FolderRecord& folder, bool isCopy,
                      const intake::ReadingRules& rules);

}  // namespace tarnwick::oe
