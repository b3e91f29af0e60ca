// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mime_body.h"

#include "core/messages.h"
#include "core/text.h"
#include "intake/attachment_file.h"
#include "intake/header_parameter.h"
#include "intake/transfer_decoding.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

constexpr std::string_view kContentPrefix = "content-";

bool BeginsIgnoringCase(std::string_view text, std::string_view lowerPrefix) {
  if (text.size() < lowerPrefix.size()) return false;
  for (size_t i = 0; i < lowerPrefix.size(); ++i) {
    char c = text[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != lowerPrefix[i]) return false;
  }
  return true;
}

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

void AppendBoundary(const std::string& boundary, MailMessage& record) {
  // Every line would hold an empty one.
  if (boundary.empty()) return;
  record.IsMultipart = 1;
  if (record.BoundaryCount >= kMaxBoundaries) {
    core::ShowRepeatedMessage("boundary limit", "A lot of boundary.");
    return;
  }
  record.Boundaries[static_cast<size_t>(record.BoundaryCount++)] = boundary;
}

void AppendAttachment(const std::string& name, MailMessage& record) {
  if (record.AttachCount >= kMaxAttachments) {
    core::ShowRepeatedMessage("attachment limit",
                              "Attachment is great than " + std::to_string(kMaxAttachments));
    return;
  }
  record.Attachments[static_cast<size_t>(record.AttachCount++)] = core::CleanTrim(name);
}

// The kind that the media type gives; the words are looked for in this order.
PartDescription::Kind KindOf(const std::string& mediaType) {
  if (Contains(mediaType, "plain")) return PartDescription::kText;
  if (Contains(mediaType, "application")) return PartDescription::kAttachment;
  if (Contains(mediaType, "multipart")) return PartDescription::kContainer;
  if (Contains(mediaType, "html")) return PartDescription::kHtml;
  if (Contains(mediaType, "image")) return PartDescription::kAttachment;
  // Other texts are readable as they stand. "Content-Type: text" is what old programs wrote.
  if (core::BeginsWith(mediaType, "text")) return PartDescription::kText;
  return PartDescription::kOther;
}

void ApplyContentType(std::string_view value, PartDescription& part, MailMessage& record) {
  HeaderParameters parameters(value);
  PartDescription::Kind kind = KindOf(parameters.MainValue());
  std::string charset = parameters.Raw("charset");
  if (!charset.empty()) part.charset = charset;
  std::string name = parameters.Text("name", part.charset);
  if (part.fileName.empty()) part.fileName = name;
  if (kind == PartDescription::kContainer) AppendBoundary(parameters.Raw("boundary"), record);
  // Sound, video and the like come as files.
  if (kind == PartDescription::kOther && !name.empty()) kind = PartDescription::kAttachment;
  // A disposition that came first has said that the part is a file.
  if (part.kind != PartDescription::kAttachment) part.kind = kind;
}

void ApplyDisposition(std::string_view value, PartDescription& part) {
  HeaderParameters parameters(value);
  const std::string& disposition = parameters.MainValue();
  if (!Contains(disposition, "attachment") && !Contains(disposition, "inline")) return;
  std::string name = parameters.Text("filename", part.charset);
  if (!name.empty()) part.fileName = name;
  if (part.fileName.empty() || part.kind == PartDescription::kContainer) return;
  part.kind = PartDescription::kAttachment;
}

// How a part's headers were ended.
struct PartStart {
  bool isBoundary = false;
  bool isClosing = false;  // "--boundary--": no part follows
};

// A part begins with a line that holds a boundary, or with its own Content-Type.
PartStart TestPartStart(std::string_view line, const MailMessage& record) {
  std::string_view trimmed = TrimBlanks(line);
  if (BeginsIgnoringCase(trimmed, "content-type")) return {true, false};
  if (!HoldsBoundary(line, record)) return {};
  return {true,
          trimmed.size() > 4 && core::BeginsWith(trimmed, "--") && trimmed.ends_with("--") && [&] {
            std::string_view inner = trimmed.substr(2, trimmed.size() - 4);
            for (int i = 0; i < record.BoundaryCount; ++i) {
              if (inner == record.Boundaries[static_cast<size_t>(i)]) return true;
            }
            return false;
          }()};
}

bool IsHeaderLine(std::string_view line) {
  size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  return line.substr(0, colon).find_first_of(" \t") == std::string_view::npos;
}

// Reads the headers of a part up to the empty line, a line that is no header, or the next part. The
// first unread line becomes current.
PartDescription ReadPartHeaders(ParseState& state) {
  PartDescription part;
  while (!state.atEnd) {
    if (BeginsIgnoringCase(TrimBlanks(state.line), kContentPrefix)) {
      ReadContentHeader(state, part);
    } else if (!state.LineIsFolded() &&
               (!IsHeaderLine(state.line) || HoldsBoundary(state.line, state.record))) {
      break;
    } else {
      state.NextLine();
    }
  }
  if (!state.atEnd && TrimBlanks(state.line).empty()) state.NextLine();
  // A part without a word about itself is text.
  if (part.kind == PartDescription::kNone) part.kind = PartDescription::kText;
  return part;
}

// Some programs declare the charset of HTML only inside it.
std::string CharsetInHtml(std::string_view html) {
  constexpr size_t kWhereHeadsAre = 4096;
  constexpr std::string_view kWord = "charset=";
  std::string head = platform::AsciiLower(html.substr(0, kWhereHeadsAre));
  size_t at = head.find(kWord);
  if (at == std::string::npos) return {};
  size_t begin = head.find_first_not_of(" \"'", at + kWord.size());
  if (begin == std::string::npos) return {};
  return head.substr(begin, head.find_first_of(" \"'>/;\r\n", begin) - begin);
}

// A part's charset is applied once to the header texts that still hold bytes.
void ConvertHeaderTexts(ParseState& state, const std::string& charset) {
  if (!platform::IsKnownCharset(charset)) return;
  MailMessage& record = state.record;
  if (record.SubjectConverted == 0) state.subject.Convert(charset);
  if (record.FromConverted == 0) {
    state.fromAddress.Convert(charset);
    state.fromName.Convert(charset);
  }
  auto convertAll = [&](std::vector<ParseState::Recipient>& recipients) {
    for (ParseState::Recipient& recipient : recipients) {
      recipient.name.Convert(charset);
      recipient.address.Convert(charset);
    }
  };
  if (record.ToConverted == 0) convertAll(state.to);
  if (record.CcConverted == 0) convertAll(state.cc);
  record.SubjectConverted = record.FromConverted = record.ToConverted = record.CcConverted = 1;
}

// Adds a finished text part to the body or the HTML body.
void TakeText(ParseState& state, const PartDescription& part, const std::string& bytes) {
  bool isHtml = part.kind == PartDescription::kHtml;
  std::string charset = part.charset;
  if (isHtml && !platform::IsKnownCharset(charset)) charset = CharsetInHtml(bytes);
  MixedText& target = isHtml ? state.htmlBody : state.body;
  if (auto text = platform::CharsetToUtf8(bytes, charset)) {
    target.AppendText(*text);
  } else {
    target.AppendBytes(bytes);
  }
  MailMessage& record = state.record;
  if (isHtml) record.HTMLCharset = charset;
  if (!isHtml || record.Charset.empty()) {
    record.Charset = charset;
    record.Encoding = part.encoding;
  }
  ConvertHeaderTexts(state, charset);
}

// Lines up to the next part go into the body of the part's kind.
PartStart ReadTextPart(ParseState& state, const PartDescription& part) {
  bool isHtml = part.kind == PartDescription::kHtml;
  bool hasText = !(isHtml ? state.htmlBody : state.body).Empty();
  LineDecoder decoder(part.encoding);
  std::string bytes;
  PartStart start;
  for (; !state.atEnd; state.NextLine()) {
    start = TestPartStart(state.line, state.record);
    // The end of the document and the boundary may share a line.
    if (start.isBoundary && isHtml && core::ContainsIgnoringCase(state.line, "</html>")) start = {};
    if (start.isBoundary) break;
    if (state.line.empty() && !hasText && bytes.empty()) continue;
    decoder.Decode(state.line, bytes);
  }
  decoder.Finish(bytes);
  TakeText(state, part, bytes);
  return start;
}

PartStart SkipToNextPart(ParseState& state) {
  for (; !state.atEnd; state.NextLine()) {
    PartStart start = TestPartStart(state.line, state.record);
    if (start.isBoundary) return start;
  }
  return {};
}

// A "begin 644 name" line, and what of a file followed it so far.
struct InlineFile {
  std::string name;
  std::vector<std::string> lines;  // as they stand, the first one included
};

// The file's name when the line can begin a uuencoded file.
bool ReadInlineStart(const std::string& line, std::string& name) {
  std::string_view text = TrimBlanks(line);
  if (!BeginsIgnoringCase(text, "begin ")) return false;
  text = TrimBlanks(text.substr(6));
  size_t digits = text.find_first_not_of("01234567");
  if (digits == std::string_view::npos || digits < 3 || digits > 5 || text[digits] != ' ') {
    return false;
  }
  name = TrimBlanks(text.substr(digits));
  return !name.empty();
}

// With the current line behind a "begin" line: reads the encoded lines up to "end". True when a
// whole file was there; else lines holds everything that was read, and the line that ended it is
// current.
bool ReadInlineFile(ParseState& state, InlineFile& file, std::string& bytes) {
  size_t encodedLines = 0;
  for (; !state.atEnd; state.NextLine()) {
    if (BeginsIgnoringCase(TrimBlanks(state.line), "end") && TrimBlanks(state.line).size() == 3 &&
        encodedLines > 0) {
      return true;
    }
    // An empty line stands for a cut-off line of no bytes.
    if (!state.line.empty()) {
      if (!IsUuencodedLine(state.line)) return false;
      DecodeUuencodedLine(state.line, bytes);
      ++encodedLines;
    }
    file.lines.push_back(state.line);
  }
  return false;
}

void AppendPlainLine(const std::string& line, bool hasText, std::string& bytes) {
  if (!hasText && bytes.empty() && TrimBlanks(line).empty()) return;
  bytes += line;
  bytes += "\r\n";
}

// The lines of a body that may hold uuencoded files.
void ReadPlainLines(ParseState& state, std::string& bytes) {
  while (!state.atEnd) {
    InlineFile file;
    if (!ReadInlineStart(state.line, file.name)) {
      AppendPlainLine(state.line, false, bytes);
      state.NextLine();
      continue;
    }
    file.lines.push_back(state.line);
    std::string content;
    state.NextLine();
    if (ReadInlineFile(state, file, content)) {
      std::string name = platform::BytesToUtf8(file.name, state.whole.charset);
      MakeAttachFile(name, content);
      AppendAttachment(name, state.record);
      state.NextLine();
    } else {
      for (const std::string& line : file.lines) AppendPlainLine(line, true, bytes);
    }
  }
}

}  // namespace

void ApplyContentHeader(std::string_view header, PartDescription& part, MailMessage& record) {
  size_t colon = header.find(':');
  if (colon == std::string_view::npos) return;
  std::string name = platform::AsciiLower(TrimBlanks(header.substr(0, colon)));
  std::string_view value = header.substr(colon + 1);
  if (name == "content-type") {
    ApplyContentType(value, part, record);
  } else if (name == "content-disposition") {
    ApplyDisposition(value, part);
  } else if (name == "content-transfer-encoding") {
    part.encoding = core::CleanTrim(value);
  }
}

void ReadContentHeader(ParseState& state, PartDescription& part) {
  std::string header = state.line;
  while (state.NextLine() && state.LineIsFolded()) {
    // A folded parameter goes on without its indentation.
    header += ' ';
    header += TrimBlanks(state.line);
  }
  ApplyContentHeader(header, part, state.record);
}

bool HoldsBoundary(std::string_view line, const MailMessage& record) {
  for (int i = 0; i < record.BoundaryCount; ++i) {
    const std::string& boundary = record.Boundaries[static_cast<size_t>(i)];
    if (line.size() >= boundary.size() && Contains(line, boundary)) return true;
  }
  return false;
}

void ReadMultipartBody(ParseState& state) {
  PartStart start = SkipToNextPart(state);
  while (!state.atEnd) {
    // A part that begins with its Content-Type has no line before its headers.
    if (!BeginsIgnoringCase(TrimBlanks(state.line), "content-type")) state.NextLine();
    if (start.isClosing) {
      start = SkipToNextPart(state);
      continue;
    }
    PartDescription part = ReadPartHeaders(state);
    switch (part.kind) {
      case PartDescription::kText:
      case PartDescription::kHtml:
        start = ReadTextPart(state, part);
        break;
      case PartDescription::kAttachment:
        AppendAttachment(part.fileName, state.record);
        start = SkipToNextPart(state);
        break;
      default:
        start = SkipToNextPart(state);
        break;
    }
  }
}

void obxTakeBodyWithoutContent(ParseState& state) {
  PartDescription& part = state.whole;
  // A letter that is nothing but a file.
  if (part.kind == PartDescription::kAttachment && !part.fileName.empty()) {
    AppendAttachment(part.fileName, state.record);
    return;
  }
  if (!state.atEnd && TrimBlanks(state.line).empty()) state.NextLine();
  std::string bytes;
  LineDecoder decoder(part.encoding);
  if (decoder.IsEncoded() || part.kind == PartDescription::kHtml) {
    for (; !state.atEnd; state.NextLine()) decoder.Decode(state.line, bytes);
    decoder.Finish(bytes);
  } else {
    ReadPlainLines(state, bytes);
  }
  TakeText(state, part, bytes);
}

}  // namespace tarnwick::intake
