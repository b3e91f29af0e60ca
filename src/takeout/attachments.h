// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The files that came with a message, decoded from its stored file: MIME parts, uuencoded files in
// its text, attached messages (as .eml) and what those bring along. Nothing is ever opened or run
// here; what a message calls a file becomes a safe name.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "takeout/message_parts.h"

namespace tarnwick::takeout {

struct Attachment {
  std::string name;  // fit for a file, unlike the others' also without regard to case
  std::string type;  // media type, lower case, as declared
  uint64_t size = 0;
  bool isProgram = false;      // IsProgramName
  std::string contentId = {};  // by which the letter's HTML names a picture; often ""
  bool isOfMessage = false;    // a file of an attached message, which is in the list too
};

class MessageAttachments {
 public:
  // file: the message, byte for byte. Whatever is wrong with it, this comes to an end; where parts
  // may be missing, the last entry is the whole message as it stands.
  explicit MessageAttachments(std::string file);

  const std::vector<Attachment>& List() const { return list_; }
  uint64_t TotalSize() const;
  // REQUIRES: index < List().size().
  std::string Bytes(size_t index) const;

 private:
  struct Source {
    std::string_view body;
    std::string encoding;
    std::string bytes;  // of a file that stood in a text
    bool isDecoded = false;
  };
  void TakeLeaf(const MessagePart& leaf);
  void TakeInlineFiles(const MessagePart& leaf);
  void Add(Attachment attachment, Source source);

  std::string file_;
  MessageParts parts_;
  std::vector<Attachment> list_;
  std::vector<Source> sources_;
};

// Those of a message of the open repository; null when it has no stored file or on an error, which
// has been reported.
std::unique_ptr<MessageAttachments> OpenAttachments(int64_t id);

// Writes these attachments (by their places in the list) into a folder, under names that are free
// there, and gives their paths. What can't be saved is reported and ends the run; warns of programs
// in a box.
std::vector<std::string> SaveAttachments(const MessageAttachments& attachments,
                                         const std::vector<size_t>& which,
                                         const std::string& folder);
// The same of one, under a name of the person's choice, whose file is replaced when it is there.
bool SaveAttachmentAs(const MessageAttachments& attachments, size_t which, const std::string& path);

// A scratch file of an attachment, for another program that takes it over; "" on a failure, which
// is logged.
std::string AttachmentScratchFile(const MessageAttachments& attachments, size_t which);

// "12 bytes", "3.4 kB", "12 MB".
std::string SizeText(uint64_t bytes);

}  // namespace tarnwick::takeout
