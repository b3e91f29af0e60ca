// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/store_scan.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "outlook/reader/checksum.h"
#include "outlook/reader/cipher.h"
#include "outlook/reader/store_file.h"
#include "outlook/reader/unpack.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr size_t kPiece = size_t{1} << 20;  // read at a time
constexpr size_t kMaxBlocks = size_t{16} << 20;
constexpr size_t kMaxNodes = size_t{8} << 20;
constexpr size_t kLeastNodes = 4096;  // before it is worth while to look for repeated ones
// Bytes summed up for each of the file: a sound file needs one.
constexpr uint64_t kMostSums = 4;
constexpr size_t kHeaderSize = 564;
constexpr size_t kNodePageMark = size_t{kNodePages} << 8 | kNodePages;  // the type, twice

uint64_t Load(const char* bytes, size_t count) {
  uint64_t value = 0;
  for (size_t i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

auto NodeOrder(const FoundNode& node) {
  return std::make_tuple(node.number, ~node.page, node.data, node.sub);
}

class Scan {
 public:
  Scan(platform::InputFile& file, Variant variant) : file_(file), layout_(LayoutOf(variant)) {
    found_.variant = variant;
    sumsLeft_ = kMostSums * file.Size() + kPiece;
  }

  FoundStore Run(const std::function<void(int)>& tell) {
    const uint64_t size = file_.Size();
    std::string fresh(kPiece, '\0');
    for (uint64_t at = 0; at < size && !found_.isCut; at += kPiece) {
      fresh.resize(kPiece);
      fresh.resize(file_.ReadAt(at, fresh.data(), kPiece));
      window_.append(fresh);
      for (uint64_t end = at + layout_.blockUnit; end <= at + fresh.size();
           end += layout_.blockUnit) {
        LookAt(end);
      }
      // What a block that ends in the next piece may hold.
      size_t kept = std::min(window_.size(), layout_.blockSlot);
      window_.erase(0, window_.size() - kept);
      base_ = at + fresh.size() - kept;
      Settle(base_);
      tell(static_cast<int>((at + fresh.size()) * 100 / size));
      if (fresh.size() < kPiece) break;
    }
    Settle(UINT64_MAX);
    SortNodes();
    KeepOneOfEach();
    return std::move(found_);
  }

 private:
  // The last entries found, which a block that encloses their page may still take back.
  struct Page {
    uint64_t offset = 0;
    std::vector<FoundNode> nodes;
  };

  const char* At(uint64_t offset) const { return window_.data() + (offset - base_); }

  // A page or block that ends there.
  void LookAt(uint64_t end) {
    const char* trailer = At(end) - layout_.trailer;
    size_t size = Load(trailer, 2);
    uint64_t id = Load(trailer + layout_.trailerId, layout_.idSize);
    if (size == 0 || id == 0) return;
    const size_t pageSize = layout_.pageSize;
    if (end % pageSize == 0 && size == kNodePageMark && end - base_ >= pageSize &&
        IsSound(end - pageSize, pageSize - layout_.trailer, id, trailer)) {
      TakeBack(end - pageSize);
      TakePage(end - pageSize, id);
    } else if (size <= layout_.blockSlot - layout_.trailer) {
      size_t whole = WholeSize(size, layout_);
      if (whole > end - base_ || !IsSound(end - whole, size, id, trailer)) return;
      TakeBack(end - whole);
      size_t plainSize =
          layout_.trailerPlainSize != 0 ? Load(trailer + layout_.trailerPlainSize, 2) : 0;
      found_.blocks.push_back(PlaceOfBlock(id, end - whole, size, plainSize));
      found_.isCut = found_.blocks.size() >= kMaxBlocks;
    }
  }

  bool IsSound(uint64_t offset, size_t size, uint64_t id, const char* trailer) {
    if (Load(trailer + 2, 2) != SignatureOf(offset, id)) return false;
    if (sumsLeft_ < size) {
      found_.isCut = true;
      return false;
    }
    sumsLeft_ -= size;
    return Checksum({At(offset), size}) == Load(trailer + layout_.trailerChecksum, 4);
  }

  // What looks like a page or block inside another one is a part of what somebody wrote.
  void TakeBack(uint64_t from) {
    while (!found_.blocks.empty() && found_.blocks.back().offset >= from) found_.blocks.pop_back();
    while (!pages_.empty() && pages_.back().offset >= from) pages_.pop_back();
  }

  void TakePage(uint64_t offset, uint64_t id) {
    const char* page = At(offset);
    const char* info = page + layout_.pageInfo;
    size_t count = Load(info, layout_.countSize);
    size_t entrySize = Load(info + 2 * layout_.countSize, 1);
    bool isLowest = Load(info + 2 * layout_.countSize + 1, 1) == 0;
    if (!isLowest || entrySize < layout_.nodeEntry || count * entrySize > layout_.pageInfo) return;
    Page& taken = pages_.emplace_back();
    taken.offset = offset;
    for (size_t i = 0; i < count; ++i) {
      const char* entry = page + i * entrySize;
      size_t width = layout_.idSize;
      taken.nodes.push_back(
          {static_cast<uint32_t>(Load(entry, 4)), static_cast<uint32_t>(Load(entry + 3 * width, 4)),
           PlainId(Load(entry + width, width)), PlainId(Load(entry + 2 * width, width)), id});
    }
  }

  // Takes the pages before that place for good.
  void Settle(uint64_t before) {
    auto later = std::find_if(pages_.begin(), pages_.end(),
                              [&](const Page& page) { return page.offset >= before; });
    for (auto page = pages_.begin(); page != later; ++page) {
      found_.nodes.insert(found_.nodes.end(), page->nodes.begin(), page->nodes.end());
    }
    pages_.erase(pages_.begin(), later);
    if (found_.nodes.size() < nextSort_) return;
    SortNodes();
    nextSort_ = 2 * found_.nodes.size() + kLeastNodes;
    found_.isCut = found_.isCut || found_.nodes.size() >= kMaxNodes;
  }

  // Of what several pages say alike the newest stays.
  void SortNodes() {
    auto& nodes = found_.nodes;
    auto sameAs = [](const FoundNode& a, const FoundNode& b) {
      return a.number == b.number && a.data == b.data && a.sub == b.sub;
    };
    std::sort(nodes.begin(), nodes.end(), [](const FoundNode& a, const FoundNode& b) {
      return std::make_tuple(a.number, a.data, a.sub, ~a.page) <
             std::make_tuple(b.number, b.data, b.sub, ~b.page);
    });
    nodes.erase(std::unique(nodes.begin(), nodes.end(), sameAs), nodes.end());
    std::sort(nodes.begin(), nodes.end(),
              [](const FoundNode& a, const FoundNode& b) { return NodeOrder(a) < NodeOrder(b); });
  }

  std::string BytesOf(const BlockPlace& block) {
    std::string bytes(block.size, '\0');
    bytes.resize(file_.ReadAt(block.offset, bytes.data(), bytes.size()));
    return bytes;
  }

  // A block that lies in two places is the same in both, or neither is believed.
  void KeepOneOfEach() {
    auto& blocks = found_.blocks;
    std::sort(blocks.begin(), blocks.end(), [](const BlockPlace& a, const BlockPlace& b) {
      return std::make_pair(PlainId(a.id), a.offset) < std::make_pair(PlainId(b.id), b.offset);
    });
    size_t kept = 0;
    for (size_t i = 0; i < blocks.size();) {
      size_t end = i + 1;
      while (end < blocks.size() && PlainId(blocks[end].id) == PlainId(blocks[i].id)) ++end;
      bool isOne = true;
      std::string first = end - i > 1 ? BytesOf(blocks[i]) : std::string();
      for (size_t other = i + 1; other < end && isOne; ++other) {
        isOne = BytesOf(blocks[other]) == first;
      }
      if (isOne) blocks[kept++] = blocks[i];
      i = end;
    }
    blocks.resize(kept);
  }

  platform::InputFile& file_;
  const Layout& layout_;
  FoundStore found_;
  std::string window_;  // of the file, from base_ on
  uint64_t base_ = 0;
  std::vector<Page> pages_;
  uint64_t sumsLeft_ = 0;
  size_t nextSort_ = kLeastNodes;
};

// The cipher under which most blocks of data begin as the heaps that most of them are.
uint8_t FindCipher(platform::InputFile& file, const std::vector<BlockPlace>& blocks) {
  constexpr size_t kMostAsked = 5000;
  constexpr std::array<uint8_t, 3> kCiphers = {1, 0, 2};
  constexpr size_t kHead = 4;
  constexpr char kHeapMark = '\xEC';
  std::array<size_t, kCiphers.size()> votes{};
  size_t step = blocks.size() / kMostAsked + 1;
  for (size_t i = 0; i < blocks.size(); i += step) {
    const BlockPlace& block = blocks[i];
    if ((block.id & kInternal) != 0 || block.size < kHead) continue;
    constexpr size_t kPackedHead = 512;
    std::string head(block.IsPacked() ? std::min(block.size, kPackedHead) : kHead, '\0');
    head.resize(file.ReadAt(block.offset, head.data(), head.size()));
    if (block.IsPacked()) head = Unpacked(head, kHead);
    for (size_t c = 0; c < kCiphers.size() && head.size() == kHead; ++c) {
      std::string plain = head;
      Decipher(kCiphers[c], static_cast<uint32_t>(block.id), plain);
      if (plain[2] == kHeapMark && (plain[3] == '\xBC' || plain[3] == '\x7C')) ++votes[c];
    }
  }
  auto most = std::max_element(votes.begin(), votes.end());
  return kCiphers[static_cast<size_t>(most - votes.begin())];
}

// The variants, the one that a sound beginning tells of first, else the most common.
std::vector<Variant> LikelyVariants(platform::InputFile& file) {
  std::vector<Variant> likely = {Variant::kUnicode, Variant::kLargePages, Variant::kAnsi};
  std::string header(kHeaderSize, '\0');
  header.resize(file.ReadAt(0, header.data(), header.size()));
  if (header.size() < kHeaderSize || header.compare(0, 4, "!BDN") != 0) return likely;
  auto told = VariantOf(Load(header.data() + 10, 2));
  if (told)
    std::stable_partition(likely.begin(), likely.end(), [&](Variant v) { return v == *told; });
  return likely;
}

}  // namespace

FoundStore ScanStore(platform::InputFile& file, const std::function<void(int)>& tell) {
  FoundStore found;
  for (Variant variant : LikelyVariants(file)) {
    found = Scan(file, variant).Run(tell);
    if (!found.blocks.empty()) break;
  }
  if (found.blocks.empty()) throw ReadError("nothing of an Outlook store is in it");
  found.cipher = FindCipher(file, found.blocks);
  return found;
}

}  // namespace tarnwick::outlook::reader
