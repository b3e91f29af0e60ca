// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The name of a letter by what it says: the same wherever and however it is kept, so that a letter
// that is met again (a mailbox that has grown, its folder on another disk, a copy in another
// format) is known. Left out of it is what mail programs change in a letter that they keep: the
// headers of its state, the kind of its line ends, and empty lines at its end.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::sources {

// BLAKE2b (RFC 7693) with a result of 20 bytes.
class Blake2b {
 public:
  static constexpr size_t kResultSize = 20;

  Blake2b();
  void Add(std::string_view bytes);
  // Ends it; the bytes as hexadecimal digits.
  std::string Finish();

 private:
  static constexpr size_t kBlockSize = 128;
  void Compress(const unsigned char* block, bool isLast);

  std::array<uint64_t, 8> state_;
  std::array<unsigned char, kBlockSize> block_{};
  size_t used_ = 0;
  uint64_t count_ = 0;
};

// Takes in a letter piece by piece, in any pieces.
class LetterKey {
 public:
  void Add(std::string_view bytes);
  // Ends it. Stored with every message that the room takes in: do not change.
  std::string Finish();

 private:
  void AddLine(std::string_view line);
  void AddText(std::string_view text);
  void AddLongPart(std::string_view part);

  Blake2b hash_;
  std::string line_;  // begun in a former piece
  bool inHeaders_ = true;
  bool isLeftOut_ = false;     // the header that the last line belongs to
  bool isLongLine_ = false;    // part of the current line is in the hash already
  bool endsInReturn_ = false;  // such a part ended with a CR, which is not in it yet
  uint64_t emptyLines_ = 0;    // not in the hash yet
};

std::string KeyOfLetter(std::string_view letter);

}  // namespace tarnwick::sources
