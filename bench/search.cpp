// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-search MESSAGES FOLDER [RUNS]: searches a repository of so many made-up messages, with
// the text index and without, and prints medians in milliseconds. The repository is made in the
// folder when it is not there; the second figure of its line is what making it took. "first" is a
// search right after opening.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "database/engine/packing.h"
#include "database/recordset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace {

using namespace tarnwick;

class Texts {
 public:
  Texts() {
    // Syllables make words, as frequent as those of a language are: the n-th as 1/n.
    constexpr std::string_view kConsonants = "bcdfghjklmnprstvwz";
    constexpr std::string_view kVowels = "aeiou";
    for (int i = 0; i < 60000; i++) {
      std::string word;
      for (size_t syllables = 1 + random_() % 4; syllables > 0; syllables--) {
        word += kConsonants[random_() % kConsonants.size()];
        word += kVowels[random_() % kVowels.size()];
        if (random_() % 3 == 0) word += kConsonants[random_() % kConsonants.size()];
      }
      words_.push_back(word);
    }
  }
  std::string Take(size_t words) {
    std::string text;
    for (size_t i = 0; i < words; i++) {
      double share = static_cast<double>(random_()) / 4294967296.0;
      auto word = static_cast<size_t>(std::pow(60000.0, share)) - 1;
      text += words_[std::min<size_t>(word, 59999)];
      text += i % 12 == 11 ? "\r\n" : " ";
    }
    return text;
  }
  uint32_t Number() { return static_cast<uint32_t>(random_()); }

 private:
  std::mt19937 random_{1};
  std::vector<std::string> words_;
};

double Milliseconds(const std::function<void()>& work) {
  auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
      .count();
}

void Open(jet::Connection& connection, const std::string& file, bool indexed) {
  connection.SetProperty(jet::kDataSourceProperty, file);
  connection.SetProperty(jet::kPasswordProperty, repository::DatabasePassword());
  connection.Open();
  if (indexed) connection.KeepTextIndex("Email", {"Body", "Subject"});
}

void Make(const std::string& file, int messages) {
  jet::CreateDatabaseFile(file, repository::DatabasePassword(), repository::RepositoryTables(),
                          repository::kSchemaVersion);
  jet::Connection connection;
  Open(connection, file, true);
  Texts texts;
  jet::Recordset email;
  email.Open("Email", connection, jet::CursorType::kKeyset, jet::LockType::kPessimistic,
             jet::CommandType::kTable);
  jet::CommitGroup group(connection);
  DateTime first = DateTime::FromDate(1999, 1, 1);
  for (int i = 1; i <= messages; i++) {
    email.AddNew();
    email.SetField("Subject", texts.Take(4));
    email.SetField("Direction", i % 5 == 0 ? "Out" : "In");
    email.SetField("ReceivedTime", DateTime::FromSeconds(first.Seconds() + int64_t{i} * 300));
    std::string body = texts.Take(60 + texts.Number() % 300);
    if (i % 2003 == 0) body += " Quetzalcoatl ";
    if (i % 50021 == 0) body += " 73 Gänsefüßchen ";
    email.SetField("Body", body);
    email.Update();
    connection.EndUnit();
  }
  group.End();
}

int Run(int messages, const std::string& folder, int runs) {
  std::string file = platform::WithSeparator(folder) + "search.twr";
  double made = 0;
  if (!platform::FileExists(file)) made = Milliseconds([&] { Make(file, messages); });
  std::cout << messages << " messages, made in " << made / 1000 << " s, "
            << platform::FileSize(file) / 1000000 << " MB\n";
  std::cout << "pattern                    rows   first   index    scan  texts read\n";
  for (const char* pattern : {"%quetzalcoatl%", "%GÄNSEFÜSSCHEN%", "%73 gänsefüßchen%",
                              "%no such text%", "%ko bada%", "%zqx%", "%ba%", "%ro%co%"}) {
    std::string query =
        "SELECT DISTINCT Email.Subject, MeContact.Name AS FromTo, Email.ID, Email.ReceivedTime "
        "FROM (Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID) LEFT JOIN Attachment ON "
        "Email.ID = Attachment.EmailID WHERE ReceivedTime BETWEEN #01/01/1990 00:00:00# AND "
        "#12/31/2030 23:59:59# AND Email.Body Like '" +
        std::string(pattern) + "' ORDER BY Email.ReceivedTime DESC";
    int64_t rows = 0;
    uint64_t read = 0;
    double first = 0;
    std::vector<double> medians;
    for (bool indexed : {true, false}) {
      jet::Connection connection;
      Open(connection, file, indexed);
      std::vector<double> times;
      for (int i = 0; i <= runs; i++) {
        uint64_t before = jet::UnpackCount();
        times.push_back(Milliseconds([&] {
          jet::Recordset list;
          list.Open(query, connection, jet::CursorType::kKeyset, jet::LockType::kOptimistic);
          rows = list.RecordCount();
        }));
        if (indexed && i == 0) first = times[0];
        if (indexed) read = jet::UnpackCount() - before;
        if (!indexed && times[0] > 3000) break;
      }
      std::sort(times.begin(), times.end());
      medians.push_back(times[times.size() / 2]);
    }
    printf("%-25s %6lld %7.1f %7.1f %7.1f %9llu\n", pattern, static_cast<long long>(rows), first,
           medians[0], medians[1], static_cast<unsigned long long>(read));
    fflush(stdout);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: tarnwick-search MESSAGES FOLDER [RUNS]" << std::endl;
    return 2;
  }
  try {
    return Run(std::atoi(argv[1]), argv[2], argc > 3 ? std::atoi(argv[3]) : 5);
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
