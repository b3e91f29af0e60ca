// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mime_body.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/text.h"
#include "intake/inline_file.h"
#include "intake/transfer_decoding.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

bool IsBlankLine(std::string_view line) {
  return line.find_first_not_of(' ') == std::string_view::npos;
}

bool BeginsWithContent(const std::string& line) {
  return platform::AsciiLower(core::Trim(line).substr(0, 8)) == "content-";
}

bool EndsPart(std::string_view line, const MessageDraft& draft) {
  return BeginsWithContentType(line) || HoldsBoundary(line, draft);
}

// "--boundary--": the last of its container; no part follows.
bool IsClosing(std::string_view line, const MessageDraft& draft) {
  std::string_view longest;
  for (const std::string& boundary : draft.boundaries) {
    if (boundary.size() > longest.size() && line.find(boundary) != std::string_view::npos) {
      longest = boundary;
    }
  }
  std::string_view rest = line.substr(line.find(longest) + longest.size());
  return core::BeginsWith(rest, "--");
}

// Reads the headers of a part that follows a boundary, to the empty line behind them and past it.
// Lines that belong to no header of a part are passed over, but where no empty line ends the block
// they were text and are given back.
void ReadPartHeaders(LineCursor& cursor, const MessageDraft& draft, PartDescription& part) {
  std::vector<std::string> others;
  while (cursor.HasLine()) {
    std::string& line = cursor.Line();
    if (IsBlankLine(line)) {
      cursor.Next();
      return;
    }
    // A nested container's boundary may begin with the outer one.
    bool isBoundary = HoldsBoundary(line, draft) && !BeginsWithContent(line);
    if (isBoundary || !LooksLikeHeader(line)) break;
    std::string header = TakeFolded(cursor);
    if (ReadContentHeader(header, part)) {
      // A container's boundary counts at once: the next line may hold it.
      if (part.type == PartKind::kContainer && !part.boundary.empty()) return;
    } else {
      others.push_back(std::move(header));
    }
  }
  cursor.GiveBack(std::move(others));
}

// Reads what follows a "content-type" line in the middle of things: only lines of its kind are
// headers, whatever else comes is text already. One that only begins like a header goes on with
// the part before it, which it has cut: "Content-Type" may stand first in a line of a META tag.
void ReadContentLines(LineCursor& cursor, const PartDescription& before, PartDescription& part) {
  while (cursor.HasLine() && BeginsWithContent(cursor.Line())) {
    std::string& line = cursor.Line();
    if (BeginsWithContentType(line) && !IsContentHeader(line)) {
      if (ReadTypeWithoutColon(line, part)) {
        cursor.Next();
        continue;
      }
      bool isMarkup = core::ContainsIgnoringCase(line, "html");
      part.type = isMarkup ? PartKind::kHtml : PartKind::kUndeclared;
      part.charset = before.charset;
      part.encoding = before.encoding;
      part.firstLine = std::move(line);
      cursor.Next();
      return;
    }
    ReadContentHeader(TakeFolded(cursor), part);
  }
  if (cursor.HasLine() && IsBlankLine(cursor.Line())) cursor.Next();
}

// The charset that an HTML document declares for itself, from its first bytes.
std::string CharsetOfHtml(std::string_view html) {
  constexpr size_t kHeadLength = 2048;
  constexpr std::string_view kWord = "charset=";
  std::string head = platform::AsciiLower(html.substr(0, kHeadLength));
  size_t at = head.find(kWord);
  if (at == std::string::npos) return "";
  std::string_view rest = std::string_view(head).substr(at + kWord.size());
  while (!rest.empty() && (rest[0] == '"' || rest[0] == '\'' || rest[0] == ' ')) {
    rest.remove_prefix(1);
  }
  std::string name(rest.substr(0, rest.find_first_of("\"' />;")));
  return platform::IsKnownCharset(name) ? name : std::string();
}

// Decodes HTML whose base64 is not declared, or not so that it was understood: markup has
// characters that base64 lacks.
void UndoHiddenBase64(std::string& html) {
  BodyDecoder decoder("base64");
  for (std::string_view rest = html; !rest.empty();) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!IsBase64(line)) return;
    decoder.Line(line);
  }
  std::string decoded = decoder.Take();
  if (decoded.find('<') != std::string::npos) html = std::move(decoded);
}

// Puts a decoded text or HTML part where it belongs, and takes from its description what concerns
// the whole message.
void AddText(std::string bytes, bool isHtml, const PartDescription& part, MessageDraft& draft) {
  if (isHtml) UndoHiddenBase64(bytes);
  std::string charset = part.charset;
  if (isHtml && !ClaimsBytes(charset)) {
    std::string own = CharsetOfHtml(bytes);
    // What calls itself UTF-16 in bytes that could be read this far is not.
    if (!own.empty() && !core::BeginsWith(own, "utf-16")) charset = own;
  }
  if (isHtml) draft.htmlCharset = charset;
  if (!charset.empty()) draft.charset = charset;
  if (!part.encoding.empty()) draft.encoding = part.encoding;
  if (draft.headerCharset.empty() && ClaimsBytes(charset)) draft.headerCharset = charset;
  draft.hasTextPart = true;
  MixedText& target = isHtml ? draft.html : draft.body;
  if (!target.Empty() && !target.EndsLine()) target.AppendRaw("\r\n");
  target.AppendIn(bytes, charset);
}

void TakeTextPart(LineCursor& cursor, const PartDescription& part, MessageDraft& draft) {
  BodyDecoder decoder(part.encoding);
  if (!part.firstLine.empty()) decoder.Line(part.firstLine);
  for (; cursor.HasLine() && !EndsPart(cursor.Line(), draft); cursor.Next()) {
    bool isFirst = draft.body.Empty() && decoder.Empty();
    if (!isFirst || !IsBlankLine(cursor.Line())) decoder.Line(cursor.Line());
  }
  AddText(decoder.Take(), false, part, draft);
}

void TakeHtmlPart(LineCursor& cursor, const PartDescription& part, MessageDraft& draft) {
  BodyDecoder decoder(part.encoding);
  if (!part.firstLine.empty()) decoder.Line(part.firstLine);
  for (; cursor.HasLine(); cursor.Next()) {
    const std::string& line = cursor.Line();
    // A mailer that forgets the line end between the two must not lose the document's end.
    if (EndsPart(line, draft) && !core::ContainsIgnoringCase(line, "</html>")) break;
    bool isFirst = draft.html.Empty() && decoder.Empty();
    if (!isFirst || !IsBlankLine(line)) decoder.Line(line);
  }
  AddText(decoder.Take(), true, part, draft);
}

void TakePart(LineCursor& cursor, const PartDescription& part, MessageDraft& draft) {
  switch (part.Kind()) {
    case PartKind::kUndeclared:
    case PartKind::kText:
      TakeTextPart(cursor, part, draft);
      break;
    case PartKind::kHtml:
      TakeHtmlPart(cursor, part, draft);
      break;
    case PartKind::kAttachment:
      draft.AddAttachment(part.fileName);
      break;
    case PartKind::kOther:
      // Better an odd text than none.
      if (part.isUnknownText && draft.body.Empty()) TakeTextPart(cursor, part, draft);
      break;
    case PartKind::kContainer:
      draft.AddBoundary(part.boundary);
      break;
  }
}

// Passes over lines to the next that begins a part. inHeaders: the lines are the headers of an
// attached message, which end at an empty line; a transfer encoding that stands among them before
// the content type is kept in encoding.
void SkipToPart(LineCursor& cursor, const MessageDraft& draft, bool& inHeaders,
                std::string& encoding) {
  for (; cursor.HasLine() && !EndsPart(cursor.Line(), draft); cursor.Next()) {
    if (!inHeaders) continue;
    PartDescription header;
    if (cursor.Line().empty()) {
      inHeaders = false;
      encoding.clear();
    } else if (ReadContentHeader(cursor.Line(), header) && !header.encoding.empty()) {
      encoding = header.encoding;
    }
  }
}

// A container that does not declare its boundary: by the first line of the body that looks like one
// with headers of a part behind it. False when there is none; the current line stays.
bool FindBoundary(LineCursor& cursor, MessageDraft& draft) {
  constexpr size_t kMostLines = 100;
  std::vector<std::string> lines;
  std::string boundary;
  while (cursor.HasLine() && lines.size() < kMostLines) {
    bool isHeader = BeginsWithContent(cursor.Line());
    if (isHeader && !lines.empty() && core::BeginsWith(lines.back(), "--")) {
      boundary = lines.back().substr(2);
      break;
    }
    lines.push_back(std::move(cursor.Line()));
    cursor.Next();
  }
  cursor.GiveBack(std::move(lines));
  draft.AddBoundary(boundary);
  return !boundary.empty();
}

// The single body's text, with the files that stand in it.
void TakeTextBody(LineCursor& cursor, const PartDescription& header, MessageDraft& draft) {
  BodyDecoder decoder(header.encoding);
  while (cursor.HasLine()) {
    if (decoder.IsPlain() && TakeInlineFile(cursor, draft, [&decoder](std::string_view line) {
          if (!decoder.Empty() || !IsBlankLine(line)) decoder.Line(line);
        })) {
      continue;
    }
    const std::string& line = cursor.Line();
    if (!decoder.Empty() || !IsBlankLine(line)) decoder.Line(line);
    cursor.Next();
  }
  AddText(decoder.Take(), false, header, draft);
}

}  // namespace

bool LooksLikeHeader(std::string_view line) {
  if (IsFolded(line)) return true;
  size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  return std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](char c) { return c > ' ' && c < 0x7F; });
}

std::string TakeFolded(LineCursor& cursor) {
  std::string header = std::move(cursor.Line());
  for (cursor.Next(); cursor.HasLine() && IsFolded(cursor.Line()); cursor.Next()) {
    std::string_view more = cursor.Line();
    more.remove_prefix(std::min(more.find_first_not_of(" \t"), more.size()));
    header += ' ';
    header += more;
  }
  return header;
}

bool HoldsBoundary(std::string_view line, const MessageDraft& draft) {
  for (const std::string& boundary : draft.boundaries) {
    if (line.size() >= boundary.size() && line.find(boundary) != std::string_view::npos) {
      return true;
    }
  }
  return false;
}

void TakeMultipartBody(LineCursor& cursor, MessageDraft& draft) {
  bool inHeaders = false;
  PartDescription before;
  for (;;) {
    PartDescription part;
    SkipToPart(cursor, draft, inHeaders, part.encoding);
    if (!cursor.HasLine()) return;
    if (BeginsWithContentType(cursor.Line())) {
      if (inHeaders) {
        ReadPartHeaders(cursor, draft, part);
      } else {
        ReadContentLines(cursor, before, part);
      }
    } else {
      bool isClosing = IsClosing(cursor.Line(), draft);
      cursor.Next();
      inHeaders = false;
      if (isClosing) continue;
      ReadPartHeaders(cursor, draft, part);
    }
    inHeaders = part.isMessage;
    TakePart(cursor, part, draft);
    before = std::move(part);
  }
}

void obxTakeBodyWithoutContent(LineCursor& cursor, const PartDescription& header,
                               MessageDraft& draft) {
  if (header.Kind() == PartKind::kAttachment) {
    draft.AddAttachment(header.fileName);
    // An encoded file is no text; one that lies open may be.
    if (header.type != PartKind::kText && header.type != PartKind::kUndeclared &&
        header.type != PartKind::kHtml &&
        TransferKindOf(header.encoding) == TransferKind::kBase64) {
      return;
    }
  }
  if (header.IsMedia()) return;
  if (header.type == PartKind::kContainer && FindBoundary(cursor, draft)) {
    TakeMultipartBody(cursor, draft);
  } else if (header.type == PartKind::kHtml) {
    TakeHtmlPart(cursor, header, draft);
  } else {
    TakeTextBody(cursor, header, draft);
  }
}

}  // namespace tarnwick::intake
