// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The input is a list of changes to a sound Outlook store: its first byte chooses the variant, then
// each four are a place and a byte to stand there. A store made of nothing but input would seldom
// get past its first page. Everything that is found is described; no answer may outgrow what the
// file can hold.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

#include "outlook/pst_protocol.h"
#include "outlook/reader/node_store.h"
#include "samples/pst_builder.h"

namespace {

using tarnwick::outlook::TakeNumber;
namespace frame = tarnwick::outlook::frame;
namespace reader = tarnwick::outlook::reader;

const std::string& Sound(bool isUnicode) {
  auto build = [](bool wide) {
    tarnwick::samples::PstBuilder store(wide);
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
  static const std::string kWide = build(true);
  static const std::string kNarrow = build(false);
  return isUnicode ? kWide : kNarrow;
}

// Changes of four bytes each: a place (24 bits, of the part behind the header) and a value.
std::string Changed(std::string_view changes) {
  std::string bytes = Sound(changes[0] % 2 == 0);
  for (size_t i = 1; i + 4 <= changes.size(); i += 4) {
    constexpr size_t kBegin = 0x4400;
    bytes[kBegin + TakeNumber(changes, i, 3) % (bytes.size() - kBegin)] = changes[i + 3];
  }
  return bytes;
}

class Walk {
 public:
  Walk(const std::string& path, size_t size)
      : file_(path), store_(file_), limit_(64 * size + (1 << 20)) {}

  void Run() {
    Ask([&](reader::Answer& answer) { store_.DescribeStore(answer); });
    Folder(0x122);
  }

 private:
  template <typename Request>
  std::string Ask(Request request) {
    std::string frames;
    reader::Answer answer([&](std::string_view bytes) {
      frames += bytes;
      if (frames.size() > limit_) std::abort();
    });
    try {
      request(answer);
    } catch (const reader::ReadError&) {
    }
    answer.Flush();
    return frames;
  }

  void Folder(uint32_t node) {
    if (!seen_.insert(node).second || seen_.size() > 100) return;
    std::string frames = Ask([&](reader::Answer& answer) { store_.DescribeFolder(node, answer); });
    for (size_t at = 0; at < frames.size();) {
      size_t length = TakeNumber(frames, at + 1);
      for (size_t i = 0; i + 4 <= length; i += 4) {
        uint32_t below = TakeNumber(frames, at + tarnwick::outlook::kFrameHeader + i);
        if (frames[at] == frame::kFolders) Folder(below);
        if (frames[at] == frame::kItems && seen_.insert(below).second) Item(node, below);
      }
      at += tarnwick::outlook::kFrameHeader + length;
    }
  }

  void Item(uint32_t folder, uint32_t node) {
    if (++items_ > 100) return;
    reader::ItemPlace place{folder, 0, node};
    Ask([&](reader::Answer& answer) { store_.DescribeItem(place, false, answer); });
    for (uint32_t i = 0; i < 3; ++i) {
      Ask([&](reader::Answer& answer) { store_.SendAttachment(place, {i}, answer); });
      Ask([&](reader::Answer& answer) { store_.DescribeEmbedded(place, {i}, answer); });
      Ask([&](reader::Answer& answer) { store_.SendAttachment(place, {i, 0}, answer); });
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
  static const int kFile = memfd_create("store", MFD_CLOEXEC);
  if (ftruncate(kFile, 0) != 0) std::abort();
  if (pwrite(kFile, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    std::abort();
  }
  try {
    Walk("/proc/self/fd/" + std::to_string(kFile), bytes.size()).Run();
  } catch (const reader::ReadError&) {
    // No store any more.
  }
  return 0;
}
