// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The small pieces of a store file: its header, timestamps, and what an info object tells about a
// message.
#include <cstdio>

#include "core/guard.h"
#include "core/messages.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/error.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kKindPlace = 4;
constexpr size_t kFolderRootPlace = 0x30;
constexpr size_t kMessageRootPlace = 0xE4;
constexpr uint8_t kFolderListKind = 0xC6;

constexpr size_t kDateWords = 50;

constexpr const char* kNoSubject = "no subject";

// Bytes of a key's parts; with all of them a key stays below the 255 characters that are stored.
constexpr size_t kMaxKeyText = 200;
constexpr size_t kKeySubject = 100;
constexpr size_t kKeyAddress = 80;

// What the index says about the bytes behind the timestamp.
class InfoTexts {
 public:
  InfoTexts(const InfoIndex& index, std::string_view bytes) : index_(index), bytes_(bytes) {
    size_t behind = index.dataSize > index.firstByte ? index.dataSize - index.firstByte : 0;
    bytes_ = bytes_.substr(0, behind);
  }

  // The bytes of a text, "" when the object has none. A short one may stand in the entry itself.
  std::string Raw(IndexNumber number) const {
    for (const auto& [flagged, value] : index_.entries) {
      if ((flagged & ~kDirectFlag) != number) continue;
      if ((flagged & kDirectFlag) != 0) {
        std::string text;
        for (uint32_t rest = value; (rest & 0xFF) != 0; rest >>= 8) {
          text += static_cast<char>(rest & 0xFF);
        }
        return text;
      }
      if (value < index_.firstByte) return {};
      return std::string(ZeroTerminated(bytes_, value - index_.firstByte));
    }
    return {};
  }

  std::string Text(IndexNumber number) const { return platform::BytesToUtf8(Raw(number), ""); }

  uint32_t Number(IndexNumber number) const {
    for (const auto& [flagged, value] : index_.entries) {
      if ((flagged & ~kDirectFlag) != number) continue;
      if ((flagged & kDirectFlag) != 0) return value;
      size_t place = value - index_.firstByte;
      return value >= index_.firstByte && place + 4 <= bytes_.size() ? Get32(bytes_, place) : 0;
    }
    return 0;
  }

 private:
  const InfoIndex& index_;
  std::string_view bytes_;
};

// A Message-ID as it stands, unless storing would cut it or change its quotation marks.
std::string KeyOfMessageId(const std::string& id) {
  if (id.size() <= kMaxKeyText && id.find_first_of("'\"") == std::string::npos) return id;
  return std::string(platform::FirstChars(id, kKeySubject)) + "_" + HexText(Hash(id));
}

// Of what the object says about the letter, but for what changes when it is moved.
uint64_t HashOfContent(const InfoTexts& texts, uint64_t hash) {
  for (IndexNumber number :
       {kSubject, kSenderName, kSenderAddress, kReceiverName, kReceiverAddress}) {
    hash = Hash(texts.Raw(number), hash);
    hash = Hash(std::string_view("\0", 1), hash);
  }
  return Hash(std::to_string(texts.Number(kMessageLength)), hash);
}

// Letters of one Message-ID may differ: what a mailing list makes of one, a copy without its
// attachments.
std::string KeyOfLetter(const InfoTexts& texts, const std::string& id) {
  return KeyOfMessageId(id) + "_" + std::to_string(texts.Number(kMessageLength)) + "_" +
         HexText(HashOfContent(texts, Hash("")));
}

// For mail without a Message-ID: what a person would tell it by, and a hash that fractions of a
// second go into as well.
std::string KeyOfContent(const InfoTexts& texts, const std::string& subject, uint64_t fileTime) {
  uint64_t hash = HashOfContent(texts, Hash(std::to_string(fileTime)));
  std::string address = texts.Text(kSenderAddress);
  return std::string(platform::FirstChars(subject, kKeySubject)) + "_" +
         std::string(platform::FirstChars(address, kKeyAddress)) + "_" +
         std::to_string(texts.Number(kMessageLength)) + "_" + HexText(hash);
}

}  // namespace

uint64_t Hash(std::string_view text, uint64_t hash) {
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
  return hash;
}

std::string HexText(uint64_t number) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
  return text;
}

void ReadDbxHeader(const std::string& fileName) {
  State().Header = DbxHeader();
  core::GuardedRun("ReadDbxHeader", [&] {
    ByteReader file(fileName);
    std::string bytes(file.Read(0, kHeaderSize));
    bytes.resize(kHeaderSize, '\0');
    DbxHeader& header = State().Header;
    header.kind = Get8(bytes, kKindPlace);
    header.folderRoot = Get32(bytes, kFolderRootPlace);
    header.itemCount = Get32(bytes, kItemCountPlace);
    header.messageRoot = Get32(bytes, kMessageRootPlace);
  });
}

bool IsFolderTreeFile(const std::string& fileName) {
  return core::Guarded("IsFolderTreeFile", false, [&] {
    ByteReader file(fileName);
    std::string_view head = file.Read(0, kKindPlace + 1);
    return head.size() > kKindPlace && Get8(head, kKindPlace) == kFolderListKind;
  });
}

size_t FindInfoDate(ByteReader& file, uint32_t infoOffset, int entryCount) {
  return core::Guarded("FindInfoDate", size_t{0}, [&]() -> size_t {
    const DateTime earliest = DateTime::FromDate(1990, 1, 1);
    const DateTime latest = DateTime::FromDate(2010, 1, 1);
    std::string_view words = file.Read(uint64_t{infoOffset} + kInfoHead, 4 * kDateWords);
    // Words are counted from 1, so the scan begins at the last index entry.
    auto first = static_cast<size_t>(entryCount < 1 ? 1 : entryCount);
    for (size_t k = first; k < kDateWords && 4 * (k + 1) <= words.size(); ++k) {
      DateTime date = FileTimeToDate(Get64(words, 4 * (k - 1)), true);
      if (date > earliest && date < latest) return 4 * (k - 1);
    }
    return 0;
  });
}

DateTime FileTimeToDate(uint64_t fileTime, bool lenient) {
  constexpr uint64_t kFirstRefused = 0x8000000000000000ULL;
  constexpr int kInvalidParameter = 87;
  constexpr uint64_t kTicksPerSecond = 10'000'000;
  constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  const DateTime noDate = DateTime::FromDate(1900, 1, 1);
  if (fileTime >= kFirstRefused) {
    if (lenient) return noDate;
    core::WriteLog("System message code is " + std::to_string(kInvalidParameter));
    throw Error(ErrorNumber::kSystemCode, "The time can't be converted");
  }
  auto seconds = static_cast<int64_t>(fileTime / kTicksPerSecond) - kSecondsFrom1601To1970;
  DateTime date = DateTime::FromSeconds(seconds);
  if (date < DateTime::FromDate(1901, 1, 1) || date >= DateTime::FromDate(2050, 1, 1)) {
    return noDate;
  }
  return date;
}

MessageInfo ParseMessageInfo(std::string_view infoBytes, DateTime date, const InfoIndex& index) {
  MessageInfo info = {date, kNoSubject, kNoSubject, "", 0, "", ""};
  core::GuardedRun("ParseMessageInfo", [&] {
    InfoTexts texts(index, infoBytes);
    std::string subject = texts.Text(kSubject);
    if (subject.empty()) subject = texts.Text(kPlainSubject);
    // The objects of mail are never without an index; one that is may still begin with a subject.
    if (index.entries.empty()) {
      subject = platform::BytesToUtf8(ZeroTerminated(infoBytes, 0), "");
      if (subject.empty()) return;
    }
    std::string id = texts.Text(kMessageId);
    info.keyText =
        id.empty() ? KeyOfContent(texts, subject, index.fileTime) : KeyOfLetter(texts, id);
    if (!id.empty()) info.formerKeyText = KeyOfMessageId(id);
    info.length = texts.Number(kMessageLength);
    info.messageId = id;
    info.senderAddress = texts.Raw(kSenderAddress);
    if (!subject.empty()) info.subject = subject;
  });
  return info;
}

std::string MakeEntryKey(const std::string& keyText, DateTime date) {
  return keyText + "_" + date.ToKeyText();
}

}  // namespace tarnwick::oe
