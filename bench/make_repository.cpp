// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-make-repository HOME MESSAGES [CONTACTS [LONGEST]]: fills the repository in HOME, made
// where it is missing, up to so many messages, by the routines that store mail, and then its
// contact book. What the n-th message holds depends on n and LONGEST alone, so a run that was
// stopped is taken up where it ended, and every machine makes the same repository. Its mail: raw
// texts of an eighth of LONGEST bytes (8192) up to it whose words are as frequent as those of a
// language (the n-th word a n-th as often as the first), threads, 3,000 correspondents, a fifth
// with one to three attachments, one message in fifty hot. No raw text is shorter than its head and
// 100 bytes.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "core/run_state.h"
#include "core/startup.h"
#include "core/user_interface.h"
#include "database/recordset.h"
#include "intake/store_message.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/app_folder.h"
#include "repository/repository.h"
#include "support/scripted_ui.h"

namespace tarnwick {
namespace {

constexpr int kWords = 30000;
constexpr int kCorrespondents = 3000;
constexpr int64_t kFirstDay = 883612800;  // 1 January 1998
constexpr int64_t kSecondsApart = 350;
constexpr int64_t kOfOneSpan = 3000000;  // 33 years of it; then it begins anew

// A stream of numbers of its own for each message. Seeds are mixed, too: streams that began at
// neighbouring states would be one stream, shifted.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(Mixed(seed)) {}
  uint64_t Next() { return Mixed(state_ += 0x9E3779B97F4A7C15ULL); }
  uint64_t Below(uint64_t limit) { return Next() % limit; }
  double Part() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
  // 0 .. limit - 1, the n-th with a chance like 1 / (n + 1).
  size_t Rank(size_t limit) {
    return static_cast<size_t>(std::pow(static_cast<double>(limit), Part())) - 1;
  }

 private:
  static uint64_t Mixed(uint64_t z) {
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  uint64_t state_;
};

std::string MakeWord(size_t rank) {
  constexpr std::string_view kConsonants = "tnshrdlcmwfgypbvkjxqz";
  constexpr std::string_view kVowels = "eaoiu";
  Random random(rank + 1000000);
  size_t length = 2 + random.Below(3) + static_cast<size_t>(std::log2(rank + 2) / 3);
  std::string word;
  while (word.size() < length) {
    word += kConsonants[random.Rank(kConsonants.size())];
    word += kVowels[random.Rank(kVowels.size())];
  }
  return word;
}

std::string Capital(std::string word) {
  word[0] = static_cast<char>(word[0] - 'a' + 'A');
  return word;
}

class Mail {
 public:
  Mail() {
    for (size_t i = 0; i < kWords; ++i) words_.push_back(MakeWord(i));
  }

  std::string Person(size_t number) const {
    return Capital(words_[200 + number % 700]) + " " +
           Capital(words_[1000 + number / 7 * 3 % 9000]) +
           (number < kCorrespondents ? "" : " " + std::to_string(number));
  }
  static std::string Address(size_t number) {
    return "person" + std::to_string(number) + "@example" + std::to_string(number % 40) + ".org";
  }

  std::string Text(Random& random, size_t length) const {
    std::string text;
    size_t line = 0;
    while (text.size() < length) {
      const std::string& word = words_[random.Rank(kWords)];
      text += line == 0 && random.Below(3) == 0 ? Capital(word) : word;
      line += word.size() + 1;
      if (line > 68) {
        text += random.Below(2) != 0 ? ".\r\n" : "\r\n";
        line = 0;
      } else {
        text += ' ';
      }
    }
    return text + "\r\n";
  }

  std::string Subject(Random& random, int64_t number) const {
    // A thread holds three messages and begins when its first is written.
    uint64_t thread = random.Below(static_cast<uint64_t>(number) / 3 + 1);
    Random own(thread + 7000000000ULL);
    std::string subject = Capital(words_[own.Rank(kWords)]);
    for (uint64_t i = own.Below(6); i > 0; --i) subject += " " + words_[own.Rank(kWords)];
    return (random.Below(3) != 0 ? "Re: " : "") + subject;
  }

  std::string FileName(Random& random) const {
    constexpr const char* kEndings[] = {".doc", ".jpg", ".xls", ".pdf", ".zip"};
    return words_[random.Rank(2000)] + kEndings[random.Below(5)];
  }

 private:
  std::vector<std::string> words_;
};

void Store(const Mail& mail, int64_t number, double longest, intake::MailMessage& message) {
  Random random(static_cast<uint64_t>(number));
  message = {};
  size_t person = random.Rank(kCorrespondents);
  bool isIn = random.Below(4) != 0;
  message.Direction = isIn ? "In" : "Out";
  message.Folder = isIn ? "Inbox" : "Sent Items";
  message.Subject = mail.Subject(random, number);
  message.FromName = isIn ? mail.Person(person) : "Ann";
  message.FromAddress = isIn ? Mail::Address(person) : "ann@example.org";
  message.ToCount = 1;
  message.To[0] = isIn ? intake::AddressPair{"Ann", "ann@example.org"}
                       : intake::AddressPair{mail.Person(person), Mail::Address(person)};
  if (random.Below(8) == 0) {
    size_t other = random.Rank(kCorrespondents);
    message.CcCount = 1;
    message.Cc[0] = {mail.Person(other), Mail::Address(other)};
  }
  int64_t time =
      kFirstDay + number % kOfOneSpan * kSecondsApart + static_cast<int64_t>(random.Below(86400));
  message.SentTime = DateTime::FromSeconds(time - static_cast<int64_t>(random.Below(600)));
  message.ReceivedTime = DateTime::FromSeconds(time);
  std::string key =
      "<" + std::to_string(random.Next()) + "." + std::to_string(number) + "@mail.example.org>";
  message.MessageKey = key + "_" + std::to_string(time);
  message.Charset = "us-ascii";
  if (random.Below(25) == 0) message.Importance = "High";
  if (random.Below(5) == 0) {
    message.AttachCount = static_cast<int16_t>(1 + random.Below(3));
    for (int i = 0; i < message.AttachCount; ++i) {
      message.Attachments[static_cast<size_t>(i)] = mail.FileName(random);
    }
  }
  std::string raw = "Return-Path: <" + message.FromAddress + ">\r\nReceived: from mail" +
                    std::to_string(random.Below(9)) + ".example.net by pop.example.org; " +
                    message.ReceivedTime.ToIso() + "\r\nMessage-ID: " + key +
                    "\r\nFrom: " + message.FromName + " <" + message.FromAddress +
                    ">\r\nTo: " + message.To[0].Name + " <" + message.To[0].Address +
                    ">\r\nSubject: " + message.Subject + "\r\nDate: " + message.SentTime.ToIso() +
                    "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=us-ascii\r\n"
                    "X-Mailer: Microsoft Outlook Express 6.00.2600.0000\r\n\r\n";
  double size = longest / 8 * std::pow(8, random.Part());
  message.Body = mail.Text(random, std::max(100.0, size - static_cast<double>(raw.size())));
  raw += message.Body;
  const std::string& file = core::State().TempMessageFile;
  platform::WriteFile(file, raw);
  intake::dbSaveMesage(file, message, "Outlook Express", 1, "Main Identity");
  if (random.Below(50) == 0) {
    repository::RepositoryDb().Execute("UPDATE Email SET Active = '+' WHERE ID=" +
                                       std::to_string(number));
  }
}

int64_t Number(const char* sql) {
  jet::Recordset rows;
  rows.Open(sql, repository::RepositoryDb());
  return rows.Eof() ? 0 : rows.Field(0).AsInt();
}

int Run(const std::string& home, int64_t messages, int64_t contacts, double longest) {
  testing::ScriptedUi ui;
  std::string program = platform::FolderOf(platform::ProgramPath());
  std::string folder = platform::WithSeparator(home);
  platform::MakeFolder(folder);
  repository::SeedAppFolder(folder, program);
  if (!platform::FileExists(folder + "Tarnwick.twr")) {
    platform::CopyFile(folder + "emlTemplate.twr", folder + "Tarnwick.twr");
  }
  core::PrepareRun(folder);
  if (!repository::OpenRepository(false)) return 1;
  Mail mail;
  auto message = std::make_unique<intake::MailMessage>();
  int64_t first = Number("SELECT Max(ID) AS Last FROM Email") + 1;
  auto began = std::chrono::steady_clock::now();
  auto seconds = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  };
  jet::CommitGroup group(repository::RepositoryDb());
  for (int64_t number = first; number <= messages; ++number) {
    Store(mail, number, longest, *message);
    repository::RepositoryDb().EndUnit();
    if (number % 50000 == 0) {
      std::printf("%8ld messages  %7.0f a second\n", static_cast<long>(number),
                  static_cast<double>(number - first + 1) / seconds());
      std::fflush(stdout);
    }
  }
  int64_t known = Number("SELECT Count(ID) AS Known FROM MeContact");
  for (int64_t number = known; number < contacts; ++number) {
    auto person = static_cast<size_t>(number + kCorrespondents);
    intake::GetContactId(mail.Person(person), Mail::Address(person));
    repository::RepositoryDb().EndUnit();
  }
  group.End();
  std::printf("%ld messages, %ld contacts, %.0f s\n",
              static_cast<long>(Number("SELECT Count(ID) AS Known FROM Email")),
              static_cast<long>(Number("SELECT Count(ID) AS Known FROM MeContact")), seconds());
  repository::DisconnectRepository();
  return 0;
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  if (argc < 3 || argc > 5) {
    std::cerr << "usage: tarnwick-make-repository HOME MESSAGES [CONTACTS [LONGEST]]" << std::endl;
    return 2;
  }
  try {
    return tarnwick::Run(argv[1], std::atoll(argv[2]), argc >= 4 ? std::atoll(argv[3]) : 0,
                         argc == 5 ? std::atof(argv[4]) : 8192);
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
