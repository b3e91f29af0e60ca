// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The input is a list of changes to a sound Outlook store: its first byte chooses the variant, then
// each four are a place and a byte to stand there. A store made of nothing but input would seldom
// get past its first page. Everything that is found is described; no answer may outgrow what the
// file can hold.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

#include "outlook/little_endian.h"
#include "outlook/reader/node_store.h"
#include "reader_asked.h"
#include "samples/pst_builder.h"

namespace {

using tarnwick::outlook::TakeNumber;
namespace reader = tarnwick::outlook::reader;

using reader::Variant;

const std::string& Sound(Variant variant) {
  auto build = [](Variant each) {
    tarnwick::samples::PstBuilder store(each);
    tarnwick::samples::PstMessage mail;
    mail.properties.texts = {{0x001A, "IPM.Note"}, {0x0037, "s"}, {0x1000, std::string(500, 'b')}};
    mail.recipients.resize(2);
    tarnwick::samples::PstAttachment file;
    file.data = std::string(9000, 'f');
    tarnwick::samples::PstAttachment letter;
    letter.embedded = {mail};
    mail.attachments = {file, letter};
    uint32_t inbox = store.AddFolder(tarnwick::samples::PstBuilder::kTop, "Inbox");
    for (int i = 0; i < 3; ++i) store.AddMessage(inbox, mail);
    return store.Build();
  };
  static const std::string kStores[] = {build(Variant::kAnsi), build(Variant::kUnicode),
                                        build(Variant::kLargePages)};
  return kStores[static_cast<size_t>(variant)];
}

// Changes of four bytes each: a place (24 bits, of the part behind the header) and a value.
std::string Changed(std::string_view changes) {
  const Variant variant = tarnwick::fuzz::VariantOf(static_cast<unsigned char>(changes[0]));
  const size_t begin = 34 * reader::LayoutOf(variant).pageSize;
  std::string bytes = Sound(variant);
  for (size_t i = 1; i + 4 <= changes.size(); i += 4) {
    bytes[begin + TakeNumber(changes, i, 3) % (bytes.size() - begin)] = changes[i + 3];
  }
  return bytes;
}

class Walk {
 public:
  Walk(const std::string& path, size_t limit) : file_(path), store_(file_), limit_(limit) {}

  void Run() {
    reader::Answer answer;
    Ask(answer, [&](auto& said, auto) { store_.DescribeStore(said); });
    Folder(0x122);
  }

 private:
  template <typename Request>
  void Ask(reader::Answer& answer, Request request) {
    tarnwick::fuzz::Ask(limit_, answer, request);
  }

  void Folder(uint32_t node) {
    if (!seen_.insert(node).second || seen_.size() > 100) return;
    reader::Answer answer;
    Ask(answer, [&](auto& said, auto) { store_.DescribeFolder(node, said); });
    for (uint32_t below : answer.folders) Folder(below);
    for (uint32_t below : answer.items) {
      if (seen_.insert(below).second) Item(node, below);
    }
  }

  void Item(uint32_t folder, uint32_t node) {
    if (++items_ > 100) return;
    reader::ItemPlace place{folder, 0, node};
    reader::Answer item;
    Ask(item, [&](auto& answer, auto) { store_.DescribeItem(place, answer); });
    for (uint32_t i = 0; i < 3; ++i) {
      for (const reader::AttachmentPath& path : {reader::AttachmentPath{i}, {i, 0}}) {
        reader::Answer attachment;
        Ask(attachment,
            [&](auto& answer, auto sink) { store_.ReadAttachment(place, path, sink, answer); });
      }
      reader::Answer embedded;
      Ask(embedded, [&](auto& answer, auto) { store_.DescribeEmbedded(place, {i}, answer); });
    }
  }

  tarnwick::platform::InputFile file_;
  reader::NodeStore store_;
  size_t limit_;
  std::set<uint32_t> seen_;
  int items_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string bytes = Changed({reinterpret_cast<const char*>(data), size});
  try {
    size_t limit = tarnwick::fuzz::LimitOf(bytes.size(), tarnwick::fuzz::VariantOf(data[0]));
    Walk(tarnwick::fuzz::InMemory(bytes), limit).Run();
  } catch (const reader::ReadError&) {
    // No store any more.
  }
  return 0;
}
