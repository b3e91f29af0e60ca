// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages that Outlook saved as files of their own, *.msg ([MS-OXMSG]).
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "intake/header_parser.h"
#include "intake/prepared_message.h"
#include "intake/text_reader.h"
#include "outlook/compound_file.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// The item of such a file; it has no EntryID. What of the file is damaged is in its Damage. Throws
// Error 75 for a file that is none.
std::unique_ptr<PropertyItem> OpenMsgFile(const intake::RawMessage& file);

// Reads them, through tarnwick-reader or, where there is none, here.
class MsgFileReader {
 public:
  // Writes the message to TempMessageFile as an Internet message and gives its record, without a
  // key. isSent: its folder is one of sent mail. Throws Error 75 also for an item that is no mail.
  intake::PreparedMessage Read(const std::string& path, const intake::SourceDescriptor& place,
                               bool isSent, const intake::ReadingRules& rules = intake::kDesigned);

 private:
  intake::SingleReader reader_{intake::Conversation::kMsgFile};
  intake::TextReader texts_;
};

// One that is made when the first file is read.
std::function<intake::PreparedMessage(const std::string& path,
                                      const intake::SourceDescriptor& place, bool isSent,
                                      const intake::ReadingRules& rules)>
ReadsMsgFiles();

// The reader's end.
std::unique_ptr<intake::LetterService> MakeMsgFileService();

}  // namespace tarnwick::outlook
