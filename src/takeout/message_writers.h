// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The forms in which messages leave the repository. A writer saves one message after the other;
// what bears its name in the person's folder is whole, and nothing that was there is replaced.
// Failures throw Error. Internal to the room.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/message_state.h"
#include "platform/date_time.h"

namespace tarnwick::takeout {

// The numbers are stored: do not reorder.
enum class SaveFormat { kEml, kMbox, kMaildir, kMsg };

// What a message's place and name are made of.
struct MessageLabel {
  int64_t id = 0;
  std::optional<DateTime> time;  // received, local
  std::string correspondent;
  std::string sender;  // address; may be anything
  std::string subject;
  intake::MessageState state;
  std::vector<std::string> folder;  // names of the folders it lay in, from the top; may be anything
};

class MessageWriter {
 public:
  virtual ~MessageWriter() = default;

  virtual void Save(const MessageLabel& label, std::string_view file) = 0;
  // Completes what is not complete yet, as far as it is whole. REQUIRES: called once, at the end,
  // also after a Save that failed.
  virtual void Finish() {}
  // How many messages are in the person's folder for good. Of a mailbox file none is before it is
  // complete.
  int64_t Saved() const { return saved_; }

 protected:
  int64_t saved_ = 0;
};

// folders: a folder or mailbox for each of the messages' folders, in place of one for all. Of
// mailbox files only one is written at a time: the messages should come folder by folder.
std::unique_ptr<MessageWriter> MakeWriter(SaveFormat format, const std::string& folder,
                                          bool folders);

// The names of a message's folders as names of real ones; "Mail" where it has none.
std::vector<std::string> SafeFolderPath(const MessageLabel& label);

}  // namespace tarnwick::takeout
