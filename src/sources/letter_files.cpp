// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/letter_files.h"

#include <algorithm>
#include <charconv>

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/folder_search.h"
#include "platform/utf8.h"
#include "sources/file_window.h"

namespace tarnwick::sources {

namespace {

constexpr std::string_view kRecordMark = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

// The number that a line begins with; -1 for none.
int64_t NumberOf(std::string_view text) {
  int64_t number = -1;
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  return code == std::errc() && end != text.data() ? number : -1;
}

// The flags in the property list behind an Apple letter.
intake::MessageState StateOfProperties(std::string_view list) {
  intake::MessageState state;
  size_t key = list.find("<key>flags</key>");
  if (key == std::string_view::npos) return state;
  constexpr std::string_view kNumber = "<integer>";
  size_t number = list.find(kNumber, key);
  if (number == std::string_view::npos) return state;
  int64_t flags = NumberOf(list.substr(number + kNumber.size()));
  if (flags < 0) return state;
  state.isKnown = true;
  state.isRead = (flags & 1) != 0;
  state.isDeleted = (flags & 2) != 0;
  state.isAnswered = (flags & 4) != 0;
  state.isFlagged = (flags & 16) != 0;
  state.isDraft = (flags & 64) != 0;
  state.isForwarded = (flags & 256) != 0;
  return state;
}

// Where the letter lies in an Apple file.
void LookIntoApples(FileWindow& file, LetterFrame& frame) {
  constexpr size_t kMostOfNumber = 32;
  constexpr size_t kMostOfList = size_t{64} * 1024;
  std::string_view head = file.Read(0, kMostOfNumber);
  size_t line = head.find('\n');
  int64_t length = NumberOf(head);
  // Without a sound length the file is taken as it is.
  if (line == std::string_view::npos || length < 0) return;
  frame.span.begin = line + 1;
  if (static_cast<uint64_t>(length) > file.Size() - frame.span.begin) return;
  frame.span.end = frame.span.begin + static_cast<uint64_t>(length);
  frame.state = StateOfProperties(file.Read(frame.span.end, kMostOfList));
}

}  // namespace

LetterFileKind KindOfLetterFile(std::string_view name) {
  size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return LetterFileKind::kNone;
  std::string extension = platform::AsciiLower(name.substr(dot));
  if (extension == ".eml") return LetterFileKind::kText;
  if (extension == ".emlx") return LetterFileKind::kApple;
  if (extension == ".msg") return LetterFileKind::kRecord;
  return LetterFileKind::kNone;
}

std::vector<std::string> LetterFilesIn(const std::vector<std::string>& files) {
  std::vector<std::string> letters;
  for (const std::string& name : files) {
    if (KindOfLetterFile(name) != LetterFileKind::kNone) letters.push_back(name);
  }
  return letters;
}

LetterFrame FrameOf(FileWindow& file, LetterFileKind kind) {
  LetterFrame frame;
  frame.span = {0, file.Size()};
  if (kind == LetterFileKind::kApple) LookIntoApples(file, frame);
  // Other programs gave that name to plain text.
  frame.isRecord =
      kind == LetterFileKind::kRecord && file.Read(0, kRecordMark.size()) == kRecordMark;
  uint64_t size = frame.span.end - frame.span.begin;
  if (size == 0) frame.fault = "the file is empty";
  if (size > kMostLetterBytes) frame.fault = kTooLong;
  return frame;
}

bool LetterFiles::Next(LetterEntry& letter) {
  if (next_ == paths_.size()) return false;
  ++next_;
  letter.name = platform::FileNameOf(paths_[next_ - 1]);
  try {
    Look(letter);
  } catch (const Error& error) {
    letter.fault = error.Description();
  }
  return true;
}

void LetterFiles::Look(LetterEntry& letter) {
  const std::string& path = paths_[next_ - 1];
  LetterFileKind kind = stateOf_ ? LetterFileKind::kText : KindOfLetterFile(letter.name);
  if (isWhole_ && kind == LetterFileKind::kApple) kind = LetterFileKind::kText;
  file_ = std::make_unique<FileWindow>(path, size_t{64} * 1024);
  LetterFrame frame = FrameOf(*file_, kind);
  GoTo(frame.span);
  letter.state = stateOf_ ? stateOf_(path) : frame.state;
  if (frame.isRecord) letter.recordFile = path;
  letter.fault = std::move(frame.fault);
}

void LetterFiles::Copy(const Sink& sink) {
  file_->Copy(begin_, end_, sink);
}

std::vector<std::string> MaildirFiles(const std::string& folder) {
  std::vector<std::string> paths;
  for (const char* part : {"cur", "new"}) {
    std::string path = platform::WithSeparator(folder) + platform::WithSeparator(part);
    auto content = platform::ListFolder(path);
    if (!content) continue;
    for (const std::string& name : content->files) {
      if (name[0] != '.') paths.push_back(path + name);
    }
  }
  return paths;
}

intake::MessageState StateInMaildir(const std::string& path) {
  intake::MessageState state = StateOfMaildirName(platform::FileNameOf(path));
  // What lies there no program has shown yet.
  if (platform::FolderOf(path).ends_with(platform::WithSeparator("new"))) state.isKnown = true;
  return state;
}

intake::MessageState StateOfMaildirName(std::string_view name) {
  intake::MessageState state;
  // Where ":" can't stand in a name, other marks do; the last is what shared disks show of it.
  constexpr std::string_view kMarks[] = {":", ";", "!", "-", "\xEF\x80\xBA"};
  size_t info = name.rfind("2,");
  if (info == std::string_view::npos) return state;
  std::string_view front = name.substr(0, info);
  if (std::none_of(std::begin(kMarks), std::end(kMarks),
                   [&](std::string_view mark) { return front.ends_with(mark); })) {
    return state;
  }
  state.isKnown = true;
  for (char c : name.substr(info + 2)) {
    state.isRead = state.isRead || c == 'S';
    state.isAnswered = state.isAnswered || c == 'R';
    state.isForwarded = state.isForwarded || c == 'P';
    state.isFlagged = state.isFlagged || c == 'F';
    state.isDraft = state.isDraft || c == 'D';
    state.isDeleted = state.isDeleted || c == 'T';
  }
  return state;
}

int YearOfMaildirName(std::string_view name) {
  constexpr int64_t kEarliest = 315'532'800;  // 1980
  constexpr int64_t kLatest = 4'102'444'800;  // 2100
  int64_t seconds = NumberOf(name.substr(0, name.find('.')));
  if (seconds < kEarliest || seconds > kLatest) return 0;
  return platform::LocalFromUnix(seconds).ToCivil().year;
}

}  // namespace tarnwick::sources
