// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The account of one load: every message that the stores say they hold ends in exactly one of the
// counts of core::LoadCounts. Each message file announces a number; each entry that the reader
// visits is counted by how it ended; what a file announced and nobody visited is not reached, with
// the reasons in the event log. A file that yields more than it announced raises what was found.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tarnwick::oe {

// How reading one message ended, and for an unreadable one why.
enum class MessageEnd {
  kCopied,  // it stands in TempMessageFile, not yet judged
  kStored,
  kAlreadyStored,
  kRefused,
  kIgnored,
  kUnreadable,
  kStopped,  // the load was stopped over it; not visited
};
struct MessageEnding {
  MessageEnd end = MessageEnd::kUnreadable;
  std::string reason;
};

class LoadAccount {
 public:
  // Opens the account for these message files. Sets found.
  void Open(const std::vector<std::string>& files);
  // Books the rest of every file as not reached and logs it. Nothing is counted after it.
  void Close();
  bool IsOpen() const { return isOpen_; }

  // What to say about the messages of a file that are not visited. Set replaces, Add adds to it
  // once.
  void SetReason(const std::string& file, const std::string& reason);
  void AddReason(const std::string& file, const std::string& reason);

  void Count(const std::string& file, MessageEnd end);

  int64_t Visited() const { return visited_; }

 private:
  struct File {
    int64_t announced = 0;
    int64_t visited = 0;
    std::vector<std::string> reasons;
  };
  File& FileOf(const std::string& file);

  std::map<std::string, File> files_;
  int64_t visited_ = 0;
  bool isOpen_ = false;
};

// Number of messages that a message file says it holds, at most what its size can hold; 0 for a
// file that does not bear the mark of one.
int64_t AnnouncedMessages(const std::string& file);

namespace reason {
inline constexpr const char* kNotListed = "no folder of the folder list names this file";
inline constexpr const char* kBeyondIdentities = "its folder list has no identity of its own";
inline constexpr const char* kFolderRule = "drafts, deleted items and the outbox are not read";
inline constexpr const char* kStopped = "the load was stopped";
inline constexpr const char* kNoTree = "the file has no message tree";
inline constexpr const char* kThirdLevel =
    "messages below the second level of the tree are not read";
inline constexpr const char* kRootChildren =
    "messages behind the root's entries are not read where none come before them";
inline constexpr const char* kBadNode = "a node of the message tree is damaged";
inline constexpr const char* kEmptyEntry = "an entry of the message tree is empty";
inline constexpr const char* kFewer = "the message tree holds fewer messages than announced";
inline constexpr const char* kCannotRead = "the file can't be read";
}  // namespace reason

}  // namespace tarnwick::oe
