// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/scratch_letter.h"

#include <utility>

#include "core/run_state.h"

namespace tarnwick::intake {

void ScratchLetter::Restart() {
  file_.reset();
  file_.emplace(core::State().TempMessageFile, platform::OutputFile::Replace::kInPlace);
  held_.emplace();
}

void ScratchLetter::Add(std::string_view bytes) {
  file_->Write(bytes);
  if (held_ && held_->size() + bytes.size() > kMostHeld) held_.reset();
  if (held_) *held_ += bytes;
}

RawMessage ScratchLetter::Finish() {
  file_->Close();
  const std::string& path = core::State().TempMessageFile;
  return held_ ? RawMessage(path, std::move(*held_)) : RawMessage(path);
}

}  // namespace tarnwick::intake
