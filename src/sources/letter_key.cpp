// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/letter_key.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/utf8.h"

namespace tarnwick::sources {

namespace {

constexpr std::array<uint64_t, 8> kStart = {
    0x6a09e667f3bcc908, 0xbb67ae8584caa73b, 0x3c6ef372fe94f82b, 0xa54ff53a5f1d36f1,
    0x510e527fade682d1, 0x9b05688c2b3e6c1f, 0x1f83d9abfb41bd6b, 0x5be0cd19137e2179};

constexpr unsigned char kOrder[10][16] = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
                                          {14, 10, 4, 8, 9, 15, 13, 6, 1, 12, 0, 2, 11, 7, 5, 3},
                                          {11, 8, 12, 0, 5, 2, 15, 13, 10, 14, 3, 6, 7, 1, 9, 4},
                                          {7, 9, 3, 1, 13, 12, 11, 14, 2, 6, 5, 10, 4, 0, 15, 8},
                                          {9, 0, 5, 7, 2, 4, 10, 15, 14, 1, 11, 12, 6, 8, 3, 13},
                                          {2, 12, 6, 10, 0, 11, 8, 3, 4, 13, 7, 5, 15, 14, 1, 9},
                                          {12, 5, 1, 15, 14, 13, 4, 10, 0, 7, 6, 3, 9, 2, 8, 11},
                                          {13, 11, 7, 14, 12, 1, 3, 9, 5, 0, 15, 4, 8, 6, 2, 10},
                                          {6, 15, 14, 9, 11, 3, 0, 8, 12, 2, 13, 7, 1, 4, 10, 5},
                                          {10, 2, 8, 4, 7, 6, 1, 5, 15, 11, 9, 14, 3, 12, 13, 0}};
constexpr int kRounds = 12;

void Mix(std::array<uint64_t, 16>& v, size_t a, size_t b, size_t c, size_t d, uint64_t x,
         uint64_t y) {
  v[a] += v[b] + x;
  v[d] = std::rotr(v[d] ^ v[a], 32);
  v[c] += v[d];
  v[b] = std::rotr(v[b] ^ v[c], 24);
  v[a] += v[b] + y;
  v[d] = std::rotr(v[d] ^ v[a], 16);
  v[c] += v[d];
  v[b] = std::rotr(v[b] ^ v[c], 63);
}

uint64_t Word(const unsigned char* bytes) {
  uint64_t word = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&word, bytes, sizeof word);
  } else {
    for (size_t i = 8; i-- > 0;) word = word << 8 | bytes[i];
  }
  return word;
}

// Headers in which mail programs keep the state of a letter, or what hangs on how it is kept.
constexpr std::string_view kStateHeaders[] = {"status",
                                              "x-status",
                                              "x-mozilla-status",
                                              "x-mozilla-status2",
                                              "x-mozilla-keys",
                                              "x-account-key",
                                              "x-uidl",
                                              "x-uid",
                                              "x-imap",
                                              "x-imapbase",
                                              "x-keywords",
                                              "content-length",
                                              "lines",
                                              "x-evolution",
                                              "x-evolution-source"};

bool IsStateHeader(std::string_view line) {
  constexpr size_t kLongest = 20;
  size_t colon = line.substr(0, kLongest).find(':');
  if (colon == std::string_view::npos) return false;
  std::string name = platform::AsciiLower(line.substr(0, colon));
  return std::find(std::begin(kStateHeaders), std::end(kStateHeaders), name) !=
         std::end(kStateHeaders);
}

// A line is kept back until it is whole, up to this length.
constexpr size_t kMostOfLine = size_t{64} * 1024;

}  // namespace

Blake2b::Blake2b() : state_(kStart) {
  state_[0] ^= 0x01010000 ^ kResultSize;
}

void Blake2b::Compress(const unsigned char* block, bool isLast) {
  std::array<uint64_t, 16> words{};
  for (size_t i = 0; i < words.size(); ++i) words[i] = Word(block + 8 * i);
  std::array<uint64_t, 16> v{};
  std::copy(state_.begin(), state_.end(), v.begin());
  std::copy(kStart.begin(), kStart.end(), v.begin() + 8);
  v[12] ^= count_;
  if (isLast) v[14] = ~v[14];
  for (int round = 0; round < kRounds; ++round) {
    const unsigned char* at = kOrder[round % 10];
    Mix(v, 0, 4, 8, 12, words[at[0]], words[at[1]]);
    Mix(v, 1, 5, 9, 13, words[at[2]], words[at[3]]);
    Mix(v, 2, 6, 10, 14, words[at[4]], words[at[5]]);
    Mix(v, 3, 7, 11, 15, words[at[6]], words[at[7]]);
    Mix(v, 0, 5, 10, 15, words[at[8]], words[at[9]]);
    Mix(v, 1, 6, 11, 12, words[at[10]], words[at[11]]);
    Mix(v, 2, 7, 8, 13, words[at[12]], words[at[13]]);
    Mix(v, 3, 4, 9, 14, words[at[14]], words[at[15]]);
  }
  for (size_t i = 0; i < state_.size(); ++i) state_[i] ^= v[i] ^ v[i + 8];
}

void Blake2b::Add(std::string_view bytes) {
  while (!bytes.empty()) {
    // The last block is another than those before it: a full one waits for the next byte.
    if (used_ == kBlockSize) {
      count_ += kBlockSize;
      Compress(block_.data(), false);
      used_ = 0;
    }
    size_t taken = std::min(kBlockSize - used_, bytes.size());
    std::memcpy(block_.data() + used_, bytes.data(), taken);
    used_ += taken;
    bytes.remove_prefix(taken);
  }
}

std::string Blake2b::Finish() {
  count_ += used_;
  std::fill(block_.begin() + static_cast<std::ptrdiff_t>(used_), block_.end(),
            static_cast<unsigned char>(0));
  Compress(block_.data(), true);
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < kResultSize; ++i) {
    auto byte = static_cast<unsigned char>(state_[i / 8] >> (8 * (i % 8)));
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 15]);
  }
  return text;
}

void LetterKey::AddText(std::string_view text) {
  for (; emptyLines_ > 0; --emptyLines_) hash_.Add("\n");
  hash_.Add(text);
}

// Part of a line that is too long to be kept back. A CR at its end may be that of the line's end.
void LetterKey::AddLongPart(std::string_view part) {
  if (part.empty()) return;
  if (endsInReturn_) AddText("\r");
  endsInReturn_ = part.back() == '\r';
  if (endsInReturn_) part.remove_suffix(1);
  AddText(part);
}

// A whole line without its LF.
void LetterKey::AddLine(std::string_view line) {
  bool isLong = isLongLine_ || line.size() >= kMostOfLine;
  if (isLong) {
    AddLongPart(line);
    AddText("\n");
    endsInReturn_ = isLongLine_ = isLeftOut_ = false;
    return;
  }
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  if (line.empty()) {
    ++emptyLines_;
    inHeaders_ = false;
    return;
  }
  if (inHeaders_) {
    bool isFolded = line[0] == ' ' || line[0] == '\t';
    if (!isFolded) isLeftOut_ = IsStateHeader(line);
    if (isLeftOut_) return;
  }
  AddText(line);
  hash_.Add("\n");
}

void LetterKey::Add(std::string_view bytes) {
  while (!bytes.empty()) {
    const void* end = std::memchr(bytes.data(), '\n', bytes.size());
    if (end == nullptr) {
      line_.append(bytes);
      if (line_.size() >= kMostOfLine) {
        AddLongPart(line_);
        isLongLine_ = true;
        line_.clear();
      }
      return;
    }
    auto length = static_cast<size_t>(static_cast<const char*>(end) - bytes.data());
    if (line_.empty()) {
      AddLine(bytes.substr(0, length));
    } else {
      line_.append(bytes.substr(0, length));
      AddLine(line_);
      line_.clear();
    }
    bytes.remove_prefix(length + 1);
  }
}

std::string LetterKey::Finish() {
  if (!line_.empty() || isLongLine_) AddLine(line_);
  line_.clear();
  return "letter-" + hash_.Finish();
}

std::string KeyOfLetter(std::string_view letter) {
  LetterKey key;
  key.Add(letter);
  return key.Finish();
}

}  // namespace tarnwick::sources
