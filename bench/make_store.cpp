// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-make-store DIR COPIES MAILDIR PROFILE [LEVELS]: writes the messages below DIR, one a
// file, COPIES times over, as a maildir and as the profile of an Outlook Express user, whose
// message tree has so many levels. Prints their number.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "intake/date_parser.h"
#include "intake/encoded_word.h"
#include "intake/header_parser.h"
#include "platform/error.h"
#include "platform/files.h"
#include "samples/profile_builder.h"

namespace {

namespace fs = std::filesystem;
using tarnwick::DateTime;

struct Headers {
  std::string subject;
  std::string from;
  std::string messageId;
  size_t messageIdEnd = 0;  // the place of its ">" in the message, 0 for none
  DateTime date = DateTime::FromDate(2002, 1, 1);
};

Headers ReadHeaders(const std::string& message) {
  Headers headers;
  for (size_t begin = 0; begin < message.size();) {
    size_t end = message.find('\n', begin);
    if (end == std::string::npos) end = message.size();
    std::string line = message.substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) break;
    bool isId = line.size() > 11 && (line[0] == 'M' || line[0] == 'm');
    switch (tarnwick::intake::ClassifyHeader(line)) {
      case tarnwick::intake::HeaderCode::kSubject:
        headers.subject = line;
        break;
      case tarnwick::intake::HeaderCode::kFrom:
        headers.from = line;
        break;
      case tarnwick::intake::HeaderCode::kMessageId:
        if (!isId || line.find('>') == std::string::npos) break;
        headers.messageId = line.substr(0, line.find('>'));
        headers.messageIdEnd = message.find('>', begin);
        break;
      case tarnwick::intake::HeaderCode::kDate: {
        std::string time;
        std::string zone;
        tarnwick::intake::twParseDate(headers.date, time, zone, line, true);
        break;
      }
      default:
        break;
    }
    begin = end + 1;
  }
  // A store's messages are of its time.
  DateTime earliest = DateTime::FromDate(1990, 1, 2);
  DateTime latest = DateTime::FromDate(2009, 12, 31);
  headers.date = std::clamp(headers.date, earliest, latest);
  return headers;
}

std::string WithCrLf(const std::string& text) {
  std::string result;
  result.reserve(text.size() + text.size() / 30);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) result += '\r';
    result += text[i];
  }
  return result;
}

int Run(const std::string& source, int copies, const std::string& maildir,
        const std::string& profile, int levels) {
  for (const char* name : {"/cur", "/new", "/tmp"}) fs::create_directories(maildir + name);
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(source)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());

  tarnwick::samples::MessageStoreBuilder store;
  size_t count = 0;
  // What a tree of two levels holds.
  constexpr size_t kMost = 50000;
  for (int copy = 0; copy < copies; ++copy) {
    for (const fs::path& file : files) {
      if (count == kMost) break;
      std::string message = WithCrLf(tarnwick::platform::ReadFile(file.string()));
      Headers headers = ReadHeaders(message);
      std::string mark = copy == 0 ? "" : "." + std::to_string(copy);
      if (headers.messageIdEnd != 0) message.insert(headers.messageIdEnd, mark);
      tarnwick::samples::IndexedMessage indexed;
      indexed.text = message;
      indexed.date = headers.date;
      indexed.fraction = static_cast<uint32_t>(count);
      indexed.subject = headers.subject.substr(0, 200);
      if (headers.messageIdEnd != 0) indexed.messageId = headers.messageId + mark + ">";
      auto sender = tarnwick::intake::SplitAddress(headers.from);
      indexed.senderName = sender.Name.substr(0, 100);
      indexed.senderAddress = sender.Address.substr(0, 100);
      store.AddMessage(indexed);
      tarnwick::platform::WriteFile(maildir + "/cur/" + std::to_string(count) + ":2,S", message);
      ++count;
    }
  }
  if (levels == 2) {
    store.Finish(200, true);
  } else {
    store.FinishInLevels(levels);
  }
  tarnwick::samples::MessageStoreBuilder sent;
  sent.Finish();
  tarnwick::samples::ProfileBuilder builder(tarnwick::platform::WithSeparator(profile));
  std::string folder = builder.AddIdentity("bench");
  tarnwick::samples::ProfileBuilder::WriteStore(
      folder, tarnwick::samples::StandardFolders(store.Bytes(), sent.Bytes()));
  builder.WriteHive();
  std::cout << count << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5 && argc != 6) {
    std::cerr << "usage: tarnwick-make-store DIR COPIES MAILDIR PROFILE [LEVELS]" << std::endl;
    return 2;
  }
  try {
    return Run(argv[1], std::atoi(argv[2]), argv[3], argv[4], argc == 6 ? std::atoi(argv[5]) : 2);
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
