// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/packing.h"

#include <zstd.h>

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>

#include "database/engine/base64_folding.h"
#include "database/engine/packing_text.h"
#include "platform/error.h"

namespace tarnwick::jet {

namespace {

// What a packed value begins with: the format number and a frame's own mark. Between them a folded
// one tells its plain size.
constexpr char kPlainFormat = 1;
constexpr char kFoldedFormat = 2;
constexpr size_t kToldSize = 4;
constexpr std::string_view kFrameMark("\x28\xB5\x2F\xFD", 4);

// The fastest of the levels that find repetitions well; a higher one gains 2 % at half the speed.
constexpr int kLevel = 1;
// Beside that level's choice for short values: repetitions from six bytes on, and a table of their
// places that leaves room in the processor's nearest memory. Smaller by 1 %, and quicker by 5.
constexpr int kShortestMatch = 6;
constexpr int kPlacesBits = 14;
// Shorter ones gain nothing to speak of.
constexpr size_t kShortestPacked = 64;
constexpr size_t kLeastGain = 16;
// What claims to be more than so many times its size is not believed. What shrinks more, a value
// of mostly one character, is filled up: with a frame that readers skip, a mark and its length.
constexpr size_t kMostExpansion = 1000;
constexpr std::string_view kSkippedMark("\x50\x2A\x4D\x18", 4);
constexpr size_t kSkippedHead = 8;

// What a thread keeps for its next value.
constexpr size_t kMostKept = size_t{1} << 20;

constexpr int kDamaged = 11;  // the engine's own number for a malformed file

template <auto Free>
struct Freed {
  template <typename Handle>
  void operator()(Handle* handle) const {
    Free(handle);
  }
};

std::string Dictionary() {
  std::string text(reinterpret_cast<const char*>(kPackingStatistics), sizeof kPackingStatistics);
  for (char c : std::string_view(kPackingText, kPackingTextSize)) {
    if (c == '\n') text += '\r';
    text += c;
  }
  return text;
}

// Read only once made, so threads share it.
const ZSTD_DDict* UnpackingDictionary() {
  static const std::unique_ptr<ZSTD_DDict, Freed<ZSTD_freeDDict>> dictionary = [] {
    std::string text = Dictionary();
    return std::unique_ptr<ZSTD_DDict, Freed<ZSTD_freeDDict>>(
        ZSTD_createDDict(text.data(), text.size()));
  }();
  if (!dictionary) throw std::bad_alloc();
  return dictionary.get();
}

// One a thread: the contexts are what is dear to make.
struct Packer {
  Packer()
      : packing(ZSTD_createCCtx()), packingFolded(ZSTD_createCCtx()), unpacking(ZSTD_createDCtx()) {
    if (!packing || !packingFolded || !unpacking) throw std::bad_alloc();
    ZSTD_CCtx_setParameter(packing.get(), ZSTD_c_compressionLevel, kLevel);
    ZSTD_CCtx_setParameter(packing.get(), ZSTD_c_dictIDFlag, 0);
    ZSTD_CCtx_setParameter(packing.get(), ZSTD_c_minMatch, kShortestMatch);
    ZSTD_CCtx_setParameter(packing.get(), ZSTD_c_hashLog, kPlacesBits);
    ZSTD_CCtx_setParameter(packingFolded.get(), ZSTD_c_compressionLevel, kLevel);
    std::string text = Dictionary();
    if (ZSTD_isError(ZSTD_CCtx_loadDictionary(packing.get(), text.data(), text.size())) != 0) {
      throw std::bad_alloc();
    }
  }
  std::unique_ptr<ZSTD_CCtx, Freed<ZSTD_freeCCtx>> packing;
  std::unique_ptr<ZSTD_CCtx, Freed<ZSTD_freeCCtx>> packingFolded;  // the dictionary holds no bytes
  std::unique_ptr<ZSTD_DCtx, Freed<ZSTD_freeDCtx>> unpacking;
  std::string packed;
  std::string plain;
  std::string folded;
  uint64_t unpacked = 0;
};

Packer& ThreadPacker() {
  thread_local Packer packer;
  return packer;
}

bool IsHonest(size_t plain, size_t packed) {
  return plain <= kLargestPacked && plain / kMostExpansion <= packed;
}

[[noreturn]] void Damaged() {
  throw Error(kDamaged, "A packed value is damaged");
}

size_t HeadSize(char format) {
  return format == kFoldedFormat ? 1 + kToldSize : 1;
}

bool IsFolded(std::string_view stored) {
  return stored.front() == kFoldedFormat;
}

std::string_view FrameOf(std::string_view stored) {
  return stored.substr(HeadSize(stored.front()));
}

// What a frame tells its content to be; what is unknown or unreadable is a huge number, too.
uint64_t ContentSize(std::string_view frame) {
  return ZSTD_getFrameContentSize(frame.data(), frame.size());
}

size_t PlainSize(std::string_view stored) {
  std::optional<size_t> size = ToldSize(stored);
  if (!size) Damaged();
  return *size;
}

// Room for a value; what a huge one took is given back with the next.
char* RoomFor(std::string& scratch, size_t size) {
  if (scratch.size() > kMostKept && size <= kMostKept) std::string().swap(scratch);
  if (scratch.size() < size) scratch.resize(size);
  return scratch.data();
}

void Decompress(std::string_view frame, const ZSTD_DDict* dictionary, char* content, size_t size) {
  size_t done = ZSTD_decompress_usingDDict(ThreadPacker().unpacking.get(), content, size,
                                           frame.data(), frame.size(), dictionary);
  if (ZSTD_isError(done) != 0 || done != size) Damaged();
}

void UnpackInto(std::string_view stored, char* plain, size_t size) {
  Packer& packer = ThreadPacker();
  packer.unpacked++;
  std::string_view frame = FrameOf(stored);
  if (!IsFolded(stored)) return Decompress(frame, UnpackingDictionary(), plain, size);
  size_t foldedSize = ContentSize(frame);
  char* folded = RoomFor(packer.folded, foldedSize);
  Decompress(frame, nullptr, folded, foldedSize);
  if (!UnfoldBase64({folded, foldedSize}, plain, size)) Damaged();
}

// Makes a packed value honest; gives its size. There is room for a value that does not shrink.
size_t FillUp(char* packed, size_t size, size_t plain) {
  if (IsHonest(plain, size)) return size;
  size_t whole = std::max(plain / kMostExpansion, size + kSkippedHead);
  auto filling = static_cast<uint32_t>(whole - size - kSkippedHead);
  std::copy(kSkippedMark.begin(), kSkippedMark.end(), packed + size);
  for (size_t i = 0; i < 4; i++) packed[size + 4 + i] = static_cast<char>(filling >> 8 * i);
  std::fill(packed + size + kSkippedHead, packed + whole, '\0');
  return whole;
}

}  // namespace

std::string_view Pack(std::string_view plain) {
  if (plain.size() < kShortestPacked || plain.size() > kLargestPacked) return {};
  Packer& packer = ThreadPacker();
  if (packer.folded.capacity() > kMostKept) std::string().swap(packer.folded);
  bool isFolded = FoldBase64(plain, packer.folded);
  std::string_view content = isFolded ? packer.folded : plain;
  char format = isFolded ? kFoldedFormat : kPlainFormat;
  size_t head = HeadSize(format);
  size_t room = ZSTD_compressBound(content.size()) + head;
  char* packed = RoomFor(packer.packed, std::max(room, plain.size()));
  packed[0] = format;
  for (size_t i = 1; i < head; i++) packed[i] = static_cast<char>(plain.size() >> 8 * (i - 1));
  ZSTD_CCtx* packing = isFolded ? packer.packingFolded.get() : packer.packing.get();
  size_t size = ZSTD_compress2(packing, packed + head, room - head, content.data(), content.size());
  if (ZSTD_isError(size) != 0) return {};
  size = FillUp(packed, size + head, plain.size());
  bool pays = size + kLeastGain <= plain.size();
  return pays ? std::string_view(packed, size) : std::string_view();
}

bool IsPacked(std::string_view stored) {
  if (stored.empty() || (stored.front() != kPlainFormat && !IsFolded(stored))) return false;
  return stored.size() > HeadSize(stored.front()) + kFrameMark.size() &&
         FrameOf(stored).starts_with(kFrameMark);
}

std::optional<size_t> ToldSize(std::string_view stored) {
  uint64_t content = ContentSize(FrameOf(stored));
  uint64_t told = content;
  if (IsFolded(stored)) {
    told = 0;
    for (size_t i = 0; i < kToldSize; i++) {
      told |= uint64_t{static_cast<unsigned char>(stored[1 + i])} << 8 * i;
    }
    if (content > told) return std::nullopt;
  }
  if (told > kLargestPacked || !IsHonest(told, stored.size())) return std::nullopt;
  return told;
}

std::string Unpack(std::string_view stored) {
  assert(IsPacked(stored));
  std::string plain(PlainSize(stored), '\0');
  UnpackInto(stored, plain.data(), plain.size());
  return plain;
}

std::string_view UnpackScratch(std::string_view stored) {
  size_t size = PlainSize(stored);
  char* plain = RoomFor(ThreadPacker().plain, size);
  UnpackInto(stored, plain, size);
  return {plain, size};
}

uint64_t UnpackCount() {
  return ThreadPacker().unpacked;
}

}  // namespace tarnwick::jet
