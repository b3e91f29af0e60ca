// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/letter.h"

#include "core/text.h"
#include "outlook/address_resolver.h"
#include "outlook/mapi_text.h"
#include "outlook/rtf.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

constexpr int64_t kLow = 0;
constexpr int64_t kHigh = 2;
// Times that Outlook writes for "none" lie in the year 4501.
constexpr int64_t kNoTime = 79'833'600'000;
constexpr size_t kDeclarationReach = 2048;

AddressResolver ResolverOf(PropertyItem& item) {
  const PropertySet& properties = item.Properties();
  AddressResolver resolver;
  auto learn = [&](Prop entry, Prop smtp) {
    resolver.Learn(properties.Text(entry), properties.Text(smtp));
  };
  learn(Prop::kSenderAddress, Prop::kSenderSmtpAddress);
  learn(Prop::kSentRepresentingAddress, Prop::kSentRepresentingSmtpAddress);
  learn(Prop::kReceivedByAddress, Prop::kReceivedBySmtpAddress);
  for (const PropertySet& recipient : item.Recipients()) {
    resolver.Learn(recipient.Text(Prop::kAddress), recipient.Text(Prop::kSmtpAddress));
  }
  resolver.LearnHeaders(properties.Text(Prop::kTransportHeaders));
  return resolver;
}

void ReadPeople(PropertyItem& item, Letter& letter) {
  AddressResolver resolver = ResolverOf(item);
  const PropertySet& properties = item.Properties();
  intake::AddressPair sender =
      resolver.Resolve(properties.Text(Prop::kSenderName), properties.Text(Prop::kSenderAddress),
                       properties.Text(Prop::kSenderSmtpAddress));
  letter.from = resolver.Resolve(properties.Text(Prop::kSentRepresentingName),
                                 properties.Text(Prop::kSentRepresentingAddress),
                                 properties.Text(Prop::kSentRepresentingSmtpAddress));
  bool represents = letter.from.Address != intake::kNoAddress;
  if (!represents && letter.from.Name == intake::kNoName) letter.from = sender;
  letter.ownAddress = sender.Address != intake::kNoAddress ? sender.Address : letter.from.Address;
  for (const PropertySet& recipient : item.Recipients()) {
    LetterRecipient entry;
    entry.type = recipient.Number(Prop::kRecipientType, RecipientType::kTo) & 0xF;
    std::string name = recipient.Text(Prop::kDisplayName);
    if (name.empty()) name = recipient.Text(Prop::kRecipientDisplayName);
    entry.pair =
        resolver.Resolve(name, recipient.Text(Prop::kAddress), recipient.Text(Prop::kSmtpAddress));
    letter.recipients.push_back(std::move(entry));
  }
}

std::optional<int64_t> TimeOf(const PropertySet& properties, Prop property) {
  auto time = properties.Time(property);
  return time && *time < kNoTime ? time : std::nullopt;
}

void ReadTimes(const PropertySet& properties, Letter& letter) {
  letter.sent = TimeOf(properties, Prop::kClientSubmitTime);
  letter.received = TimeOf(properties, Prop::kDeliveryTime);
  letter.created = TimeOf(properties, Prop::kCreationTime);
  if (!letter.created) letter.created = TimeOf(properties, Prop::kModificationTime);
}

void ReadBodies(const PropertySet& properties, Letter& letter) {
  int64_t codepage = properties.Number(Prop::kInternetCodepage);
  letter.charset = CharsetOfCodepage(codepage);
  if (letter.charset.empty()) {
    letter.charset = CharsetOfCodepage(properties.Number(Prop::kMessageCodepage));
  }
  letter.plainBody = properties.Text(Prop::kBody);
  letter.htmlBody = properties.Text(Prop::kHtml);
  if (letter.htmlBody.empty()) {
    letter.htmlBody = HtmlFromBytes(properties.Bytes(Prop::kHtml), codepage);
  }
  if (!letter.htmlBody.empty()) return;
  auto rtf = UnpackRtf(properties.Bytes(Prop::kRtfCompressed));
  if (!rtf) return;
  RtfContent content = ReadRtf(*rtf);
  if (content.kind == RtfContent::Kind::kHtml) {
    letter.htmlBody = std::move(content.text);
  } else if (core::Trim(letter.plainBody).empty()) {
    letter.plainBody = std::move(content.text);
  }
}

// The charset that an HTML document's head declares; "" for none.
std::string DeclaredCharset(std::string_view html) {
  std::string head = platform::AsciiLower(html.substr(0, kDeclarationReach));
  size_t at = head.find("charset=");
  if (at == std::string::npos) return {};
  at += 8;
  while (at < head.size() && (head[at] == '"' || head[at] == '\'' || head[at] == ' ')) ++at;
  size_t end = head.find_first_of("\"'> ;/", at);
  return head.substr(at, end == std::string::npos ? end : end - at);
}

}  // namespace

// Outlook keeps the last of replying and forwarding alone.
intake::MessageState StateOf(const PropertySet& properties) {
  constexpr int64_t kMissing = -1;
  intake::MessageState state;
  int64_t flags = properties.Number(Prop::kMessageFlags, kMissing);
  if (flags == kMissing) return state;
  int64_t verb = properties.Number(Prop::kLastVerbExecuted);
  int64_t icon = properties.Number(Prop::kIconIndex);
  state.isKnown = true;
  state.isRead = (flags & MessageFlag::kRead) != 0;
  state.isDraft = (flags & MessageFlag::kUnsent) != 0;
  state.isAnswered =
      verb == Verb::kReply || verb == Verb::kReplyToAll || icon == IconIndex::kReplied;
  state.isForwarded = verb == Verb::kForward || icon == IconIndex::kForwarded;
  state.isFlagged = properties.Number(Prop::kFlagStatus) == FlagStatus::kFlagged;
  return state;
}

std::string HtmlFromBytes(std::string_view bytes, int64_t codepage) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  constexpr std::string_view kUtf16Mark = "\xFF\xFE";
  if (core::BeginsWith(bytes, kUtf8Mark)) {
    return TextFromBytes(bytes.substr(kUtf8Mark.size()), "utf-8");
  }
  if (core::BeginsWith(bytes, kUtf16Mark)) return TextFromUtf16(bytes.substr(kUtf16Mark.size()));
  std::string charset = CharsetOfCodepage(codepage);
  if (charset.empty()) charset = DeclaredCharset(bytes);
  return TextFromBytes(bytes, charset);
}

std::string AttachmentName(const PropertySet& attachment) {
  for (Prop property : {Prop::kAttachLongName, Prop::kAttachShortName, Prop::kDisplayName}) {
    std::string name(core::Trim(attachment.Text(property)));
    if (!name.empty()) return name;
  }
  return "attachment" + attachment.Text(Prop::kAttachExtension);
}

Letter ReadLetter(PropertyItem& item) {
  const PropertySet& properties = item.Properties();
  Letter letter;
  letter.messageClass = properties.Text(Prop::kMessageClass);
  letter.subject = properties.Text(Prop::kSubject);
  letter.transportHeaders = properties.Text(Prop::kTransportHeaders);
  letter.messageId = properties.Text(Prop::kMessageId);
  letter.inReplyTo = properties.Text(Prop::kInReplyTo);
  letter.references = properties.Text(Prop::kReferences);
  letter.isDraft = (properties.Number(Prop::kMessageFlags) & MessageFlag::kUnsent) != 0;
  letter.state = StateOf(properties);
  int64_t importance = properties.Number(Prop::kImportance, 1);
  letter.importance = importance == kHigh ? "High" : importance == kLow ? "Low" : "";
  ReadPeople(item, letter);
  ReadTimes(properties, letter);
  ReadBodies(properties, letter);
  return letter;
}

}  // namespace tarnwick::outlook
