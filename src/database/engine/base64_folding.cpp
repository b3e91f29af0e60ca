// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/base64_folding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "platform/base64.h"

namespace tarnwick::jet {

namespace {

constexpr size_t kNumberSize = 4;
constexpr size_t kHeadSize = 2 * kNumberSize + 2;
constexpr std::string_view kLineEnds[] = {"\r\n", "\n"};
// Shorter lines may be words; fewer lines are not worth a part.
constexpr size_t kLeastGroups = 10;
constexpr size_t kMostGroups = 255;
constexpr uint32_t kLeastLines = 4;

struct Part {
  uint32_t plain = 0;
  uint32_t lines = 0;
  uint8_t groups = 0;
  uint8_t lineEnd = 0;
};

void PutNumber(uint32_t number, std::string& to) {
  for (size_t i = 0; i < kNumberSize; i++) to += static_cast<char>(number >> 8 * i);
}

uint32_t NumberAt(const char* place) {
  uint32_t number = 0;
  for (size_t i = 0; i < kNumberSize; i++) {
    number |= uint32_t{static_cast<unsigned char>(place[i])} << 8 * i;
  }
  return number;
}

// How the line at a place would be folded, as far as its length tells; of no groups where it
// wouldn't.
Part LineAt(std::string_view text, size_t place) {
  size_t end = std::min(text.find('\n', place), text.size());
  Part part;
  if (end == text.size()) return part;
  part.lineEnd = end > place && text[end - 1] == '\r' ? 0 : 1;
  size_t length = end + 1 - place - kLineEnds[part.lineEnd].size();
  bool isLike = length % 4 == 0 && length / 4 >= kLeastGroups && length / 4 <= kMostGroups;
  if (isLike) part.groups = static_cast<uint8_t>(length / 4);
  return part;
}

// Adds the bytes of the lines at a place that are as the first of them; gives how many.
uint32_t FoldLines(std::string_view text, size_t place, const Part& like, std::string& bytes) {
  std::string_view lineEnd = kLineEnds[like.lineEnd];
  size_t length = size_t{4} * like.groups;
  size_t whole = length + lineEnd.size();
  size_t byteCount = size_t{3} * like.groups;
  uint32_t lines = 0;
  for (; text.size() - place >= whole; lines++, place += whole) {
    if (text.compare(place + length, lineEnd.size(), lineEnd) != 0) break;
    bytes.resize(bytes.size() + byteCount);
    char* out = bytes.data() + bytes.size() - byteCount;
    if (!platform::DecodeBase64Groups(text.data() + place, like.groups, out)) {
      bytes.resize(bytes.size() - byteCount);
      break;
    }
  }
  return lines;
}

// A look at the line in the middle: most texts are none of these.
bool MayFold(std::string_view text) {
  size_t middle = text.find('\n', text.size() / 2);
  if (middle == std::string_view::npos) return false;
  Part like = LineAt(text, middle + 1);
  char bytes[3 * kMostGroups];
  return like.groups > 0 &&
         platform::DecodeBase64Groups(text.data() + middle + 1, like.groups, bytes);
}

}  // namespace

bool FoldBase64(std::string_view text, std::string& folded) {
  folded.clear();
  if (text.size() > std::numeric_limits<uint32_t>::max() || !MayFold(text)) return false;
  std::vector<Part> parts;
  std::string plain;
  std::string bytes;
  size_t done = 0;  // of the text is in parts
  auto add = [&](Part part, size_t until) {
    part.plain = static_cast<uint32_t>(until - done);
    plain.append(text, done, part.plain);
    parts.push_back(part);
  };
  for (size_t place = 0; place < text.size();) {
    Part part = LineAt(text, place);
    if (part.groups > 0) {
      size_t had = bytes.size();
      part.lines = FoldLines(text, place, part, bytes);
      if (part.lines >= kLeastLines) {
        add(part, place);
        place += part.lines * (size_t{4} * part.groups + kLineEnds[part.lineEnd].size());
        done = place;
        continue;
      }
      bytes.resize(had);
    }
    place = std::min(text.find('\n', place), text.size() - 1) + 1;
  }
  add({}, text.size());
  folded.reserve(kNumberSize + parts.size() * kHeadSize + plain.size() + bytes.size());
  PutNumber(static_cast<uint32_t>(parts.size()), folded);
  for (const Part& part : parts) {
    PutNumber(part.plain, folded);
    PutNumber(part.lines, folded);
    folded += static_cast<char>(part.groups);
    folded += static_cast<char>(part.lineEnd);
  }
  folded.append(plain).append(bytes);
  return folded.size() <= text.size() - text.size() / 8;
}

bool UnfoldBase64(std::string_view folded, char* text, size_t size) {
  if (folded.size() < kNumberSize) return false;
  uint64_t count = NumberAt(folded.data());
  std::string_view rest = folded.substr(kNumberSize);
  if (rest.size() / kHeadSize < count) return false;
  std::vector<Part> parts(count);
  uint64_t plainSize = 0;
  uint64_t byteSize = 0;
  uint64_t textSize = 0;
  for (Part& part : parts) {
    part = {NumberAt(rest.data()), NumberAt(rest.data() + kNumberSize),
            static_cast<uint8_t>(rest[2 * kNumberSize]),
            static_cast<uint8_t>(rest[2 * kNumberSize + 1])};
    rest.remove_prefix(kHeadSize);
    if (part.lineEnd >= std::size(kLineEnds)) return false;
    plainSize += part.plain;
    byteSize += uint64_t{3} * part.groups * part.lines;
    textSize +=
        part.plain + (uint64_t{4} * part.groups + kLineEnds[part.lineEnd].size()) * part.lines;
    if (textSize > size) return false;
  }
  if (textSize != size || plainSize + byteSize != rest.size()) return false;
  const char* plain = rest.data();
  const char* bytes = plain + plainSize;
  for (const Part& part : parts) {
    text = std::copy_n(plain, part.plain, text);
    plain += part.plain;
    std::string_view lineEnd = kLineEnds[part.lineEnd];
    for (uint32_t i = 0; i < part.lines; i++, bytes += size_t{3} * part.groups) {
      platform::EncodeBase64Groups(bytes, part.groups, text);
      text = std::copy(lineEnd.begin(), lineEnd.end(), text + size_t{4} * part.groups);
    }
  }
  return true;
}

}  // namespace tarnwick::jet
