// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The search of an Outlook store for lost items. The input is a list of changes to a worn store,
// its first byte the kind: bits 0 and 6 choose the variant, bit 1 takes the head off, bit 2 has the
// checksums of what was changed set right again. Each four bytes behind it are a place and a byte
// to stand there. Everything that is found is described; no answer may outgrow what the file can
// hold, and where checksums were left alone no item may bear the marks of two.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "outlook/little_endian.h"
#include "outlook/reader/checksum.h"
#include "outlook/reader/lost_store.h"
#include "reader_asked.h"
#include "samples/worn_outlook.h"

namespace {

using tarnwick::outlook::TakeNumber;
namespace reader = tarnwick::outlook::reader;

using reader::Variant;

const std::string& SoundStore(Variant variant) {
  auto build = [](Variant each) {
    tarnwick::samples::WornOutlook store(each, 24);
    store.DeleteEvery(3);
    store.Finish();
    return store.Bytes();
  };
  static const std::string kStores[] = {build(Variant::kAnsi), build(Variant::kUnicode),
                                        build(Variant::kLargePages)};
  return kStores[static_cast<size_t>(variant)];
}

void PutAt(std::string& bytes, size_t at, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[at++] = static_cast<char>(value >> (8 * i));
}

// Of the page or block that the place is in, whichever end comes first.
void SetChecksumRight(std::string& bytes, size_t place, const reader::Layout& layout) {
  const size_t unit = layout.blockUnit;
  for (size_t end = place / unit * unit + unit; end <= bytes.size(); end += unit) {
    size_t trailer = end - layout.trailer;
    size_t size = TakeNumber(bytes, trailer, 2);
    bool isPage = size == 0x8181 && end % layout.pageSize == 0;
    if (isPage) size = layout.pageSize - layout.trailer;
    size_t whole = reader::WholeSize(size, layout);
    if (size == 0 || size > layout.blockSlot - layout.trailer || whole > end) continue;
    auto id = static_cast<uint64_t>(TakeNumber(bytes, trailer + layout.trailerId));
    if (TakeNumber(bytes, trailer + 2, 2) != reader::SignatureOf(end - whole, id)) continue;
    std::string_view all = bytes;
    PutAt(bytes, trailer + layout.trailerChecksum, reader::Checksum(all.substr(end - whole, size)));
    return;
  }
}

std::string Changed(std::string_view changes) {
  const auto kind = static_cast<unsigned char>(changes[0]);
  const Variant variant = tarnwick::fuzz::VariantOf(kind);
  const reader::Layout& layout = reader::LayoutOf(variant);
  std::string bytes = SoundStore(variant);
  for (size_t i = 1; i + 4 <= changes.size(); i += 4) {
    const size_t begin = 34 * layout.pageSize;
    size_t place = begin + TakeNumber(changes, i, 3) % (bytes.size() - begin);
    bytes[place] = changes[i + 3];
    if ((kind & 4) != 0) SetChecksumRight(bytes, place, layout);
  }
  if ((kind & 2) != 0) bytes.replace(0, 1024, 1024, '\0');
  return bytes;
}

class Walk {
 public:
  Walk(reader::StoreFile& store, size_t limit, bool isTrue)
      : store_(store), limit_(limit), isTrue_(isTrue) {}

  void Run() {
    reader::Answer own;
    Ask(own, [&](auto& answer, auto) { store_.DescribeStore(answer); });
    for (const reader::FoundItem& item : store_.FindLost()) {
      if (++items_ <= 100) Item(item.folder, item.node);
    }
  }

 private:
  template <typename Request>
  void Ask(reader::Answer& answer, Request request) {
    tarnwick::fuzz::Ask(limit_, answer, request);
  }

  void Item(uint32_t folder, uint32_t node) {
    reader::ItemPlace place{folder, 0, node};
    reader::Answer lay;
    Ask(lay, [&](auto& answer, auto) { store_.DescribeFolder(folder, answer); });
    reader::Answer item;
    Ask(item, [&](auto& answer, auto) { store_.DescribeItem(place, answer); });
    std::string said;
    auto add = [&](const tarnwick::outlook::RawRow& row) {
      for (const tarnwick::outlook::RawProperty& property : row) said += property.bytes;
    };
    add(item.properties);
    for (const auto& row : item.recipients) add(row);
    for (uint32_t i = 0; i < item.attachments.size(); ++i) {
      add(item.attachments[i]);
      Ask(item, [&](auto& answer, auto sink) {
        auto keep = [&](std::string_view bytes) {
          said += bytes;
          sink(bytes);
        };
        store_.ReadAttachment(place, {i}, keep, answer);
      });
    }
    reader::Answer embedded;
    Ask(embedded, [&](auto& answer, auto) { store_.DescribeEmbedded(place, {0}, answer); });
    // Wide texts become plain ones.
    std::erase(said, '\0');
    if (isTrue_ && tarnwick::samples::JudgeWorn(said) == tarnwick::samples::WornPart::kMixed) {
      std::abort();
    }
  }

  reader::StoreFile& store_;
  size_t limit_;
  bool isTrue_;
  int items_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string bytes = Changed({reinterpret_cast<const char*>(data), size});
  tarnwick::platform::InputFile file(tarnwick::fuzz::InMemory(bytes));
  try {
    reader::LostStore store(file, [](int) {});
    size_t limit = tarnwick::fuzz::LimitOf(bytes.size(), tarnwick::fuzz::VariantOf(data[0]));
    Walk(store, limit, (data[0] & 4) == 0).Run();
  } catch (const reader::ReadError&) {
    // Nothing is left of it.
  }
  return 0;
}
