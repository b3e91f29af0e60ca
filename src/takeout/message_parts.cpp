// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/message_parts.h"

#include <algorithm>

#include "core/text.h"
#include "intake/line_cursor.h"
#include "intake/transfer_decoding.h"
#include "platform/charset.h"

namespace tarnwick::takeout {

namespace {

constexpr int kDeepest = 40;
constexpr size_t kMostLeaves = 1000;
constexpr size_t kLongestBoundary = 300;

// The line at the text's beginning, without its end, which goes too.
std::string_view TakeLine(std::string_view& text) {
  size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string_view WithoutEndBlanks(std::string_view line) {
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
  return line;
}

// The headers of a message or part. text becomes what follows them.
class Headers {
 public:
  explicit Headers(std::string_view& text) {
    // The line with which a message begins in a mail folder of some programs.
    if (core::BeginsWith(text, "From ")) TakeLine(text);
    while (!text.empty()) {
      std::string_view rest = text;
      std::string_view line = TakeLine(rest);
      // Without an empty line the text begins with the first line that is no header.
      if (!line.empty() && !intake::LooksLikeHeader(line)) break;
      text = rest;
      if (line.empty()) break;
      if (intake::IsFolded(line)) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        header_ += ' ';
      } else {
        Close();
      }
      header_ += line;
    }
    Close();
  }

  const intake::PartDescription& Content() const { return content_; }
  const std::string& Subject() const { return subject_; }
  const std::string& ContentId() const { return contentId_; }

 private:
  void Close() {
    constexpr std::string_view kSubject = "subject:";
    constexpr std::string_view kContentId = "content-id:";
    if (subject_.empty() && platform::AsciiLower(header_.substr(0, kSubject.size())) == kSubject) {
      subject_ = core::CleanTrim(std::string_view(header_).substr(kSubject.size()));
    } else if (platform::AsciiLower(header_.substr(0, kContentId.size())) == kContentId) {
      contentId_ = core::Unquote(core::CleanTrim(header_.substr(kContentId.size())));
    } else {
      intake::ReadContentHeader(header_, content_);
    }
    header_.clear();
  }

  std::string header_;
  intake::PartDescription content_;
  std::string subject_;
  std::string contentId_;
};

enum class Mark { kNone, kBegins, kCloses };

// What a line means to the container whose parts this boundary separates.
Mark MarkOf(std::string_view line, std::string_view boundary) {
  if (!core::BeginsWith(line, "--") || line.substr(2, boundary.size()) != boundary) {
    return Mark::kNone;
  }
  line = WithoutEndBlanks(line.substr(2 + boundary.size()));
  return line.empty() ? Mark::kBegins : line == "--" ? Mark::kCloses : Mark::kNone;
}

// The texts between the boundary's lines, each without the line end before the next.
std::vector<std::string_view> Split(std::string_view body, std::string_view boundary) {
  std::vector<std::string_view> parts;
  const char* begin = nullptr;  // of the part that is open
  auto close = [&](const char* end) {
    if (begin == nullptr || parts.size() > kMostLeaves) return;
    if (end > begin && end[-1] == '\n') --end;
    if (end > begin && end[-1] == '\r') --end;
    parts.emplace_back(begin, static_cast<size_t>(end - begin));
  };
  std::string_view rest = body;
  while (!rest.empty()) {
    const char* lineBegin = rest.data();
    bool mayBe = rest[0] == '-';
    std::string_view line = TakeLine(rest);
    Mark mark = mayBe ? MarkOf(line, boundary) : Mark::kNone;
    if (mark == Mark::kNone) continue;
    close(lineBegin);
    begin = mark == Mark::kBegins ? rest.data() : nullptr;
  }
  // Without a closing line the last part goes to the end.
  if (begin != nullptr && parts.size() <= kMostLeaves) {
    parts.emplace_back(begin, static_cast<size_t>(body.data() + body.size() - begin));
  }
  return parts;
}

// The boundary that a container seems to use: of the first line with "--" before a content header.
std::string_view GuessBoundary(std::string_view body) {
  while (!body.empty()) {
    std::string_view line = TakeLine(body);
    if (line.size() < 3 || line.size() > kLongestBoundary || !core::BeginsWith(line, "--"))
      continue;
    if (intake::IsContentHeader(body.substr(0, body.find('\n')))) {
      return WithoutEndBlanks(line.substr(2));
    }
  }
  return {};
}

}  // namespace

MessageParts::MessageParts(std::string_view message) {
  ReadPart(message, 0, false);
}

void MessageParts::ReadPart(std::string_view text, int depth, bool isDigest) {
  if (leaves_.size() >= kMostLeaves) {
    isDamaged_ = true;
    return;
  }
  Headers headers(text);
  MessagePart part;
  part.content = headers.Content();
  part.contentId = headers.ContentId();
  part.body = text;
  part.isMessage =
      part.content.isMessage || (isDigest && part.content.type == intake::PartKind::kUndeclared);
  if (charset_.empty() && !part.content.mediaType.compare(0, 4, "text")) {
    charset_ = part.content.charset;
  }
  bool isContainer = part.content.type == intake::PartKind::kContainer;
  bool mayGoDeeper = depth < kDeepest;
  if (!mayGoDeeper && (isContainer || part.isMessage)) isDamaged_ = true;
  if (isContainer) {
    if (mayGoDeeper) ReadContainer(part, depth);
    return;
  }
  if (!part.isMessage) {
    AddLeaf(std::move(part));
    return;
  }
  std::string_view inner = part.body;
  if (intake::TransferKindOf(part.content.encoding) != intake::TransferKind::kPlain) {
    inner = decoded_.emplace_back(intake::DecodeFile(inner, part.content.encoding));
  }
  std::string_view behind = inner;
  part.subject = Headers(behind).Subject();
  AddLeaf(std::move(part));
  ++insideMessages_;
  if (mayGoDeeper) ReadPart(inner, depth + 1, false);
  --insideMessages_;
}

void MessageParts::ReadContainer(const MessagePart& part, int depth) {
  std::vector<std::string_view> parts;
  if (!part.content.boundary.empty()) parts = Split(part.body, part.content.boundary);
  if (parts.empty()) {
    std::string_view guess = GuessBoundary(part.body);
    if (!guess.empty()) parts = Split(part.body, guess);
  }
  if (parts.empty()) {
    // What it holds is at least text.
    isDamaged_ = true;
    MessagePart text;
    text.body = part.body;
    AddLeaf(std::move(text));
    return;
  }
  bool isDigest = core::BeginsWith(part.content.mediaType, "multipart/digest");
  for (std::string_view inner : parts) ReadPart(inner, depth + 1, isDigest);
}

void MessageParts::AddLeaf(MessagePart part) {
  part.isOfMessage = insideMessages_ > 0;
  leaves_.push_back(std::move(part));
}

}  // namespace tarnwick::takeout
