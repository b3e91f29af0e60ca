// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/worn_store.h"

#include <algorithm>

namespace tarnwick::samples {

namespace {

constexpr uint32_t kBlockHead = 16;
constexpr uint32_t kRoom = 512;

std::string Words(std::mt19937& random, size_t length) {
  static constexpr const char* kWords[] = {"budget", "meeting", "the",  "draft",   "of",
                                           "river",  "please",  "send", "Ann",     "later",
                                           "with",   "photos",  "and",  "regards", "moved"};
  std::string text;
  size_t line = 0;
  while (text.size() < length) {
    text += kWords[random() % std::size(kWords)];
    bool ends = text.size() - line > 60;
    text += ends ? "\r\n" : " ";
    if (ends) line = text.size();
  }
  return text + "\r\n";
}

}  // namespace

WornStore::WornStore(int messages, uint32_t seed) : random_(seed) {
  for (int i = 0; i < messages; ++i) {
    IndexedMessage message = NewMessage();
    written_.push_back({message.text, store_.AddMessage(message)});
  }
}

IndexedMessage WornStore::NewMessage() {
  IndexedMessage message;
  std::string number = std::to_string(texts_.size());
  message.subject = "Number " + number;
  message.date = DateTime::FromDate(2004, 1, 5).AddSeconds(static_cast<int64_t>(texts_.size()));
  message.senderName = "Bob Kern";
  message.senderAddress = "bob@example.org";
  // What was written on this machine has none.
  bool hasId = texts_.size() % 4 != 0;
  if (hasId) message.messageId = "<" + number + "@example.org>";
  bool hasParts = texts_.size() % 3 == 0;
  std::string body = Words(random_, random_() % (size_t{12} * kRoom));
  message.text =
      "From: Bob Kern <bob@example.org>\r\nTo: Ann <ann@example.org>\r\nSubject: Number " + number +
      "\r\nDate: Mon, 5 Jan 2004 10:" + std::to_string(10 + texts_.size() / 60 % 50) + ":" +
      std::to_string(10 + texts_.size() % 50) + " +0000\r\n";
  if (hasId) message.text += "Message-ID: " + message.messageId + "\r\n";
  if (hasParts) {
    std::string boundary = "part" + number;
    message.text += "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"" + boundary +
                    "\"\r\n\r\n--" + boundary + "\r\n\r\n" + body + "--" + boundary + "--\r\n";
  } else {
    message.text += "\r\n" + body;
  }
  texts_.push_back(message.text);
  return message;
}

void WornStore::DeleteEvery(int n, Freeing freeing) {
  uint32_t freedInfo = 0;
  uint32_t freedBlock = 0;
  DbxImage& image = store_.Image();
  for (size_t i = 0; i < written_.size(); i += static_cast<size_t>(n)) {
    Written& message = written_[i];
    message.isDeleted = true;
    freed_.push_back(message.places.blocks);
    uint32_t info = message.places.info;
    if (freeing != Freeing::kUnlisted) {
      image.Free(info, image.Get32(info + 4) + 20, freedInfo);
      freedInfo = info;
    }
    for (uint32_t block : message.places.blocks) {
      if (freeing != Freeing::kBlocksToo) break;
      image.Free(block, kRoom + kBlockHead, freedBlock);
      freedBlock = block;
    }
  }
}

void WornStore::Reuse(int messages, bool fromTheEnd, bool isListed) {
  size_t next = 0;
  for (int i = 0; i < messages; ++i) {
    IndexedMessage message = NewMessage();
    size_t blocks = (message.text.size() + kRoom - 1) / kRoom;
    while (message.reusedBlocks.size() < blocks && next < freed_.size()) {
      std::vector<uint32_t>& freed = freed_[next];
      if (freed.empty()) {
        ++next;
        continue;
      }
      auto taken = fromTheEnd ? freed.end() - 1 : freed.begin();
      message.reusedBlocks.push_back(*taken);
      freed.erase(taken);
    }
    if (fromTheEnd) ++next;
    written_.push_back({message.text, store_.AddMessage(message), !isListed});
  }
}

void WornStore::Finish() {
  std::vector<DbxImage::Entry> root;
  std::vector<DbxImage::Entry> leaf;
  uint32_t left = 0;
  uint32_t count = 0;
  DbxImage& image = store_.Image();
  size_t leafSize = written_.size() < 10'000 ? 50 : 250;  // the root has room for 255
  auto close = [&] {
    uint32_t node = image.AddNode(leaf);
    (root.empty() ? left : root.back().child) = node;
    leaf.clear();
  };
  for (const Written& message : written_) {
    if (message.isDeleted) continue;
    ++count;
    if (leaf.size() == leafSize) {
      close();
      root.push_back({message.places.info, 0});
    } else {
      leaf.push_back({message.places.info, 0});
    }
  }
  if (!leaf.empty()) close();
  store_.SetItemCount(count);
  store_.SetRoot(count == 0 ? 0 : image.AddNode(root, left));
  bytes_ = store_.Bytes();
}

void WornStore::Overwrite(int percent, bool leavesHeads) {
  for (const Written& message : written_) {
    for (uint32_t block : message.places.blocks) {
      if (static_cast<int>(random_() % 100) >= percent) continue;
      for (uint32_t i = leavesHeads ? kBlockHead : 0; i < kBlockHead + kRoom; ++i) {
        bytes_[block + i] = leavesHeads ? '\0' : static_cast<char>(random_());
      }
    }
  }
}

void WornStore::Cut(int percent) {
  bytes_.resize(bytes_.size() * static_cast<size_t>(percent) / 100);
}

void WornStore::ZeroHead() {
  std::fill_n(bytes_.begin(), 0x24BC, '\0');
}

void WornStore::TakePiece(int fromPercent, int toPercent) {
  size_t from = bytes_.size() * static_cast<size_t>(fromPercent) / 100 / kRoom * kRoom;
  size_t to = bytes_.size() * static_cast<size_t>(toPercent) / 100;
  bytes_ = bytes_.substr(from, to - from);
}

bool WornStore::IsIntact(const Written& message) const {
  std::string_view rest = message.text;
  for (uint32_t block : message.places.blocks) {
    std::string_view piece = rest.substr(0, kRoom);
    rest.remove_prefix(piece.size());
    size_t place = block + kBlockHead;
    if (place > bytes_.size()) return false;
    if (std::string_view(bytes_).substr(place, piece.size()) != piece) return false;
  }
  return true;
}

std::vector<std::string> WornStore::Intact() const {
  std::vector<std::string> texts;
  for (const Written& message : written_) {
    if (IsIntact(message)) texts.push_back(message.text);
  }
  return texts;
}

namespace {

bool IsBeginning(std::string_view part, std::string_view text, std::string_view mark) {
  if (part.size() > text.size()) return false;
  for (size_t i = 0; i < part.size();) {
    if (part[i] == text[i]) {
      ++i;
    } else if (!mark.empty() && part.substr(i, mark.size()) == mark.substr(0, part.size() - i)) {
      i += mark.size();
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace

Verdict Judge(const std::vector<std::string>& recovered, const std::vector<std::string>& texts,
              std::string_view mark) {
  Verdict verdict;
  for (const std::string& part : recovered) {
    auto whose = std::find_if(texts.begin(), texts.end(), [&](const std::string& text) {
      return IsBeginning(part, text, mark);
    });
    if (whose == texts.end()) {
      ++verdict.wrong;
    } else {
      ++(whose->size() == part.size() ? verdict.whole : verdict.parts);
    }
  }
  return verdict;
}

}  // namespace tarnwick::samples
