// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a message file says it holds, and why what it holds may not be come to: the reasons that the
// account of a load (intake/load_account.h) gives.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::oe {

class ByteReader;

// Number of messages that a message file says it holds, at most what its size can hold; 0 for a
// file that does not bear the mark of one.
int64_t AnnouncedMessages(const std::string& file);
// The same of one that bears it; 0 for one without a whole header. Throws Error.
int64_t CountInHeader(ByteReader& file);

namespace reason {
inline constexpr const char* kNotListed = "no folder of the folder list names this file";
inline constexpr const char* kBeyondIdentities = "its folder list has no identity of its own";
inline constexpr const char* kFolderRule = "drafts, deleted items and the outbox are not read";
inline constexpr const char* kNoTree = "the file has no message tree";
inline constexpr const char* kThirdLevel =
    "messages below the second level of the tree are not read";
inline constexpr const char* kRootChildren =
    "messages behind the root's entries are not read where none come before them";
inline constexpr const char* kBadNode = "a node of the message tree is damaged";
inline constexpr const char* kEmptyEntry = "an entry of the message tree is empty";
inline constexpr const char* kCannotRead = "the file can't be read";
}  // namespace reason

}  // namespace tarnwick::oe
