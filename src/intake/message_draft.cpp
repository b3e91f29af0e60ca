// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/message_draft.h"

#include <algorithm>

#include "core/messages.h"
#include "core/text.h"
#include "platform/charset.h"
#include "platform/html.h"

namespace tarnwick::intake {

namespace {

// Texts may come with bare line feeds out of base64.
void EndLinesWithCrLf(std::string& text) {
  size_t bare = 0;
  for (size_t i = text.find('\n'); i != std::string::npos; i = text.find('\n', i + 1)) {
    if (i == 0 || text[i - 1] != '\r') ++bare;
  }
  if (bare == 0) return;
  std::string result;
  result.reserve(text.size() + bare);
  for (char c : text) {
    if (c == '\n' && (result.empty() || result.back() != '\r')) result += '\r';
    result += c;
  }
  text = std::move(result);
}

int16_t FinishAddresses(const std::vector<DraftAddress>& draft, std::string_view charset,
                        std::vector<AddressPair>& list) {
  list.resize(std::max(draft.size(), list.size()));
  for (size_t i = 0; i < draft.size(); ++i) {
    list[i].Name = draft[i].name.Finish(charset);
    list[i].Address = draft[i].address.Finish(charset);
  }
  return static_cast<int16_t>(draft.size());
}

}  // namespace

void MessageDraft::ShowLimit(std::string_view kind, const std::string& text) {
  constexpr int kMost = 10000;
  if (limitsShown >= kMost) return;
  ++limitsShown;
  core::ShowRepeatedMessage(kind, text);
}

void MessageDraft::AddBoundary(std::string boundary) {
  // An empty boundary would stand in every line.
  if (boundary.empty()) return;
  if (boundaries.size() >= kMaxBoundaries) {
    ShowLimit("Boundary limit", "A lot of boundary.");
    return;
  }
  boundaries.push_back(std::move(boundary));
}

bool MessageDraft::AddAttachment(const MixedText& name) {
  if (attachments.size() >= kMaxAttachments) {
    ShowLimit("Attachment limit", "Attachment is great than " + std::to_string(kMaxAttachments));
    return false;
  }
  attachments.push_back(name);
  return true;
}

void FinishDraft(const MessageDraft& draft, MailMessage& message) {
  const std::string& headers = draft.CharsetOfHeaders();
  message.Subject = draft.subject.Finish(headers);
  message.FromName = draft.from.name.Finish(headers);
  message.FromAddress = draft.from.address.Finish(headers);
  message.ToCount = FinishAddresses(draft.to, headers, message.To);
  message.CcCount = FinishAddresses(draft.cc, headers, message.Cc);
  int16_t converted = draft.hasTextPart ? 1 : 0;
  message.SubjectConverted = message.ToConverted = converted;
  message.FromConverted = message.CcConverted = converted;
  for (const MixedText& name : draft.attachments) {
    message.Attachments[static_cast<size_t>(message.AttachCount++)] =
        core::CleanTrim(name.Finish(headers));
  }
  for (const std::string& boundary : draft.boundaries) {
    message.Boundaries[static_cast<size_t>(message.BoundaryCount++)] =
        platform::EnsureUtf8(boundary);
  }
  message.Importance = platform::EnsureUtf8(draft.importance);
  message.TimeText = platform::EnsureUtf8(draft.timeText);
  message.TimeShift = platform::EnsureUtf8(draft.timeShift);
  message.Charset = platform::EnsureUtf8(draft.charset);
  message.Encoding = platform::EnsureUtf8(draft.encoding);
  message.HTMLCharset = platform::EnsureUtf8(draft.htmlCharset);
  message.Body = draft.body.Finish(draft.charset);
  message.HTMLBody =
      draft.html.Finish(draft.htmlCharset.empty() ? draft.charset : draft.htmlCharset);
  EndLinesWithCrLf(message.Body);
  EndLinesWithCrLf(message.HTMLBody);
  SettleBody(message);
}

}  // namespace tarnwick::intake
