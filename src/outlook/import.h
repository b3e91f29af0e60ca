// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One import from Outlook: the stores, their folders, and every mail item in them that is not
// stored yet. Sent mail is read first, so that the user's own addresses are known when the rest is
// judged.
//
// The load command clears the flags and counts before a run and the cancel flag after it, and keeps
// the commit group in which the messages are written. Every mail item ends in one of the counts of
// core::LoadCounts; items of other kinds (contacts, appointments, reports) are only logged.
#pragma once

#include <string>
#include <vector>

#include "outlook/object_model.h"

namespace tarnwick::outlook {

// The source label of everything taken in here.
inline constexpr const char* kApplication = "Outlook";

// Finds the stores of the mail owner's profile; what it finds is kept for olImportOutlook. False
// when there is none.
bool olInitialize();
// What olInitialize found.
const std::vector<std::string>& olStoreFiles();
// Forgets it.
void olReset();

// Reads the default store, or every store; true when they could be read. Says "Microsoft Outlook
// doesn't content an email." when it finds no mail. REQUIRES: olInitialize has run.
bool olImportOutlook(bool everyStore);

// The same over any provider.
bool olImportFrom(Namespace& outlook, bool everyStore);

}  // namespace tarnwick::outlook
