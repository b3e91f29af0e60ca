// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the parsing of a whole raw message, up to the storing step, in both readings.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/run_state.h"
#include "intake/header_parser.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/html.h"
#include "support/temp_folder.h"

namespace {

void Demand(const std::string& text) {
  if (!tarnwick::platform::IsValidUtf8(text)) std::abort();
}

void ParseAs(const std::string& path, const tarnwick::intake::ReadingRules& rules) {
  using namespace tarnwick;
  intake::MailMessage message;
  intake::ParseMessageFile(path, {"Inbox", "", ""}, nullptr, message, rules);
  for (const std::string* text :
       {&message.Subject, &message.Body, &message.HTMLBody, &message.FromName, &message.FromAddress,
        &message.MessageKey, &message.Charset, &message.TimeShift}) {
    Demand(*text);
  }
  for (const std::string& name : message.Attachments) Demand(name);
  for (const auto& pair : message.To) Demand(pair.Name + pair.Address);
  for (const auto& pair : message.Cc) Demand(pair.Name + pair.Address);
  Demand(platform::HtmlToPlainText(message.HTMLBody));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarnwick;
  static testing::TempFolder folder;
  // No scratch folder: inline files are found but not written.
  core::State().LogEvents = false;
  std::string path = folder.File("message");
  platform::WriteFile(path, {reinterpret_cast<const char*>(data), size});
  ParseAs(path, intake::kDesigned);
  ParseAs(path, intake::kComplete);
  return 0;
}
