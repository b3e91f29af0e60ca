// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/outlook_express4.h"

#include <algorithm>

#include "platform/error.h"

namespace tarnwick::sources {

namespace {

// Section "Letters".
constexpr std::string_view kFileMark = "JMF6";
constexpr uint64_t kHeaderSize = 84;
constexpr size_t kCountPlace = 8;
constexpr size_t kLetterHead = 16;
// The mark of a letter; descriptions differ in the order of its bytes.
constexpr std::string_view kLetterMarks[] = {std::string_view("\x00\x7F\x00\x7F", 4),
                                             std::string_view("\x7F\x00\x7F\x00", 4)};

// Section "Index".
constexpr std::string_view kIndexMark = "JMF9";
constexpr uint32_t kIndexKind = 0x00010004;
constexpr size_t kKindPlace = 4;
constexpr uint64_t kFirstItems[] = {80, 64};
constexpr size_t kItemHead = 28;
constexpr size_t kOwnPlace = 12;
constexpr size_t kItemSize = 16;
constexpr size_t kLetterPlace = 20;
constexpr uint32_t kDeleted = 1;
constexpr uint32_t kUnread = 2;

bool IsMark(std::string_view bytes) {
  return std::any_of(std::begin(kLetterMarks), std::end(kLetterMarks),
                     [&](std::string_view mark) { return bytes.starts_with(mark); });
}

// "Inbox.mbx" and "Inbox.idx" lie side by side, in whatever case.
std::string IndexOf(const std::string& path) {
  std::string folder = platform::FolderOf(path);
  std::string name = platform::FileNameOf(path);
  name = name.substr(0, name.rfind('.')) + ".idx";
  return platform::FindIgnoringCase(folder, name).value_or("");
}

}  // namespace

bool IsOutlookExpress4(std::string_view head) {
  return head.starts_with(kFileMark);
}

int64_t CountOutlookExpress4(const intake::RawMessage& raw) {
  FileWindow file(raw, kHeaderSize);
  std::string_view head = file.Read(0, kHeaderSize);
  if (!IsOutlookExpress4(head) || head.size() < kHeaderSize) return 0;
  uint64_t most = (file.Size() - kHeaderSize) / kLetterHead;
  return static_cast<int64_t>(std::min<uint64_t>(Get32(head, kCountPlace), most));
}

std::string IndexBeside(const std::string& path, size_t most) {
  try {
    std::string index = IndexOf(path);
    if (index.empty()) return {};
    platform::InputFile file(index);
    std::string bytes(static_cast<size_t>(std::min<uint64_t>(most, file.Size())), '\0');
    bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
    return bytes;
  } catch (const Error&) {
    return {};
  }
}

OutlookExpress4Reader::OutlookExpress4Reader(const intake::RawMessage& file,
                                             const std::string& index)
    : file_(file), states_(index), next_(kHeaderSize) {
  if (!IsOutlookExpress4(file_.Read(0, kFileMark.size()))) {
    throw Error(ErrorNumber::kPathAccess,
                "the file lacks the mark of Outlook Express 4: " + file.File());
  }
}

intake::MessageState OutlookExpress4States::StateAt(LetterSpan span) const {
  intake::MessageState state;
  auto flags = flags_.find(static_cast<uint32_t>(span.begin - kLetterHead));
  if (flags == flags_.end()) return state;
  state.isKnown = true;
  state.isDeleted = (flags->second & kDeleted) != 0;
  state.isRead = (flags->second & kUnread) == 0;
  return state;
}

OutlookExpress4States::OutlookExpress4States(const std::string& index) {
  const intake::RawMessage bytes({}, index);
  FileWindow file(bytes);
  std::string_view head = file.Read(0, kKindPlace + 4);
  if (!head.starts_with(kIndexMark) || Get32(head, kKindPlace) != kIndexKind) return;
  for (uint64_t place : kFirstItems) {
    for (;;) {
      std::string_view item = file.Read(place, kItemHead);
      // An item tells its own place.
      if (item.size() < kItemHead || Get32(item, kOwnPlace) != place) break;
      flags_[Get32(item, kLetterPlace)] = Get32(item, 0);
      uint32_t size = Get32(item, kItemSize);
      if (size < kItemHead) break;
      place += size;
    }
    if (!flags_.empty()) return;
  }
}

// Goes on from a damaged letter to the next mark.
bool OutlookExpress4Reader::FindMark() {
  damage_ = "the file is damaged: letters may be missing";
  for (uint64_t place = next_ + 1; place < file_.Size();) {
    std::string_view bytes = file_.ReadSome(place);
    size_t found = std::string_view::npos;
    for (std::string_view mark : kLetterMarks) found = std::min(found, bytes.find(mark));
    if (found != std::string_view::npos) {
      next_ = place + found;
      return true;
    }
    if (bytes.size() < 4) break;
    place += bytes.size() - 3;
    if (place + 3 >= file_.Size()) break;
  }
  next_ = file_.Size();
  return false;
}

bool OutlookExpress4Reader::Next(LetterEntry& letter) {
  while (next_ < file_.Size()) {
    std::string_view head = file_.Read(next_, kLetterHead);
    uint32_t number = Get32(head, 4);
    uint64_t size = Get32(head, 8);
    uint64_t textSize = Get32(head, 12);
    bool isSound = head.size() == kLetterHead && IsMark(head) && size >= kLetterHead + textSize &&
                   size <= file_.Size() - next_;
    if (!isSound) {
      if (head.size() < kLetterHead || !FindMark()) break;
      continue;
    }
    letter.name = "message " + std::to_string(number);
    begin_ = next_ + kLetterHead;
    end_ = begin_ + textSize;
    letter.state = states_.StateAt(Span());
    if (textSize == 0) letter.fault = "it is empty";
    if (textSize > kMostLetterBytes) letter.fault = kTooLong;
    next_ += size;
    return true;
  }
  return false;
}

void OutlookExpress4Reader::Copy(const Sink& sink) {
  file_.Copy(begin_, end_, sink);
}

}  // namespace tarnwick::sources
