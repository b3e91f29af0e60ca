// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/worn_outlook.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <random>
#include <string_view>

#include "intake/transfer_decoding.h"

namespace tarnwick::samples {

namespace {

constexpr int kInFolder = 200;
constexpr int kBetweenIndexes = 20;
constexpr int64_t kFirstTime = 126'600'000'000'000'000;  // in 2002, as Outlook counts
constexpr int64_t kMinute = 600'000'000;

int LinesOf(int number) {
  return number % 4 == 0 ? 900 : 3;
}
int FileLinesOf(int number) {
  return number % 3 == 0 ? 1000 : 0;
}

// "word-17;" so many times, in lines.
std::string Marks(const std::string& word, int number, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += word;
    text += "-" + std::to_string(number) + ";\r\n";
  }
  return text;
}

// A letter with its base64 parts as the bytes that they stand for.
std::string WithFilesDecoded(std::string letter) {
  std::erase(letter, '\r');
  constexpr std::string_view kMark = "Transfer-Encoding: base64";
  std::string text;
  size_t done = 0;
  for (size_t at; (at = letter.find(kMark, done)) != std::string::npos;) {
    size_t begin = std::min(letter.find("\n\n", at), letter.size());
    size_t end = std::min(letter.find("\n--", begin), letter.size());
    text += letter.substr(done, begin - done);
    text += "\n" + intake::DecodeFile(letter.substr(begin, end - begin), "base64");
    done = end;
  }
  return text + letter.substr(done);
}

}  // namespace

PstMessage WornMail(int number) {
  PstMessage mail;
  std::string name = std::to_string(number);
  int64_t time = kFirstTime + number * kMinute;
  mail.properties.texts = {{0x001A, "IPM.Note"},
                           {0x0037, "subject-" + name + ";"},
                           {0x0C1A, "sender-" + name + ";"},
                           {0x0C1F, "ann@firm.test"},
                           {0x1000, Marks("body", number, LinesOf(number))}};
  mail.properties.times = {{0x0039, time}, {0x0E06, time}};
  mail.properties.numbers = {{0x0E07, 1}};
  PstProperties bob;
  bob.texts = {{0x3001, "to-" + name + ";"}, {0x3003, "bob@x.test"}};
  bob.numbers = {{0x0C15, 1}};
  mail.recipients = {bob};
  if (FileLinesOf(number) > 0) {
    PstAttachment file;
    file.properties.texts = {{0x3707, "list.txt"}, {0x370E, "text/plain"}};
    file.data = Marks("file", number, FileLinesOf(number));
    mail.attachments = {file};
  }
  return mail;
}

WornOutlook::WornOutlook(outlook::reader::Variant variant, int messages)
    : store_(variant), layout_(outlook::reader::LayoutOf(variant)) {
  store_.SetCipher(1);
  uint32_t folder = 0;
  for (int i = 0; i < messages; ++i) {
    if (i % kInFolder == 0) {
      folder = store_.AddFolder(PstBuilder::kTop, "Folder " + std::to_string(i / kInFolder));
    }
    nodes_.push_back(store_.AddMessage(folder, WornMail(i)));
    if (i % kBetweenIndexes == kBetweenIndexes - 1) store_.Checkpoint();
  }
}

void WornOutlook::DeleteEvery(int n) {
  store_.Checkpoint();
  for (size_t i = 0; i < nodes_.size(); i += static_cast<size_t>(n))
    store_.DeleteMessage(nodes_[i]);
}

void WornOutlook::OverwriteIndex(int percent) {
  std::mt19937 random(7);
  const size_t page = layout_.pageSize;
  for (size_t at = page; at + page <= bytes_.size(); at += page) {
    // A page tells its type twice in its trailer.
    size_t trailer = at + page - layout_.trailer;
    auto type = static_cast<unsigned char>(bytes_[trailer]);
    bool isPage = (type == 0x80 || type == 0x81) && bytes_[trailer] == bytes_[trailer + 1];
    if (!isPage || static_cast<int>(random() % 100) >= percent) continue;
    for (size_t i = 0; i < page; ++i) bytes_[at + i] = static_cast<char>(random());
  }
}

void WornOutlook::TurnBits(size_t pagesApart) {
  std::mt19937 random(11);
  const size_t head = layout_.pageSize;
  for (size_t i = 0; i < bytes_.size() / head / pagesApart; ++i) {
    char& byte = bytes_[head + random() % (bytes_.size() - head)];
    byte = static_cast<char>(byte ^ static_cast<char>(1U << random() % 8));
  }
}

WornPart JudgeWorn(const std::string& mime) {
  const std::string letter = WithFilesDecoded(mime);
  std::map<std::string, int> counts;  // by word
  int number = -1;
  for (std::string_view word : {"subject-", "sender-", "to-", "body-", "file-"}) {
    for (size_t at = letter.find(word); at != std::string::npos; at = letter.find(word, at + 1)) {
      int its = 0;
      const char* digits = letter.data() + at + word.size();
      auto [end, error] = std::from_chars(digits, letter.data() + letter.size(), its);
      if (error != std::errc() || end == letter.data() + letter.size() || *end != ';') continue;
      if (number >= 0 && its != number) return WornPart::kMixed;
      number = its;
      ++counts[std::string(word)];
    }
  }
  bool isWhole = number >= 0 && counts["subject-"] == 1 && counts["sender-"] == 1 &&
                 counts["to-"] == 1 && counts["body-"] == LinesOf(number) &&
                 counts["file-"] == FileLinesOf(number);
  return isWhole ? WornPart::kWhole : WornPart::kPart;
}

}  // namespace tarnwick::samples
