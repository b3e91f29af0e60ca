// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/load_account.h"

#include <algorithm>

#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "platform/error.h"
#include "platform/registry.h"

namespace tarnwick::oe {

namespace {

int64_t& CounterOf(core::LoadCounts& counts, MessageEnd end) {
  switch (end) {
    case MessageEnd::kStored:
      return counts.stored;
    case MessageEnd::kAlreadyStored:
      return counts.alreadyStored;
    case MessageEnd::kRefused:
      return counts.refused;
    case MessageEnd::kIgnored:
      return counts.ignored;
    case MessageEnd::kStopped:
      return counts.notReached;
    case MessageEnd::kCopied:
    case MessageEnd::kUnreadable:
      break;
  }
  return counts.unreadable;
}

}  // namespace

int64_t AnnouncedMessages(const std::string& file) {
  if (platform::ReadDbxContent(file) != platform::DbxContent::kMessages) return 0;
  try {
    ByteReader reader(file);
    std::string_view header = reader.Read(0, kHeaderSize);
    if (header.size() < kHeaderSize) return 0;
    uint64_t most = reader.Size() / (kEntrySize + kMinInfoSize);
    return static_cast<int64_t>(std::min<uint64_t>(Get32(header, kItemCountPlace), most));
  } catch (const Error&) {
    return 0;
  }
}

LoadAccount::File& LoadAccount::FileOf(const std::string& file) {
  return files_[file];
}

void LoadAccount::Open(const std::vector<std::string>& files) {
  *this = LoadAccount();
  isOpen_ = true;
  for (const std::string& path : files) {
    File& file = FileOf(path);
    if (file.announced > 0) continue;
    file.announced = AnnouncedMessages(path);
    file.reasons = {reason::kNotListed};
    core::State().Counts.found += file.announced;
  }
}

void LoadAccount::SetReason(const std::string& file, const std::string& reason) {
  if (!isOpen_) return;
  FileOf(file).reasons.clear();
  if (!reason.empty()) FileOf(file).reasons.push_back(reason);
}

void LoadAccount::AddReason(const std::string& file, const std::string& reason) {
  if (!isOpen_) return;
  std::vector<std::string>& reasons = FileOf(file).reasons;
  if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) reasons.push_back(reason);
}

void LoadAccount::Count(const std::string& file, MessageEnd end) {
  if (!isOpen_) return;
  if (end == MessageEnd::kStopped) {
    AddReason(file, reason::kStopped);
    return;
  }
  File& account = FileOf(file);
  ++account.visited;
  ++visited_;
  if (account.visited > account.announced) ++core::State().Counts.found;
  ++CounterOf(core::State().Counts, end);
}

void LoadAccount::Close() {
  if (!isOpen_) return;
  for (const auto& [path, file] : files_) {
    int64_t missing = file.announced - file.visited;
    if (missing <= 0) continue;
    core::State().Counts.notReached += missing;
    std::string reasons;
    for (const std::string& text : file.reasons) reasons += (reasons.empty() ? "" : "; ") + text;
    core::WriteLog("Not reached = " + std::to_string(missing) + "\r\n" + core::OneLogLine(path) +
                   "\r\n" + (reasons.empty() ? reason::kFewer : core::OneLogLine(reasons)));
  }
  isOpen_ = false;
}

}  // namespace tarnwick::oe
