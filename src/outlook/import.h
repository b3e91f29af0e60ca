// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One import from Outlook: the stores, their folders, and every mail item in them that is not
// stored yet. Sent mail is read first, so that the user's own addresses are known when the rest is
// judged.
//
// The load command clears the flags before a run and the cancel flag after it, keeps the account of
// the load and the commit group in which the messages are written. Every mail item is in the
// account; items of other kinds (contacts, appointments, reports) are only logged.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "intake/source.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// The source label of everything taken in here.
inline constexpr const char* kApplication = "Outlook";

// Outlook as a source of a load: the routines below, in their order.
std::unique_ptr<intake::Source> MakeSource(const intake::ReadingRules& rules = intake::kDesigned);
// The same of these stores, all of them, wherever they lie.
std::unique_ptr<intake::Source> MakeSource(std::vector<std::string> storeFiles,
                                           const intake::ReadingRules& rules = intake::kDesigned);

// Finds the stores of the profile; what it finds is kept for olImportOutlook. False when there is
// none.
bool olInitialize();
// Forgets it.
void olReset();

// Opens the default store, or every store, and tells the account of the load what they hold. False
// when they could not be opened. REQUIRES: olInitialize has run.
bool olAnnounce(bool everyStore, const intake::ReadingRules& rules = intake::kDesigned);
// The same over any provider, which must last until olImportOutlook is done.
bool olAnnounceFrom(Namespace& outlook, bool everyStore,
                    const intake::ReadingRules& rules = intake::kDesigned);

// Reads what was announced and, where the rules ask for it, what lies lost in the stores
// (rescue.h); true when it could be read. Says "Microsoft Outlook doesn't content an email." where
// there was no mail. What olInitialize found is forgotten.
bool olImportOutlook();

}  // namespace tarnwick::outlook
