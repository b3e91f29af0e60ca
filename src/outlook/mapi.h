// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The properties of stores, folders, items, recipients and attachments that the import uses, by
// their MAPI numbers ([MS-OXPROPS]), and a set of their values.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tarnwick::outlook {

enum class Prop : uint16_t {
  kImportance = 0x0017,
  kMessageClass = 0x001A,
  kSubject = 0x0037,
  kClientSubmitTime = 0x0039,
  kSentRepresentingName = 0x0042,
  kReceivedByName = 0x0040,
  kReceivedRepresentingName = 0x0044,
  kReplyRecipientNames = 0x0050,
  kSentRepresentingAddressType = 0x0064,
  kSentRepresentingAddress = 0x0065,
  kReceivedByAddressType = 0x0075,
  kReceivedByAddress = 0x0076,
  kTransportHeaders = 0x007D,
  kRecipientType = 0x0C15,
  kSenderName = 0x0C1A,
  kSenderAddressType = 0x0C1E,
  kSenderAddress = 0x0C1F,
  kDeliveryTime = 0x0E06,
  kMessageFlags = 0x0E07,
  kRecordKey = 0x0FF9,
  kBody = 0x1000,
  kRtfCompressed = 0x1009,
  kHtml = 0x1013,
  kMessageId = 0x1035,
  kReferences = 0x1039,
  kInReplyTo = 0x1042,
  kIconIndex = 0x1080,
  kLastVerbExecuted = 0x1081,
  kFlagStatus = 0x1090,
  kDisplayName = 0x3001,
  kAddressType = 0x3002,
  kAddress = 0x3003,
  kCreationTime = 0x3007,
  kModificationTime = 0x3008,
  kIpmSubtree = 0x35E0,
  kOutboxEntry = 0x35E2,
  kDeletedItemsEntry = 0x35E3,
  kSentMailEntry = 0x35E4,
  kContentCount = 0x3602,
  kContainerClass = 0x3613,
  kAttachData = 0x3701,
  kAttachExtension = 0x3703,
  kAttachShortName = 0x3704,
  kAttachMethod = 0x3705,
  kAttachLongName = 0x3707,
  kAttachMimeType = 0x370E,
  kAttachContentId = 0x3712,
  kSmtpAddress = 0x39FE,
  kInternetCodepage = 0x3FDE,
  kMessageLocale = 0x3FF1,
  kMessageCodepage = 0x3FFD,
  kSenderSmtpAddress = 0x5D01,
  kSentRepresentingSmtpAddress = 0x5D02,
  kReceivedBySmtpAddress = 0x5D07,
  kRecipientDisplayName = 0x5FF6,
  kPstPassword = 0x67FF,
};

// Value types of properties.
namespace PropType {
inline constexpr uint16_t kInt16 = 0x0002;
inline constexpr uint16_t kInt32 = 0x0003;
inline constexpr uint16_t kBoolean = 0x000B;
inline constexpr uint16_t kInt64 = 0x0014;
inline constexpr uint16_t kString8 = 0x001E;
inline constexpr uint16_t kUnicode = 0x001F;
inline constexpr uint16_t kTime = 0x0040;
inline constexpr uint16_t kBinary = 0x0102;
}  // namespace PropType

namespace MessageFlag {
inline constexpr int64_t kRead = 0x01;
inline constexpr int64_t kUnsent = 0x08;
}  // namespace MessageFlag
namespace IconIndex {
inline constexpr int64_t kReplied = 0x105;
inline constexpr int64_t kForwarded = 0x106;
}  // namespace IconIndex
// What was last done with a message.
namespace Verb {
inline constexpr int64_t kReply = 102;
inline constexpr int64_t kReplyToAll = 103;
inline constexpr int64_t kForward = 104;
}  // namespace Verb
namespace FlagStatus {
inline constexpr int64_t kFlagged = 2;  // 1: the flag was ticked off
}
namespace RecipientType {
inline constexpr int64_t kTo = 1;
inline constexpr int64_t kCc = 2;
inline constexpr int64_t kBcc = 3;
}  // namespace RecipientType
namespace AttachMethod {
inline constexpr int64_t kByValue = 1;
inline constexpr int64_t kEmbeddedMessage = 5;
}  // namespace AttachMethod

// Texts are UTF-8, bytes are as stored. A property that is missing, or of another type than it is
// asked for, gives the empty value.
class PropertySet {
 public:
  void SetText(Prop property, std::string utf8) {
    values_[property] = {Kind::kText, 0, std::move(utf8)};
  }
  void SetBytes(Prop property, std::string bytes) {
    values_[property] = {Kind::kBytes, 0, std::move(bytes)};
  }
  void SetNumber(Prop property, int64_t number) { values_[property] = {Kind::kNumber, number, {}}; }
  // Seconds since 1970-01-01 UTC.
  void SetTime(Prop property, int64_t unixSeconds) {
    values_[property] = {Kind::kTime, unixSeconds, {}};
  }

  const std::string& Text(Prop property) const { return Chars(property, Kind::kText); }
  const std::string& Bytes(Prop property) const { return Chars(property, Kind::kBytes); }
  int64_t Number(Prop property, int64_t missing = 0) const {
    auto found = values_.find(property);
    bool isNumber = found != values_.end() && found->second.kind == Kind::kNumber;
    return isNumber ? found->second.number : missing;
  }
  std::optional<int64_t> Time(Prop property) const {
    auto found = values_.find(property);
    if (found == values_.end() || found->second.kind != Kind::kTime) return std::nullopt;
    return found->second.number;
  }
  bool IsEmpty() const { return values_.empty(); }

 private:
  enum class Kind { kText, kBytes, kNumber, kTime };
  struct Value {
    Kind kind = Kind::kNumber;
    int64_t number = 0;
    std::string chars;
  };
  const std::string& Chars(Prop property, Kind kind) const {
    static const std::string kEmpty;
    auto found = values_.find(property);
    return found != values_.end() && found->second.kind == kind ? found->second.chars : kEmpty;
  }
  std::map<Prop, Value> values_;
};

}  // namespace tarnwick::outlook
