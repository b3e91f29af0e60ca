// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/msg_writer.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/text.h"
#include "intake/line_cursor.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/utf8.h"
#include "takeout/attachments.h"
#include "takeout/compound_file_writer.h"

namespace tarnwick::takeout {

namespace {

enum Property : uint16_t {
  kImportance = 0x0017,
  kMessageClass = 0x001A,
  kSubject = 0x0037,
  kSubmitTime = 0x0039,
  kSubjectPrefix = 0x003D,
  kRepresentingName = 0x0042,
  kRepresentingType = 0x0064,
  kRepresentingAddress = 0x0065,
  kConversationTopic = 0x0070,
  kTransportHeaders = 0x007D,
  kRecipientType = 0x0C15,
  kSenderName = 0x0C1A,
  kSenderType = 0x0C1E,
  kSenderAddress = 0x0C1F,
  kDisplayCc = 0x0E03,
  kDisplayTo = 0x0E04,
  kDeliveryTime = 0x0E06,
  kMessageFlags = 0x0E07,
  kHasAttachments = 0x0E1B,
  kNormalizedSubject = 0x0E1D,
  kAttachSize = 0x0E20,
  kAttachNumber = 0x0E21,
  kObjectType = 0x0FFE,
  kEntryId = 0x0FFF,
  kBody = 0x1000,
  kHtml = 0x1013,
  kMessageId = 0x1035,
  kReferences = 0x1039,
  kInReplyTo = 0x1042,
  kLastVerb = 0x1081,
  kFlagStatus = 0x1090,
  kRowId = 0x3000,
  kDisplayName = 0x3001,
  kAddressType = 0x3002,
  kAddress = 0x3003,
  kCreationTime = 0x3007,
  kModificationTime = 0x3008,
  kStoreSupport = 0x340D,
  kAttachBytes = 0x3701,
  kAttachExtension = 0x3703,
  kAttachShortName = 0x3704,
  kAttachMethod = 0x3705,
  kAttachLongName = 0x3707,
  kRenderingPlace = 0x370B,
  kAttachType = 0x370E,
  kAttachContentId = 0x3712,
  kDisplayType = 0x3900,
  kSmtpAddress = 0x39FE,
  kCodepage = 0x3FDE,
  kSenderSmtp = 0x5D01,
  kRepresentingSmtp = 0x5D02,
};

enum Type : uint16_t { kInt32 = 3, kBoolean = 0xB, kText = 0x1F, kTime = 0x40, kBytes = 0x102 };

constexpr uint32_t kTextsAreUnicode = 0x40000;
constexpr uint32_t kUtf8Codepage = 65001;
constexpr uint32_t kReadFlag = 1;
constexpr uint32_t kAttachedFlag = 0x10;
constexpr uint32_t kMailUser = 6;
constexpr uint32_t kAttachmentObject = 7;
constexpr uint32_t kByValue = 1;
constexpr uint32_t kNowhere = 0xFFFFFFFF;  // in the text
constexpr uint32_t kTo = 1;
constexpr uint32_t kCc = 2;
// Rows of recipients and of attachments that Outlook takes at most.
constexpr size_t kMostRows = 2048;
// What stands before the properties.
constexpr size_t kHeadOfRow = 8;

// The class of a message file among compound files.
constexpr std::array<uint8_t, 16> kMessageFile = {0x0B, 0x0D, 0x02, 0, 0, 0, 0, 0,
                                                  0xC0, 0,    0,    0, 0, 0, 0, 0x46};
// Marks an address that stands for itself ([MS-OXCDATA], one-off entry).
constexpr std::string_view kOneOff(
    "\0\0\0\0\x81\x2B\x1F\xA4\xBE\xA3\x10\x19\x9D\x6E\0\xDD\x01\x0F"
    "\x54\x02\0\0\x01\x90",
    24);

void Put(std::string& bytes, uint64_t number, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes.push_back(static_cast<char>(number >> (8 * i) & 0xFF));
}

std::string Hex8(uint32_t number) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[number >> shift & 15];
  return text;
}

// UTF-16, little end first.
std::string Wide(std::string_view utf8) {
  constexpr int32_t kFirstPair = 0x10000;
  std::string wide;
  wide.reserve(2 * utf8.size());
  for (size_t position = 0; position < utf8.size();) {
    int32_t character = platform::NextChar(utf8, position);
    if (character >= platform::kNoChar) character = 0xFFFD;
    if (character >= kFirstPair) {
      auto rest = static_cast<uint32_t>(character - kFirstPair);
      Put(wide, 0xD800U + (rest >> 10), 2);
      Put(wide, 0xDC00U + (rest & 0x3FFU), 2);
    } else {
      Put(wide, static_cast<uint32_t>(character), 2);
    }
  }
  return wide;
}

// The properties of a storage: small values side by side in one stream, others in one each.
class Properties {
 public:
  Properties(std::string storage, std::string head)
      : storage_(std::move(storage)), fixed_(std::move(head)) {}

  void Number(Property property, uint32_t value) { Fixed(property, kInt32, value); }
  void Flag(Property property, bool value) { Fixed(property, kBoolean, value ? 1 : 0); }
  // Tenths of microseconds since 1601, UTC.
  void Time(Property property, const std::optional<DateTime>& local) {
    constexpr int64_t kFrom1601 = 11'644'473'600;
    constexpr uint64_t kInSecond = 10'000'000;
    if (!local) return;
    int64_t seconds = platform::UnixFromLocal(*local) + kFrom1601;
    if (seconds > 0) Fixed(property, kTime, static_cast<uint64_t>(seconds) * kInSecond);
  }
  // Nothing for an empty one.
  void Text(Property property, std::string_view utf8) {
    if (utf8.empty()) return;
    std::string wide = Wide(utf8);
    // With the two bytes of the zero that the stream leaves out.
    size_t size = wide.size() + 2;
    Stream(property, kText, size, std::move(wide));
  }
  void Bytes(Property property, std::string bytes) {
    size_t size = bytes.size();
    Stream(property, kBytes, size, std::move(bytes));
  }

  void Finish(std::vector<CompoundStream>& streams) {
    streams.emplace_back(storage_ + "__properties_version1.0", std::move(fixed_));
    for (CompoundStream& stream : streams_) streams.push_back(std::move(stream));
  }

 private:
  void Begin(Property property, Type type) {
    constexpr uint32_t kReadAndWritten = 6;
    Put(fixed_, type, 2);
    Put(fixed_, property, 2);
    Put(fixed_, kReadAndWritten, 4);
  }
  void Fixed(Property property, Type type, uint64_t value) {
    Begin(property, type);
    Put(fixed_, value, 8);
  }
  void Stream(Property property, Type type, size_t size, std::string bytes) {
    Begin(property, type);
    Put(fixed_, size, 4);
    Put(fixed_, 0, 4);
    streams_.emplace_back(storage_ + "__substg1.0_" + Hex8(uint32_t{property} << 16 | type),
                          std::move(bytes));
  }

  std::string storage_;
  std::string fixed_;
  std::vector<CompoundStream> streams_;
};

// The header lines of a message, with the empty line behind them left out.
std::string_view HeadersOf(std::string_view file) {
  std::string_view rest = file;
  while (!rest.empty()) {
    size_t end = std::min(rest.find('\n'), rest.size() - 1);
    std::string_view line = rest.substr(0, end);
    if (line.empty() || line == "\r") break;
    rest.remove_prefix(end + 1);
  }
  return file.substr(0, file.size() - rest.size());
}

// A header's value on one line; "" without it.
std::string HeaderValue(std::string_view headers, std::string_view name) {
  std::string value;
  bool isFound = false;
  while (!headers.empty()) {
    size_t end = std::min(headers.find('\n'), headers.size() - 1);
    std::string_view line = headers.substr(0, end);
    headers.remove_prefix(end + 1);
    if (isFound && !intake::IsFolded(line)) break;
    bool begins = !isFound && line.size() > name.size() && line[name.size()] == ':' &&
                  platform::SameWord(line.substr(0, name.size()), name);
    if (begins) line.remove_prefix(name.size() + 1);
    isFound = isFound || begins;
    if (isFound) value.append(value.empty() ? "" : " ").append(core::CleanTrim(line));
  }
  return platform::EnsureUtf8(value);
}

// "Re: " of a subject; "" without such a thing.
std::string_view PrefixOf(std::string_view subject) {
  constexpr size_t kMostLetters = 3;
  size_t colon = subject.find(": ");
  bool isOne = colon != std::string_view::npos && colon > 0 && colon <= kMostLetters &&
               subject.substr(0, colon).find_first_of(" 0123456789") == std::string_view::npos;
  return isOne ? subject.substr(0, colon + 2) : std::string_view();
}

std::string Known(const std::string& text, std::string_view unknown) {
  return text == unknown ? std::string() : text;
}

std::string NameOf(const intake::AddressPair& person) {
  std::string name = Known(person.Name, intake::kNoName);
  return name.empty() ? Known(person.Address, intake::kNoAddress) : name;
}

std::string NamesOf(const std::vector<intake::AddressPair>& people) {
  std::string names;
  for (const intake::AddressPair& person : people) {
    names.append(names.empty() ? "" : "; ").append(NameOf(person));
  }
  return names;
}

std::string OneOffEntry(const std::string& name, const std::string& address) {
  std::string entry(kOneOff);
  for (const std::string& text : {name, std::string("SMTP"), address}) {
    entry += Wide(text);
    Put(entry, 0, 2);
  }
  return entry;
}

class MsgFile {
 public:
  MsgFile(const StoredMessage& message, std::string_view file)
      : message_(message), headers_(HeadersOf(file)), attachments_(std::string(file)) {}

  std::string Bytes() {
    AddRecipients(message_.to, kTo);
    AddRecipients(message_.cc, kCc);
    for (size_t i = 0; i < attachments_.List().size() && attached_ < kMostRows; ++i) {
      if (!attachments_.List()[i].isOfMessage) AddAttachment(i);
    }
    AddMessage();
    // Properties with names of their own: there are none, but their tables are.
    for (const char* table : {"00020102", "00030102", "00040102"}) {
      streams_.emplace_back(std::string("__nameid_version1.0/__substg1.0_") + table, "");
    }
    return CompoundFileBytes(streams_, kMessageFile);
  }

 private:
  void AddMessage() {
    std::string head(8, '\0');
    for (size_t count : {recipients_, attached_, recipients_, attached_}) Put(head, count, 4);
    head.resize(32);
    Properties properties("", std::move(head));
    properties.Text(kMessageClass, "IPM.Note");
    properties.Number(kStoreSupport, kTextsAreUnicode);
    std::string_view subject = message_.subject;
    std::string_view prefix = PrefixOf(subject);
    properties.Text(kSubject, subject);
    properties.Text(kSubjectPrefix, prefix);
    properties.Text(kNormalizedSubject, subject.substr(prefix.size()));
    properties.Text(kConversationTopic, subject.substr(prefix.size()));
    AddSender(properties);
    properties.Text(kDisplayTo, NamesOf(message_.to));
    properties.Text(kDisplayCc, NamesOf(message_.cc));
    properties.Time(kSubmitTime, message_.sent);
    properties.Time(kCreationTime, message_.sent);
    properties.Time(kDeliveryTime, message_.received ? message_.received : message_.sent);
    properties.Time(kModificationTime, message_.received ? message_.received : message_.sent);
    AddState(properties);
    properties.Flag(kHasAttachments, attached_ > 0);
    properties.Text(kBody, message_.body);
    if (!message_.htmlBody.empty()) {
      properties.Bytes(kHtml, message_.htmlBody);
      properties.Number(kCodepage, kUtf8Codepage);
    }
    properties.Text(kTransportHeaders, platform::EnsureUtf8(headers_));
    properties.Text(kMessageId, HeaderValue(headers_, "Message-ID"));
    properties.Text(kReferences, HeaderValue(headers_, "References"));
    properties.Text(kInReplyTo, HeaderValue(headers_, "In-Reply-To"));
    properties.Finish(streams_);
  }

  // Where nothing is known, read, as all mail here has been.
  void AddState(Properties& properties) const {
    constexpr uint32_t kReply = 102;
    constexpr uint32_t kForward = 104;
    constexpr uint32_t kFlagged = 2;
    const intake::MessageState& state = message_.state;
    properties.Number(kMessageFlags,
                      (state.IsUnread() ? 0 : kReadFlag) | (attached_ > 0 ? kAttachedFlag : 0));
    if (state.isAnswered || state.isForwarded) {
      properties.Number(kLastVerb, state.isAnswered ? kReply : kForward);
    }
    if (state.isFlagged) properties.Number(kFlagStatus, kFlagged);
  }

  void AddSender(Properties& properties) const {
    intake::AddressPair sender{message_.fromName, message_.fromAddress};
    std::string name = NameOf(sender);
    std::string address = Known(sender.Address, intake::kNoAddress);
    for (Property property : {kSenderName, kRepresentingName}) properties.Text(property, name);
    for (Property property : {kSenderType, kRepresentingType}) properties.Text(property, "SMTP");
    for (Property property : {kSenderAddress, kRepresentingAddress, kSenderSmtp, kRepresentingSmtp})
      properties.Text(property, address);
  }

  void AddRecipients(const std::vector<intake::AddressPair>& people, uint32_t type) {
    for (const intake::AddressPair& person : people) {
      if (recipients_ == kMostRows) return;
      auto row = static_cast<uint32_t>(recipients_++);
      std::string name = NameOf(person);
      std::string address = Known(person.Address, intake::kNoAddress);
      Properties properties("__recip_version1.0_#" + Hex8(row) + "/",
                            std::string(kHeadOfRow, '\0'));
      properties.Number(kRowId, row);
      properties.Number(kRecipientType, type);
      properties.Number(kObjectType, kMailUser);
      properties.Number(kDisplayType, 0);
      properties.Text(kDisplayName, name);
      properties.Text(kAddressType, "SMTP");
      properties.Text(kAddress, address);
      properties.Text(kSmtpAddress, address);
      properties.Bytes(kEntryId, OneOffEntry(name, address));
      properties.Finish(streams_);
    }
  }

  void AddAttachment(size_t index) {
    const Attachment& attachment = attachments_.List()[index];
    auto row = static_cast<uint32_t>(attached_++);
    size_t dot = attachment.name.rfind('.');
    Properties properties("__attach_version1.0_#" + Hex8(row) + "/", std::string(kHeadOfRow, '\0'));
    properties.Number(kAttachNumber, row);
    properties.Number(kAttachMethod, kByValue);
    properties.Number(kRenderingPlace, kNowhere);
    properties.Number(kObjectType, kAttachmentObject);
    properties.Number(kAttachSize, static_cast<uint32_t>(attachment.size));
    for (Property property : {kDisplayName, kAttachShortName, kAttachLongName}) {
      properties.Text(property, attachment.name);
    }
    if (dot != std::string::npos) properties.Text(kAttachExtension, attachment.name.substr(dot));
    properties.Text(kAttachType, attachment.type);
    properties.Text(kAttachContentId, attachment.contentId);
    properties.Bytes(kAttachBytes, attachments_.Bytes(index));
    properties.Finish(streams_);
  }

  const StoredMessage& message_;
  std::string_view headers_;
  MessageAttachments attachments_;
  std::vector<CompoundStream> streams_;
  size_t recipients_ = 0;
  size_t attached_ = 0;
};

}  // namespace

std::string MsgFileBytes(const StoredMessage& message, std::string_view file) {
  return MsgFile(message, file).Bytes();
}

}  // namespace tarnwick::takeout
