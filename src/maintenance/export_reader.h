// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The messages of an export file, one at a time in the order of their identifiers. Internal to the
// room. The file is hostile: lists are cut to the capacities of MailMessage, texts and numbers are
// taken for whatever they are. Failures throw Error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "database/connection.h"
#include "database/recordset.h"
#include "intake/mail_message.h"

namespace tarnwick::maintenance {

struct ExportedMessage {
  int64_t id = 0;  // in the file
  intake::MailMessage message;
};

class ExportReader {
 public:
  explicit ExportReader(const std::string& file);

  int64_t Count();
  // nullopt behind the last one.
  std::optional<ExportedMessage> Next();
  // Writes a message's stored file, byte for byte; one without becomes an empty file.
  void WriteFile(int64_t id, const std::string& path);

 private:
  void ReadColumns(ExportedMessage& exported);
  std::string ReadProject(int64_t id);
  void ReadAttachments(ExportedMessage& exported);
  template <typename Pairs>
  int16_t ReadRecipients(const char* table, int64_t id, Pairs& pairs);

  jet::Connection connection_;
  jet::Recordset emails_;
  bool first_ = true;
  bool hasUnfinished_ = false;
};

}  // namespace tarnwick::maintenance
