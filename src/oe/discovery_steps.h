// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the designed discovery and the search for every store share. Private to the room.
#pragma once

#include <string>
#include <vector>

#include "oe/discovery.h"
#include "platform/registry.h"

namespace tarnwick::oe {

// The registry of the mail's owner, opened at its first use in a run. Throws Error for one that
// can't be read.
platform::Registry& OwnersRegistry();

// What a person calls an identity.
std::string NameOf(const std::string& identity);

// The *.dbx files behind the prefix that a store folder is.
std::vector<std::string> StoreFileNames(const std::string& storeFolder);

// The repository's list of the users whose mail it holds.
void AddUserToList(const std::string& user);

// Fills in the full names, and logs the folders.
void NameFolders(std::vector<FolderRow>& folders);

// Tells the person of stores that are not there, each a line, and of what may not be read.
void TellWhatIsNotThere(const std::vector<std::string>& missing);

}  // namespace tarnwick::oe
