// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/text/search.h"

#include <unicode/uset.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <string>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// More forms than this, and a character makes no good anchor.
constexpr size_t kMostForms = 6;

// Every code point that folds to this one, as UTF-8.
std::vector<std::string> FormsOf(int32_t folded) {
  std::vector<std::string> forms;
  USet* set = uset_open(folded, folded);
  uset_closeOver(set, USET_CASE_INSENSITIVE);
  int32_t ranges = uset_getItemCount(set);
  for (int32_t i = 0; i < ranges; i++) {
    UChar32 start;
    UChar32 end;
    UErrorCode status = U_ZERO_ERROR;
    // Items that are strings (a full folding such as ss) are none of ours.
    if (uset_getItem(set, i, &start, &end, nullptr, 0, &status) != 0 || U_FAILURE(status)) continue;
    for (UChar32 c = start; c <= end; c++) {
      if (platform::FoldChar(c) != folded) continue;
      char buffer[U8_MAX_LENGTH];
      int32_t length = 0;
      U8_APPEND_UNSAFE(buffer, length, c);
      forms.emplace_back(buffer, static_cast<size_t>(length));
    }
  }
  uset_close(set);
  return forms;
}

std::vector<unsigned char> Distinct(std::vector<unsigned char> bytes) {
  std::sort(bytes.begin(), bytes.end());
  bytes.erase(std::unique(bytes.begin(), bytes.end()), bytes.end());
  return bytes;
}

// How often a character is met in mail, roughly: the rarer, the better an anchor.
int Commonness(int32_t character) {
  constexpr std::string_view kRareFirst = "zqxjkvbpygfwmucldrhsnioate ";
  if (character >= 0x80) return 8;
  size_t place = kRareFirst.find(static_cast<char>(character));
  return place == std::string_view::npos ? 6 : static_cast<int>(place);
}

bool Contains(const std::vector<unsigned char>& bytes, char byte) {
  return std::find(bytes.begin(), bytes.end(), static_cast<unsigned char>(byte)) != bytes.end();
}

// The beginning of the character that ends before position; bytes that are no UTF-8 are characters
// of their own. REQUIRES: position > 0.
size_t PreviousChar(std::string_view text, size_t position) {
  size_t start = position - 1;
  while (start > 0 && position - start < 4 &&
         (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) {
    start--;
  }
  size_t end = start;
  platform::NextChar(text, end);
  return end == position ? start : position - 1;
}

#ifdef __SSE2__
// Sixteen bytes at a time, compared with up to kMostForms wanted ones. Two is what letters have.
class Block {
 public:
  explicit Block(const std::vector<unsigned char>& bytes) : count_(bytes.size()) {
    for (size_t i = 0; i < kMostForms; i++) {
      // A short list is filled up with its last byte.
      unsigned char byte = bytes.empty() ? 0 : bytes[std::min(i, bytes.size() - 1)];
      wanted_[i] = _mm_set1_epi8(static_cast<char>(byte));
    }
  }

  __m128i Hits(const char* data) const {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
    __m128i hits =
        _mm_or_si128(_mm_cmpeq_epi8(block, wanted_[0]), _mm_cmpeq_epi8(block, wanted_[1]));
    for (size_t i = 2; i < count_; i++) {
      hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, wanted_[i]));
    }
    return hits;
  }

 private:
  size_t count_;
  __m128i wanted_[kMostForms];
};
#endif

}  // namespace

Needle::Needle(std::vector<int32_t> characters) : characters_(std::move(characters)) {
  ChooseAnchor();
}

Needle::Needle(std::string_view text) {
  for (size_t position = 0; position < text.size();) {
    characters_.push_back(platform::FoldChar(platform::NextChar(text, position)));
  }
  ChooseAnchor();
}

void Needle::ChooseAnchor() {
  int best = 1000;
  for (size_t i = 0; i < characters_.size(); i++) {
    int32_t character = characters_[i];
    if (character == kAnyChar || character > 0x10FFFF) continue;
    // A character with a follower is better: two bytes are looked for at once.
    bool followed = i + 1 < characters_.size() && characters_[i + 1] != kAnyChar &&
                    characters_[i + 1] <= 0x10FFFF;
    int cost = Commonness(character) + (followed ? 0 : 10);
    if (cost < best) {
      best = cost;
      anchor_ = i;
    }
  }
  if (anchor_ == kNone) return;
  std::vector<std::string> forms = FormsOf(characters_[anchor_]);
  if (forms.size() > kMostForms) {
    anchor_ = kNone;
    return;
  }
  for (const std::string& form : forms) {
    anchorBytes_.push_back(static_cast<unsigned char>(form.back()));
  }
  anchorBytes_ = Distinct(std::move(anchorBytes_));
  size_t next = anchor_ + 1;
  if (next == characters_.size() || characters_[next] == kAnyChar || characters_[next] > 0x10FFFF) {
    return;
  }
  for (const std::string& form : FormsOf(characters_[next])) {
    followerBytes_.push_back(static_cast<unsigned char>(form.front()));
  }
  followerBytes_ = Distinct(std::move(followerBytes_));
  if (followerBytes_.size() > kMostForms) followerBytes_.clear();
}

size_t Needle::NextAnchor(std::string_view text, size_t position) const {
  const char* data = text.data();
  size_t size = text.size();
#ifdef __SSE2__
  // Each place with the byte behind it.
  Block anchors(anchorBytes_);
  Block followers(followerBytes_);
  bool anyFollower = followerBytes_.empty();
  for (; size - position >= 17; position += 16) {
    __m128i hits = anchors.Hits(data + position);
    if (!anyFollower) hits = _mm_and_si128(hits, followers.Hits(data + position + 1));
    auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
    if (mask != 0) return position + static_cast<size_t>(std::countr_zero(mask));
  }
#endif
  for (; position < size; position++) {
    if (!Contains(anchorBytes_, data[position])) continue;
    if (followerBytes_.empty()) return position;
    if (position + 1 < size && Contains(followerBytes_, data[position + 1])) return position;
  }
  return kNone;
}

size_t Needle::MatchAt(std::string_view text, size_t position) const {
  for (int32_t wanted : characters_) {
    if (position >= text.size()) return kNone;
    int32_t character = platform::NextChar(text, position);
    if (wanted != kAnyChar && platform::FoldChar(character) != wanted) return kNone;
  }
  return position;
}

size_t Needle::MatchAtEnd(std::string_view text) const {
  size_t position = text.size();
  for (size_t i = 0; i < characters_.size(); i++) {
    if (position == 0) return kNone;
    position = PreviousChar(text, position);
  }
  return MatchAt(text, position) == text.size() ? position : kNone;
}

Needle::Match Needle::MatchAround(std::string_view text, size_t anchorEnd, size_t from) const {
  constexpr Match kNoMatch{kNone, kNone};
  size_t position = anchorEnd;
  for (size_t i = 0; i <= anchor_; i++) {
    if (position <= from) return kNoMatch;
    position = PreviousChar(text, position);
  }
  size_t end = position < from ? kNone : MatchAt(text, position);
  return end == kNone ? kNoMatch : Match{position, end};
}

Needle::Match Needle::Find(std::string_view text, size_t from) const {
  if (characters_.empty()) return {from, from};
  if (anchor_ == kNone) {
    for (size_t position = from; position < text.size(); platform::NextChar(text, position)) {
      size_t end = MatchAt(text, position);
      if (end != kNone) return {position, end};
    }
    return {kNone, kNone};
  }
  for (size_t place = from; (place = NextAnchor(text, place)) != kNone; place++) {
    Match match = MatchAround(text, place + 1, from);
    if (match.begin != kNone) return match;
  }
  return {kNone, kNone};
}

LikePattern::LikePattern(std::string_view pattern) {
  std::vector<int32_t> stretch;
  for (size_t position = 0; position < pattern.size();) {
    int32_t character = platform::NextChar(pattern, position);
    if (character == '%') {
      stretches_.emplace_back(std::move(stretch));
      stretch = {};
    } else {
      stretch.push_back(character == '_' ? Needle::kAnyChar : platform::FoldChar(character));
    }
  }
  stretches_.emplace_back(std::move(stretch));
}

bool LikePattern::Matches(std::string_view text) const {
  size_t position = stretches_.front().MatchAt(text, 0);
  if (position == Needle::kNone) return false;
  if (stretches_.size() == 1) return position == text.size();
  // Taking each stretch at its first place leaves the most room for those behind it.
  for (size_t i = 1; i + 1 < stretches_.size(); i++) {
    position = stretches_[i].Find(text, position).end;
    if (position == Needle::kNone) return false;
  }
  size_t last = stretches_.back().MatchAtEnd(text);
  return last != Needle::kNone && last >= position;
}

}  // namespace tarnwick::jet
