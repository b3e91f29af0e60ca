// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <array>
#include <cstdint>

#include "outlook/little_endian.h"
#include "outlook/rtf.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kHeaderSize = 16;
constexpr uint32_t kPacked = 0x75465A4C;    // "LZFu"
constexpr uint32_t kUnpacked = 0x414C454D;  // "MELA"
constexpr size_t kWindowSize = 4096;
constexpr size_t kShortestRun = 2;

// What the window holds before the first byte is unpacked; fixed by the format.
constexpr std::string_view kFirstWindow =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern "
    "\\fscript \\fdecor MS Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0"
    "\\blue0\r\n\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
static_assert(kFirstWindow.size() == 207);

class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : bytes_(bytes) {
    kFirstWindow.copy(window_.data(), kFirstWindow.size());
    write_ = kFirstWindow.size();
  }

  std::string Run() {
    while (position_ < bytes_.size()) {
      auto flags = static_cast<unsigned char>(bytes_[position_++]);
      for (int bit = 0; bit < 8 && position_ < bytes_.size(); ++bit) {
        bool isReference = (flags >> bit & 1) != 0;
        if (!isReference) {
          Put(bytes_[position_++]);
        } else if (!CopyReference()) {
          return std::move(output_);
        }
      }
    }
    return std::move(output_);
  }

 private:
  void Put(char c) {
    output_.push_back(c);
    window_[write_] = c;
    write_ = (write_ + 1) % kWindowSize;
  }

  // Twelve bits of place, four of length, big-endian; a place where the next byte is to be written
  // marks the end.
  bool CopyReference() {
    if (position_ + 2 > bytes_.size()) return false;
    size_t high = static_cast<unsigned char>(bytes_[position_]);
    size_t low = static_cast<unsigned char>(bytes_[position_ + 1]);
    position_ += 2;
    size_t from = high << 4 | low >> 4;
    size_t count = (low & 15) + kShortestRun;
    if (from == write_) return false;
    for (; count > 0; --count) {
      Put(window_[from]);
      from = (from + 1) % kWindowSize;
    }
    return true;
  }

  std::string_view bytes_;
  size_t position_ = 0;
  std::array<char, kWindowSize> window_{};
  size_t write_ = 0;
  std::string output_;
};

}  // namespace

std::optional<std::string> UnpackRtf(std::string_view packed) {
  if (packed.size() < kHeaderSize) return std::nullopt;
  uint32_t rawSize = TakeNumber(packed, 4);
  uint32_t kind = TakeNumber(packed, 8);
  std::string_view body = packed.substr(kHeaderSize);
  if (kind == kUnpacked) return std::string(body.substr(0, rawSize));
  if (kind != kPacked) return std::nullopt;
  std::string text = Unpacker(body).Run();
  if (text.size() > rawSize) text.resize(rawSize);
  return text;
}

}  // namespace tarnwick::outlook
