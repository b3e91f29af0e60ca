// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A small but varied mail profile to try the program on: ten years of a family and its bookbindery,
// with what mail of those years brings along (charsets, encodings, attachments, broken dates). All
// persons are invented. The profile is written to a folder, and what was written can be asked for,
// so that a test can compare what was stored with it.
#pragma once

#include <string>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::samples {

struct SampleMessage {
  std::string folder;   // display name, the stored Folder
  std::string parent;   // full name
  bool isTaken = true;  // false: a draft, which a load leaves alone

  // What is stored of it, texts as UTF-8.
  std::string subject;
  std::string fromName;
  std::string fromAddress;
  std::string direction;
  std::vector<std::string> bodyLines;  // each stands in the stored body
  std::vector<std::string> attachments;

  DateTime date;          // of the store's index, UTC
  std::string messageId;  // of the store's index; mail written here has none
  std::string raw;        // the text, byte for byte
};

// In the order of the folders; the same at each call.
const std::vector<SampleMessage>& SampleMessages();

// Writes an NTUSER.DAT and one store below it. The folder is made when it is missing.
void WriteSampleProfile(const std::string& folder);

}  // namespace tarnwick::samples
