// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/raw_row.h"

#include <algorithm>

#include "outlook/mapi_text.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

constexpr int64_t kUnixEpochSeconds = 11'644'473'600;  // from 1601-01-01, where FILETIMEs begin
constexpr int64_t kTicksPerSecond = 10'000'000;

int64_t Signed(const std::string& bytes) {
  uint64_t value = 0;
  size_t count = std::min<size_t>(bytes.size(), 8);
  for (size_t i = 0; i < count; ++i) {
    value |= static_cast<uint64_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
  }
  if (count == 4) return static_cast<int32_t>(value);
  return static_cast<int64_t>(value);
}

int64_t NumberIn(const RawRow& row, Prop property) {
  for (const RawProperty& raw : row) {
    if (raw.number == static_cast<uint16_t>(property) &&
        (raw.type == PropType::kInt32 || raw.type == PropType::kInt16)) {
      return Signed(raw.bytes);
    }
  }
  return 0;
}

void SetDecoded(PropertySet& set, const RawProperty& raw, const std::string& charset) {
  auto property = static_cast<Prop>(raw.number);
  switch (raw.type) {
    case PropType::kUnicode:
      return set.SetText(property, TextFromUtf16(raw.bytes));
    case PropType::kString8:
      return set.SetText(property, TextFromBytes(raw.bytes, charset));
    case PropType::kInt16:
    case PropType::kInt32:
    case PropType::kInt64:
    case PropType::kBoolean:
      return set.SetNumber(property, Signed(raw.bytes));
    case PropType::kTime:
      if (raw.bytes.size() >= 8) {
        int64_t ticks = Signed(raw.bytes);
        if (ticks > 0) set.SetTime(property, ticks / kTicksPerSecond - kUnixEpochSeconds);
      }
      return;
    case PropType::kBinary:
      return set.SetBytes(property, raw.bytes);
    default:
      return;
  }
}

// A subject begins with a mark and the length of its prefix ("Re: ") where it has one.
std::string WithoutPrefixMark(const std::string& subject) {
  return !subject.empty() && subject[0] == '\x01'
             ? subject.substr(std::min<size_t>(2, subject.size()))
             : subject;
}

}  // namespace

bool HasByteTexts(const RawRow& row) {
  return std::any_of(row.begin(), row.end(), [](const RawProperty& raw) {
    return raw.type == PropType::kString8 && !platform::IsAscii(raw.bytes);
  });
}

std::string CharsetOfWriter(const RawRow& properties) {
  std::string charset = CharsetOfCodepage(NumberIn(properties, Prop::kMessageCodepage));
  if (!charset.empty()) return charset;
  return CharsetOfCodepage(CodepageOfLocale(NumberIn(properties, Prop::kMessageLocale)));
}

std::string CharsetOfMessage(const RawRow& properties) {
  std::string charset = CharsetOfWriter(properties);
  if (!charset.empty()) return charset;
  return CharsetOfCodepage(AnsiCodepageOf(NumberIn(properties, Prop::kInternetCodepage)));
}

PropertySet Decode(const RawRow& row, const std::string& charset) {
  PropertySet set;
  for (const RawProperty& raw : row) SetDecoded(set, raw, charset);
  const std::string& subject = set.Text(Prop::kSubject);
  if (!subject.empty()) set.SetText(Prop::kSubject, WithoutPrefixMark(subject));
  return set;
}

}  // namespace tarnwick::outlook
