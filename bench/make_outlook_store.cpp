// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-make-outlook-store DIR MESSAGES FILE unicode|ansi [KB]: writes the messages below DIR,
// one a file, over and over until there are MESSAGES of them, as an Outlook store: their headers as
// the ones they came with, what follows as their body. In the older ANSI format texts are in
// Latin-1. KB: each has an attachment of so many KB of random bytes.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <random>

#include "intake/header_parser.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "samples/pst_builder.h"

namespace {

namespace fs = std::filesystem;
using tarnwick::outlook::reader::Variant;
using tarnwick::samples::PstBuilder;
using tarnwick::samples::PstMessage;

constexpr int64_t kFirstTime = 126'600'000'000'000'000;  // in 2002, as Outlook counts
constexpr size_t kFolderSize = 5000;
constexpr int64_t kMinute = 600'000'000;

// The first header of its kind.
std::string HeaderOf(const std::string& headers, tarnwick::intake::HeaderCode code) {
  for (size_t begin = 0; begin < headers.size();) {
    size_t end = std::min(headers.find('\n', begin), headers.size());
    std::string line = headers.substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (tarnwick::intake::ClassifyHeader(line) == code) return line;
    begin = end + 1;
  }
  return {};
}

// The bytes of a text as the store keeps them; those that are given are read as Latin-1.
PstMessage MessageOf(const std::string& bytes, size_t number, bool isUnicode) {
  auto kept = [&](const std::string& text) {
    return isUnicode ? tarnwick::platform::BytesToUtf8(text, "iso-8859-1") : text;
  };
  size_t end = bytes.find("\n\n");
  if (end == std::string::npos) end = bytes.find("\r\n\r\n");
  end = std::min(end, bytes.size());
  std::string headers = kept(bytes.substr(0, end));
  auto sender =
      tarnwick::intake::SplitAddress(HeaderOf(headers, tarnwick::intake::HeaderCode::kFrom));
  auto to = tarnwick::intake::SplitAddress(HeaderOf(headers, tarnwick::intake::HeaderCode::kTo));
  int64_t time = kFirstTime + static_cast<int64_t>(number) * kMinute;
  PstMessage message;
  message.properties.texts = {{0x001A, "IPM.Note"},
                              {0x0037, HeaderOf(headers, tarnwick::intake::HeaderCode::kSubject)},
                              {0x007D, headers + "\r\n"},
                              {0x0C1A, sender.Name},
                              {0x0C1E, "SMTP"},
                              {0x0C1F, sender.Address},
                              {0x1000, kept(bytes.substr(end))}};
  message.properties.times = {{0x0039, time}, {0x0E06, time}};
  message.properties.numbers = {{0x0E07, 1}, {0x0017, 1}};
  tarnwick::samples::PstProperties recipient;
  recipient.texts = {{0x3001, to.Name}, {0x3002, "SMTP"}, {0x3003, to.Address}};
  recipient.numbers = {{0x0C15, 1}};
  message.recipients = {recipient};
  return message;
}

tarnwick::samples::PstAttachment RandomFile(size_t kilobytes, std::mt19937_64& random) {
  tarnwick::samples::PstAttachment file;
  file.properties.texts = {{0x3707, "random.bin"}};
  for (size_t left = kilobytes * 1024; left > 0; left -= 8) {
    for (uint64_t word = random(), i = 0; i < 8; ++i, word >>= 8) {
      file.data.push_back(static_cast<char>(word));
    }
  }
  return file;
}

int Run(const std::string& source, size_t messages, const std::string& target, bool isUnicode,
        size_t kilobytes) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(source)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    std::cerr << "no messages below " << source << "\n";
    return 1;
  }
  PstBuilder store(isUnicode ? Variant::kUnicode : Variant::kAnsi);
  std::mt19937_64 random(1);
  uint32_t folder = 0;
  for (size_t i = 0; i < messages; ++i) {
    if (i % kFolderSize == 0) {
      folder = store.AddFolder(PstBuilder::kTop, "Folder " + std::to_string(i / kFolderSize));
    }
    std::string bytes = tarnwick::platform::ReadFile(files[i % files.size()].string());
    PstMessage message = MessageOf(bytes, i, isUnicode);
    if (kilobytes > 0) message.attachments = {RandomFile(kilobytes, random)};
    store.AddMessage(folder, message);
  }
  tarnwick::platform::WriteFile(target, store.Build());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  bool hasFormat = argc == 5 || argc == 6;
  bool isUnicode = hasFormat && std::strcmp(argv[4], "unicode") == 0;
  if (!isUnicode && (!hasFormat || std::strcmp(argv[4], "ansi") != 0)) {
    std::cerr << "usage: tarnwick-make-outlook-store DIR MESSAGES FILE unicode|ansi [KB]\n";
    return 2;
  }
  try {
    return Run(argv[1], static_cast<size_t>(std::atol(argv[2])), argv[3], isUnicode,
               argc == 6 ? static_cast<size_t>(std::atol(argv[5])) : 0);
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Description() << "\n";
    return 1;
  }
}
