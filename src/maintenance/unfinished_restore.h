// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A restore that did not come to its end, because it failed or the program was killed. The
// repository's file then bears the number of the copy that the former repository is kept in, in the
// same folder: from the moment it takes the former one's place until the last row of the backup is
// in it. So the file is known for what it is wherever it is moved, until the person has the former
// repository back or has restored a backup.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "maintenance/result.h"

namespace tarnwick::maintenance {

// The copy of the former repository while the open one is left unfinished by a restore; "" when it
// is not. The copy may have been removed since.
std::string UnfinishedRestore();

// For whatever takes mail in or makes a backup: where the open repository is unfinished, says so
// as an error, with what can be done, and gives true.
bool RefuseUnfinished();

// For a start: clears away what a killed restore left before it changed anything; says that the
// repository is unfinished. AskAboutUnfinishedRestore offers to have the former one back at once.
void ReportUnfinishedRestore();
void AskAboutUnfinishedRestore();

// The copies in the open repository's folder, apart from that of an unfinished restore: no part of
// the program needs them any more.
std::vector<std::string> FormerCopies();

// Internal to the room.

// Copy number (from 1) in a folder.
std::string SafetyCopy(const std::string& folder, int64_t number);
int64_t FreeCopyNumber(const std::string& folder);
// Whether the file's name is that of such a copy: it is a whole repository, whatever it lacks.
bool IsSafetyCopy(const std::string& file);

// Puts the copy back in the place of the unfinished repository, and opens it. refreshList as for
// RestoreBackup.
Result HaveFormerBack(const std::string& copy, const std::function<void()>& refreshList);

}  // namespace tarnwick::maintenance
