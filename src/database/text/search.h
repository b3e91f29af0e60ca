// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Searching in texts without regard to case, as InStr and Like do, fast enough to run over every
// body of a repository. Internal to the database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnwick::jet {

// A row of characters to be found, some of which may stand for any character.
class Needle {
 public:
  static constexpr int32_t kAnyChar = -1;

  // A match as byte offsets.
  struct Match {
    size_t begin;
    size_t end;
  };
  static constexpr size_t kNone = static_cast<size_t>(-1);

  // characters: folded code points or kAnyChar.
  explicit Needle(std::vector<int32_t> characters);
  // The text as it is, no character special.
  explicit Needle(std::string_view text);

  bool IsEmpty() const { return characters_.empty(); }
  size_t CharCount() const { return characters_.size(); }

  // The first match that begins at from or later; begin is kNone without one. The empty needle
  // matches at once.
  Match Find(std::string_view text, size_t from = 0) const;

  // The end of a match that begins right at position, or kNone.
  size_t MatchAt(std::string_view text, size_t position) const;
  // The beginning of a match that ends with the text, or kNone.
  size_t MatchAtEnd(std::string_view text) const;

 private:
  void ChooseAnchor();
  size_t NextAnchor(std::string_view text, size_t position) const;
  Match MatchAround(std::string_view text, size_t anchorEnd, size_t from) const;

  std::vector<int32_t> characters_;
  // A character that is looked for first, by the last byte of each of its forms, and the first
  // bytes of the forms of the character behind it (empty: any).
  size_t anchor_ = kNone;
  std::vector<unsigned char> anchorBytes_;
  std::vector<unsigned char> followerBytes_;
};

// A pattern of Like: % stands for any number of characters, _ for one; all else for itself.
class LikePattern {
 public:
  explicit LikePattern(std::string_view pattern);
  bool Matches(std::string_view text) const;

 private:
  // The stretches between the %; a pattern without one has a single stretch.
  std::vector<Needle> stretches_;
};

}  // namespace tarnwick::jet
