// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/charset.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>

#include "platform/charset_names.h"
#include "platform/locale.h"

namespace tarnwick::platform {

namespace {

constexpr int32_t kReplacement = 0xFFFD;

// Each sequence that is no UTF-8 as one replacement character.
std::string ReplaceIllFormed(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (size_t position = 0; position < bytes.size();) {
    size_t end = SkipAscii(bytes, position);
    text.append(bytes, position, end - position);
    position = end;
    if (position == bytes.size()) break;
    size_t start = position;
    if (NextSequence(bytes, position) < 0) {
      AppendChar(text, kReplacement);
    } else {
      text.append(bytes, start, position - start);
    }
  }
  return text;
}

// Appends UTF-16 as UTF-8; a lead surrogate at the end waits in pending for its partner.
void AppendUtf16(std::string& text, const UChar* units, size_t count, UChar& pending) {
  for (size_t i = 0; i < count; ++i) {
    UChar unit = units[i];
    if (pending != 0) {
      UChar lead = pending;
      pending = 0;
      if (U16_IS_TRAIL(unit)) {
        AppendChar(text, U16_GET_SUPPLEMENTARY(lead, unit));
        continue;
      }
      AppendChar(text, kReplacement);
    }
    if (U16_IS_LEAD(unit)) {
      pending = unit;
    } else if (unit < 0x80) {
      text += static_cast<char>(unit);
    } else {
      AppendChar(text, U16_IS_TRAIL(unit) ? kReplacement : unit);
    }
  }
}

// Length of the ISO 2022 sequence at position that chooses a set (ESC ( B, ESC $ B, ESC $ ( D); 0
// when there is none.
size_t SetChoiceLength(std::string_view bytes, size_t position) {
  if (bytes.substr(position, 2) == "\x1B(") return position + 2 < bytes.size() ? 3 : 0;
  if (bytes.substr(position, 3) == "\x1B$(") return position + 3 < bytes.size() ? 4 : 0;
  if (bytes.substr(position, 3) == "\x1B$)") return 0;  // announces a set, does not choose it
  if (bytes.substr(position, 2) == "\x1B$") return position + 2 < bytes.size() ? 3 : 0;
  return 0;
}

// ISO 2022 text without choices of a set that is not used: harmless, usual where two encoded words
// meet, and taken by ICU for an attack.
std::string WithoutEmptyRuns(std::string_view bytes) {
  std::string clean;
  clean.reserve(bytes.size());
  for (size_t position = 0; position < bytes.size();) {
    size_t length = SetChoiceLength(bytes, position);
    if (length != 0 && SetChoiceLength(bytes, position + length) != 0) {
      position += length;
      continue;
    }
    size_t end = bytes.find('\x1B', position + 1);
    if (end == std::string_view::npos) end = bytes.size();
    clean.append(bytes, position, end - position);
    position = end;
  }
  return clean;
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// One charset, opened. Charsets of one byte a character become a table; the others keep ICU's
// converter.
class Charset {
 public:
  // nullptr when ICU knows no such charset.
  static std::unique_ptr<Charset> Open(const std::string& converterName) {
    std::unique_ptr<Charset> charset(new Charset);
    if (converterName == "UTF-8") {
      charset->isUtf8_ = true;
      return charset;
    }
    if (converterName.empty()) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    charset->converter_.reset(ucnv_open(converterName.c_str(), &status));
    if (U_FAILURE(status) || !charset->converter_) return nullptr;
    charset->LookAtAscii();
    UConverterType type = ucnv_getType(charset->converter_.get());
    if (type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII) charset->MakeTable();
    return charset;
  }

  // Every ASCII byte stands for itself and for nothing else.
  bool HoldsAscii() const { return holdsAscii_; }

  std::string Convert(std::string_view bytes) {
    if (isUtf8_) return IsValidUtf8(bytes) ? std::string(bytes) : ReplaceIllFormed(bytes);
    if (isTable_) return ConvertByTable(bytes);
    return isEscaped_ ? ConvertByIcu(WithoutEmptyRuns(bytes)) : ConvertByIcu(bytes);
  }

 private:
  struct Encoded {
    char bytes[3];
    uint8_t length;
  };

  void LookAtAscii() {
    switch (ucnv_getType(converter_.get())) {
      case UCNV_ISO_2022:
        isEscaped_ = true;
        holdsAscii_ = false;
        return;
      case UCNV_HZ:
      case UCNV_UTF7:
      case UCNV_IMAP_MAILBOX:
      case UCNV_SCSU:
        holdsAscii_ = false;
        return;
      default:
        break;
    }
    std::string ascii = "\t\r\n";
    for (char c = ' '; c < 0x7F; ++c) ascii += c;
    holdsAscii_ = ConvertByIcu(ascii) == ascii;
  }

  void MakeTable() {
    for (int value = 0; value < 256; ++value) {
      char byte = static_cast<char>(value);
      UChar unit = 0;
      UErrorCode status = U_ZERO_ERROR;
      int32_t count = ucnv_toUChars(converter_.get(), &unit, 1, &byte, 1, &status);
      // A byte that the charset leaves undefined keeps its value, as Windows has it.
      if (U_FAILURE(status) || count != 1 || unit == kReplacement) {
        unit = static_cast<UChar>(value);
      }
      std::string utf8;
      AppendChar(utf8, unit);
      Encoded& entry = table_[static_cast<size_t>(value)];
      std::memcpy(entry.bytes, utf8.data(), utf8.size());
      entry.length = static_cast<uint8_t>(utf8.size());
    }
    isTable_ = true;
  }

  std::string ConvertByTable(std::string_view bytes) const {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    for (size_t position = 0; position < bytes.size();) {
      size_t end = holdsAscii_ ? SkipAscii(bytes, position) : position;
      text.append(bytes, position, end - position);
      for (position = end; position < bytes.size(); ++position) {
        auto byte = static_cast<unsigned char>(bytes[position]);
        if (holdsAscii_ && byte < 0x80) break;
        text.append(table_[byte].bytes, table_[byte].length);
      }
    }
    return text;
  }

  std::string ConvertByIcu(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    std::array<UChar, 4096> units;
    UChar pending = 0;
    const char* source = bytes.data();
    const char* limit = source + bytes.size();
    ucnv_resetToUnicode(converter_.get());
    for (;;) {
      UChar* target = units.data();
      UErrorCode status = U_ZERO_ERROR;
      ucnv_toUnicode(converter_.get(), &target, units.data() + units.size(), &source, limit,
                     nullptr, true, &status);
      AppendUtf16(text, units.data(), static_cast<size_t>(target - units.data()), pending);
      if (status == U_BUFFER_OVERFLOW_ERROR) continue;
      if (U_SUCCESS(status) || source == limit) break;
      // ICU gave up on a sequence: what stands behind it is still text.
      AppendChar(text, kReplacement);
      ++source;
      ucnv_resetToUnicode(converter_.get());
    }
    if (pending != 0) AppendChar(text, kReplacement);
    return text;
  }

  std::unique_ptr<UConverter, CloseConverter> converter_;
  bool isUtf8_ = false;
  bool isTable_ = false;
  bool holdsAscii_ = true;
  bool isEscaped_ = false;  // ISO 2022
  std::array<Encoded, 256> table_{};
};

// The open charsets of this thread, nullptr for names that are known to be unknown. The pointer is
// valid until the next call: when messages have brought up too many names the shelf is emptied.
Charset* FindCharset(std::string_view name) {
  constexpr size_t kMostOpen = 64;
  thread_local std::map<std::string, std::unique_ptr<Charset>, std::less<>> shelf;
  auto found = shelf.find(name);
  if (found != shelf.end()) return found->second.get();
  std::string normal = NormalCharsetName(name);
  found = shelf.find(normal);
  if (found != shelf.end()) return found->second.get();
  if (shelf.size() >= kMostOpen) shelf.clear();
  return shelf.emplace(normal, Charset::Open(ConverterName(normal))).first->second.get();
}

}  // namespace

bool IsKnownCharset(std::string_view name) {
  return FindCharset(name) != nullptr;
}

std::optional<std::string> CharsetToUtf8(std::string_view bytes, std::string_view charset) {
  Charset* found = FindCharset(charset);
  if (found == nullptr) return std::nullopt;
  if (found->HoldsAscii() && IsAscii(bytes)) return std::string(bytes);
  return found->Convert(bytes);
}

std::string BytesToUtf8(std::string_view bytes, std::string_view charset) {
  if (auto text = CharsetToUtf8(bytes, charset)) return *std::move(text);
  if (IsAscii(bytes)) return std::string(bytes);
  if (auto text = CharsetToUtf8(bytes, SystemCodePage())) return *std::move(text);
  return ReplaceIllFormed(bytes);
}

std::string EnsureUtf8(std::string_view text) {
  return IsValidUtf8(text) ? std::string(text) : BytesToUtf8(text, {});
}

std::string MendUtf8(std::string_view text) {
  std::string mended;
  mended.reserve(text.size() + text.size() / 4);
  size_t stray = 0;  // bytes before position that are no UTF-8
  auto mend = [&](size_t position) {
    if (stray == 0) return;
    mended += *CharsetToUtf8(text.substr(position - stray, stray), "windows-1252");
    stray = 0;
  };
  for (size_t position = 0; position < text.size();) {
    size_t start = position;
    if (NextChar(text, position) >= kNoChar) {
      stray++;
      continue;
    }
    mend(start);
    mended.append(text, start, position - start);
  }
  mend(text.size());
  return mended;
}

std::string Utf16ToUtf8(std::string_view bytes) {
  std::string text;
  UChar pending = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    auto unit = static_cast<UChar>(static_cast<unsigned char>(bytes[i]) |
                                   static_cast<unsigned char>(bytes[i + 1]) << 8);
    if (unit == 0) break;
    AppendUtf16(text, &unit, 1, pending);
  }
  if (pending != 0) AppendChar(text, kReplacement);
  return text;
}

}  // namespace tarnwick::platform
