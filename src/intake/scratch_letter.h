// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The text of a message on its way to where it is stored: a short one stays in memory, what becomes
// longer goes to TempMessageFile.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "intake/raw_message.h"
#include "platform/files.h"

namespace tarnwick::intake {

class ScratchLetter {
 public:
  // Throws Error where the file can't be written, as Finish does.
  void Add(std::string_view bytes);
  // What was added is forgotten: the text begins anew.
  void Restart();
  // nullopt of a long one.
  const std::optional<std::string>& Held() const { return held_; }
  RawMessage Finish();
  // The same for whoever looks for it in the file.
  RawMessage FinishInFile();

 private:
  void BeginFile();

  std::optional<platform::OutputFile> file_;
  std::optional<std::string> held_ = std::string();
};

}  // namespace tarnwick::intake
