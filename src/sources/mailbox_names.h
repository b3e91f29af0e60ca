// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the names of files and folders tell of the mailboxes in them. Folders are texts with their
// separator at the end.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::sources {

std::string WithoutSeparator(const std::string& folder);
std::string LastName(const std::string& folder);     // "Mail" of "/home/ann/Mail/"; "" at the top
std::string FolderAbove(const std::string& folder);  // "/home/ann/" of that

// The mailbox whose subfolders a folder holds, by its name: "Inbox" of "Inbox.sbd"; "" for others.
std::string NameOfHolder(const std::string& name);

// "Work.2003" of a Maildir's subfolder, cut at its points; names are undone that a mail server
// wrote in its own form of UTF-7 (RFC 3501).
std::vector<std::string> PartsOf(const std::string& name);
std::string FromServerName(const std::string& name);

bool IsMaildir(const std::string& folder);

// The program that keeps its letters as files in a folder, by the way to it.
std::string ProgramOfFolder(const std::string& folder);
// The "NAME.mbox" folder above a folder of Apple's letters, with its separator; "" for none.
std::string AppleMailboxOf(const std::string& folder);

// Paths of the letter files in a folder; of a file itself, that one.
std::vector<std::string> LetterPathsIn(const std::string& path);

}  // namespace tarnwick::sources
