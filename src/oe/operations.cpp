// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is done with a message that the reader has copied to TempMessageFile.
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/encoded_word.h"
#include "intake/header_parser.h"
#include "intake/raw_message.h"
#include "intake/store_message.h"
#include "oe/import.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

// The first FROM and the first SUBJECT line, as they stand.
struct FirstLines {
  std::string from;
  std::string subject;
};

FirstLines ReadFirstLines(const intake::RawMessage& raw) {
  FirstLines lines;
  bool hasFrom = false;
  bool hasSubject = false;
  platform::LineReader reader = intake::LinesOf(raw);
  std::string line;
  while (!(hasFrom && hasSubject) && reader.Next(line)) {
    size_t colon = line.find(':');
    if (colon == std::string::npos) continue;
    std::string name = platform::AsciiUpper(std::string_view(line).substr(0, colon));
    if (name == "FROM" && !hasFrom) {
      lines.from = line.substr(colon + 1);
      hasFrom = true;
    } else if (name == "SUBJECT" && !hasSubject) {
      lines.subject = core::CleanTrim(std::string_view(line).substr(colon + 1));
      hasSubject = true;
    }
  }
  return lines;
}

}  // namespace

SenderLines ReadSender(const intake::RawMessage& raw) {
  FirstLines lines = ReadFirstLines(raw);
  intake::AddressPair sender = intake::SplitAddress(core::CleanTrim(lines.from));
  intake::MixedText name;
  intake::Decode(sender.Name, name);
  return {platform::EnsureUtf8(lines.subject),
          {name.Finish(""), platform::EnsureUtf8(sender.Address)}};
}

void dbxFileMeAddress(const std::optional<SenderLines>& read) {
  core::GuardedRun("dbxFileMeAddress", [&] {
    SenderLines lines = read ? *read : ReadSender(core::State().TempMessageFile);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), lines.subject);
    const intake::AddressPair& sender = lines.sender;
    if (sender.Address == intake::kNoAddress) return;
    intake::dbSaveMeAddress(sender.Address, sender.Name, kApplication);
  });
}

void MsgToFiles() {
  core::GuardedRun("MsgToFiles", [&] {
    constexpr size_t kMaxName = 60;
    std::string subject = ReadFirstLines(core::State().TempMessageFile).subject;
    std::string name = platform::SafeFileName(platform::EnsureUtf8(subject));
    if (name.empty()) {
      DateTime now = platform::Now();
      name = "NoSubject" + std::to_string(now.Seconds() - now.DatePart().Seconds());
    }
    name = platform::FirstChars(name, kMaxName);
    const std::string& folder = core::State().EmailFileFolder;
    platform::RenameFile(core::State().TempMessageFile,
                         platform::UniquePath(folder, name + ".eml"));
  });
}

}  // namespace tarnwick::oe
