// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The text of a message on its way into TempMessageFile; a short one is held in memory besides, so
// that whoever stores it need not read the file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "intake/raw_message.h"
#include "platform/files.h"

namespace tarnwick::intake {

class ScratchLetter {
 public:
  // Throws Error where the file can't be written, as Restart and Finish do.
  ScratchLetter() { Restart(); }

  void Add(std::string_view bytes);
  // What was added is forgotten: the text begins anew.
  void Restart();
  // nullopt of a long one.
  const std::optional<std::string>& Held() const { return held_; }
  // The message, all of which stands in the file now.
  RawMessage Finish();

 private:
  std::optional<platform::OutputFile> file_;
  std::optional<std::string> held_;
};

}  // namespace tarnwick::intake
