// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/scratch_letter.h"

#include <utility>

#include "core/run_state.h"

namespace tarnwick::intake {

namespace {

constexpr size_t kFewPieces = size_t{64} * 1024;

}  // namespace

void ScratchLetter::Restart() {
  file_.reset();
  held_.emplace();
}

void ScratchLetter::Add(std::string_view bytes) {
  if (held_ && held_->size() + bytes.size() > kMostHeld) {
    BeginFile();
    held_.reset();
  }
  if (held_) {
    // What outgrows a few pieces is an attachment, and moved to more room once.
    if (held_->size() > kFewPieces) held_->reserve(kMostHeld);
    *held_ += bytes;
  } else {
    file_->Write(bytes);
  }
}

// With what is held.
void ScratchLetter::BeginFile() {
  file_.emplace(core::State().TempMessageFile, platform::OutputFile::Replace::kInPlace);
  file_->Write(*held_);
}

RawMessage ScratchLetter::Finish() {
  if (file_) file_->Close();
  const std::string& path = core::State().TempMessageFile;
  return held_ ? RawMessage(path, std::move(*held_)) : RawMessage(path);
}

RawMessage ScratchLetter::FinishInFile() {
  if (!file_) BeginFile();
  return Finish();
}

}  // namespace tarnwick::intake
