// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_log.h"

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "platform/shell.h"

namespace tarnwick::board {

namespace {

constexpr size_t kMostLoads = 20;
constexpr size_t kMostBytes = size_t{1024} * 1024;
constexpr size_t kReserved = size_t{64} * 1024;
constexpr std::string_view kEnd = "\r\n\r\n";  // of an entry; none holds an empty line

std::string NewFile() {
  return LoadLogFile() + ".new";
}

// The first entries of a text, whole ones.
std::string FirstEntries(const std::string& text, size_t mostBytes) {
  size_t end = 0;
  for (size_t i = 0; i < kMostLoads; ++i) {
    size_t next = text.find(kEnd, end);
    if (next == std::string::npos || next + kEnd.size() > mostBytes) break;
    end = next + kEnd.size();
  }
  return text.substr(0, end);
}

// Over what was reserved, then in the place of the former file: that one is whole until then.
bool Replace(const std::string& text) {
  try {
    platform::OutputFile file(NewFile(), platform::OutputFile::Replace::kInPlace);
    file.Write(text);
    file.Close();
    platform::RenameFile(NewFile(), LoadLogFile());
    return true;
  } catch (const Error&) {
    return false;
  }
}

}  // namespace

std::string LoadLogFile() {
  return core::State().LogFolder + "Loads.log";
}

void ReserveLoadLog() {
  try {
    platform::WriteFile(NewFile(), std::string(kReserved, ' '));
  } catch (const Error&) {
    // It is tried again when there is something to write.
  }
}

void KeepInLoadLog(const std::string& account) {
  std::string entry = platform::FormatDate(platform::Now(), "General Date") + "\r\n";
  entry += account.substr(0, kMostBytes / 2);
  entry += kEnd;
  std::string former;
  try {
    if (platform::FileExists(LoadLogFile())) {
      former = platform::ReadFile(LoadLogFile(), 2 * kMostBytes);
    }
  } catch (const Error&) {
    // The newest account is the one that is wanted.
  }
  if (Replace(FirstEntries(entry + former, kMostBytes))) return;
  if (Replace(FirstEntries(entry + former, kReserved))) return;
  Replace(entry.substr(0, kReserved));
}

void ShowLoadLog() {
  core::GuardedRun("mnLastLoad", [] {
    if (!platform::FileExists(LoadLogFile())) {
      core::ShowMessage("Nothing has been loaded yet.");
    } else if (platform::OpenWithShell(LoadLogFile(), core::YieldEvents) !=
               platform::ShellResult::kOpened) {
      core::ShowMessage("The desktop has no program that opens this file:\r\n" + LoadLogFile());
    }
  });
}

}  // namespace tarnwick::board
