// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Names for new files.
#include <algorithm>
#include <cstring>

#include "platform/charset.h"
#include "platform/files.h"
#include "platform/system_files.h"

namespace tarnwick::platform {

namespace {

// Windows takes "con" for the console whatever stands behind a dot or a blank.
bool IsDeviceName(std::string_view name) {
  std::string_view stem = name.substr(0, name.find('.'));
  while (!stem.empty() && stem.back() == ' ') stem.remove_suffix(1);
  std::string lower = AsciiLower(stem);
  for (std::string_view device : {"con", "prn", "aux", "nul", "conin$", "conout$"}) {
    if (lower == device) return true;
  }
  if (lower.compare(0, 3, "com") != 0 && lower.compare(0, 3, "lpt") != 0) return false;
  std::string_view number = std::string_view(lower).substr(3);
  return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\u00B9" ||
         number == "\u00B2" || number == "\u00B3";
}

// Length of the UTF-8 sequence that begins at position, 0 when it is none.
size_t SequenceLength(std::string_view text, size_t position) {
  auto lead = static_cast<unsigned char>(text[position]);
  size_t length = lead < 0x80                   ? 1
                  : lead >= 0xC2 && lead < 0xE0 ? 2
                  : (lead & 0xF0) == 0xE0       ? 3
                  : lead >= 0xF0 && lead < 0xF5 ? 4
                                                : 0;
  if (length == 0 || position + length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[position + i]) & 0xC0) != 0x80) return 0;
  }
  if (length < 3) return length;
  // Neither longer than need be nor half a pair nor beyond the last character.
  auto second = static_cast<unsigned char>(text[position + 1]);
  bool isOff = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second >= 0xA0) ||
               (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second >= 0x90);
  return isOff ? 0 : length;
}

// Characters that hide in a name: controls, and the marks that reverse or hide text in a listing.
bool IsUnseemly(std::string_view sequence) {
  if (sequence.size() == 1) {
    auto c = static_cast<unsigned char>(sequence[0]);
    return c < 0x20 || c == 0x7F || std::strchr("/\\:*?\"<>|", c) != nullptr;
  }
  if (sequence == "\u061C") return true;
  if (sequence.size() == 2)
    return sequence[0] == '\xC2' && static_cast<unsigned char>(sequence[1]) < 0xA0;
  if (sequence.size() == 3 && sequence[0] == '\xE2' &&
      (sequence[1] == '\x80' || sequence[1] == '\x81')) {
    auto last = static_cast<unsigned char>(sequence[2]);
    if (sequence[1] == '\x80')
      return (last >= 0x8B && last <= 0x8F) || (last >= 0xA8 && last <= 0xAE);
    return last >= 0xA6 && last <= 0xA9;
  }
  return sequence == "\xEF\xBB\xBF";
}

}  // namespace

std::string SafeFileName(std::string_view name, size_t maxChars) {
  std::vector<std::string> characters;
  for (size_t position = 0; position < name.size();) {
    size_t length = SequenceLength(name, position);
    std::string_view sequence = name.substr(position, length == 0 ? 1 : length);
    characters.emplace_back(length == 0 || IsUnseemly(sequence) ? "_" : sequence);
    position += sequence.size();
  }
  auto blankOrDot = [](const std::string& c) { return c == "." || c == " "; };
  while (!characters.empty() && blankOrDot(characters.back())) characters.pop_back();
  size_t start = 0;
  while (start < characters.size() && blankOrDot(characters[start])) ++start;
  characters.erase(characters.begin(), characters.begin() + static_cast<std::ptrdiff_t>(start));

  // A file system counts bytes: 255 in a name, of which UniquePath wants a few.
  constexpr size_t kMaxExtension = 10;
  constexpr size_t kMaxBytes = 200;
  size_t dot = characters.size();
  for (size_t i = characters.size(); i-- > 1;) {
    if (characters[i] == ".") {
      if (characters.size() - i <= kMaxExtension) dot = i;
      break;
    }
  }
  std::string extension;
  for (size_t i = dot; i < characters.size(); ++i) extension += characters[i];
  size_t room = maxChars - std::min(maxChars, characters.size() - dot);
  std::string stem;
  for (size_t i = 0; i < dot && i < room; ++i) {
    if (stem.size() + characters[i].size() + extension.size() > kMaxBytes) break;
    stem += characters[i];
  }
  // What was cut may have ended well.
  while (extension.empty() && !stem.empty() && (stem.back() == '.' || stem.back() == ' ')) {
    stem.pop_back();
  }
  // A command to which the name is given would take "-rf" for an option of its own.
  bool isOption = !stem.empty() && stem[0] == '-';
  if (isOption || IsDeviceName(stem)) stem.insert(0, "_");
  return stem + extension;
}

std::string UniquePath(const std::string& folder, const std::string& name) {
  auto isTaken = [](const std::string& path) {
    return system::KindOf(path) != system::Kind::kNone;
  };
  if (!isTaken(folder + name)) return folder + name;
  size_t dot = name.rfind('.');
  if (dot == 0 || dot == std::string::npos) dot = name.size();
  auto numbered = [&](uint64_t number) {
    return folder + name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot);
  };
  uint64_t taken = 1;
  uint64_t free = 2;
  while (isTaken(numbered(free))) {
    taken = free;
    free *= 2;
  }
  while (free - taken > 1) {
    uint64_t middle = taken + (free - taken) / 2;
    (isTaken(numbered(middle)) ? taken : free) = middle;
  }
  return numbered(free);
}

}  // namespace tarnwick::platform
