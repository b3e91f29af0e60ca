// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/check.h"

#include <algorithm>
#include <array>
#include <set>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "database/recordset.h"
#include "intake/store_message.h"
#include "maintenance/database_file.h"
#include "maintenance/export.h"
#include "maintenance/run.h"
#include "maintenance/unfinished_restore.h"
#include "platform/files.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using repository::ParameterDb;
using repository::RepositoryDb;

// What the engine lists of one file is cut here: a torn file has a complaint for each of its pages.
constexpr size_t kMostLines = 20;

struct ChildTable {
  const char* table;
  const char* key;
  const char* count;  // the message's column that tells how many rows there are; nullptr: files
  const char* rows;   // what they are, for the person
};

constexpr std::array<ChildTable, 4> kChildren = {
    {{"ToRecipient", "EmailID", "CountMailTo", "To recipients"},
     {"ccRecipient", "EmailID", "CountCC", "Cc recipients"},
     {"Attachment", "EmailID", "FilesNum", "attachment names"},
     {"FileRepository", "FileID", nullptr, "pieces of the original"}}};

std::string Describe(const Error& error) {
  return std::to_string(error.Number()) + " " + error.Description();
}

std::string Where(const ChildTable& child, int64_t id) {
  return std::string(" WHERE ") + child.key + "=" + std::to_string(id);
}

class Check {
 public:
  explicit Check(CheckReport& report) : report_(report), run_(0) {}

  Result Work() {
    return UntilStopped([&] {
      WatchScope watch(run_, RepositoryDb(), true);
      LookAtFile(RepositoryDb());
      LookAtFile(ParameterDb());
      LookForCopies();
      ReadUnfinished();
      std::vector<int64_t> ids = Identifiers();
      run_.Begin(static_cast<int64_t>(ids.size()));
      for (int64_t id : ids) {
        if (!LookAtMessage(id)) continue;
        run_.Advance(1);
        if (!run_.Look()) return Result::kStopped;
      }
      CountLeftovers();
      return Result::kDone;
    });
  }

 private:
  void Add(int64_t id, std::string what) { report_.damage.push_back({id, std::move(what)}); }

  // Runs body; what it throws, but for a stop, is damage of this kind.
  template <typename Body>
  bool Attempt(int64_t id, const std::string& what, Body&& body) {
    try {
      body();
      return true;
    } catch (const Error& error) {
      if (repository::IsStop(error)) throw;
      Add(id, what + " can't be read: " + Describe(error));
      return false;
    }
  }

  void LookAtFile(jet::Connection& file) {
    Attempt(0, file.DataSource(), [&] {
      std::string found = file.IntegrityCheck();
      size_t lines = 0;
      for (size_t begin = 0; begin < found.size() && lines < kMostLines; ++lines) {
        size_t end = std::min(found.find('\n', begin), found.size());
        Add(0, file.DataSource() + ": " + found.substr(begin, end - begin));
        begin = end + 1;
      }
    });
  }

  void LookForCopies() {
    report_.formerCopies = FormerCopies();
    std::string copy = UnfinishedRestore();
    if (copy.empty()) return;
    const char* where = platform::FileExists(copy) ? " is kept in " : " was kept in ";
    Add(0,
        std::string("The last restore did not come to its end; the repository as it was before") +
            where + copy);
  }

  void ReadUnfinished() {
    Attempt(0, "Table Unfinished", [&] {
      jet::Recordset rows;
      rows.Open("SELECT EmailID FROM Unfinished", RepositoryDb());
      for (; !rows.Eof(); rows.MoveNext()) unfinished_.insert(rows.Field("EmailID").AsInt());
    });
  }

  // Of a list that is torn itself: every number that was ever given.
  std::vector<int64_t> Identifiers() {
    std::vector<int64_t> ids;
    bool listed = Attempt(0, "The list of messages", [&] {
      jet::Recordset rows;
      rows.Open("SELECT ID FROM Email ORDER BY ID", RepositoryDb());
      for (; !rows.Eof(); rows.MoveNext()) ids.push_back(rows.Field("ID").AsInt());
    });
    if (listed) return ids;
    listIsTorn_ = true;
    int64_t last = ids.empty() ? 0 : ids.back();
    for (const char* query :
         {"SELECT Max(ID) AS Last FROM Email", "SELECT Max(FileID) AS Last FROM FileRepository"}) {
      Attempt(0, "The highest message number", [&] {
        jet::Recordset rows;
        rows.Open(query, RepositoryDb());
        if (!rows.Eof()) last = std::max(last, rows.Field("Last").AsInt());
      });
    }
    // A torn index may claim any number; more messages than bytes there are not.
    last = std::min(last, static_cast<int64_t>(platform::FileSize(RepositoryDb().DataSource())));
    ids.clear();
    for (int64_t id = 1; id <= last; ++id) ids.push_back(id);
    return ids;
  }

  // False when there is no such message.
  bool LookAtMessage(int64_t id) {
    size_t before = report_.damage.size();
    bool exists = true;
    std::array<int64_t, kChildren.size()> promised{};
    bool hasRecipients = false;
    Attempt(id, "The message", [&] {
      jet::Recordset email;
      email.Open("SELECT * FROM Email WHERE ID=" + std::to_string(id), RepositoryDb());
      exists = !email.Eof();
      if (!exists) return;
      for (int i = 0; i < email.FieldCount(); ++i) email.Field(i);
      std::string direction = email.Field("Direction").AsText();
      hasRecipients = direction == "In" || direction == "Out";
      for (size_t i = 0; i < kChildren.size(); ++i) {
        if (kChildren[i].count != nullptr) promised[i] = email.Field(kChildren[i].count).AsInt();
      }
    });
    if (!exists) return false;
    ++report_.messages;
    if (unfinished_.count(id) != 0) {
      Add(id, "An error ended its storing half way; the next load of its store makes it whole");
    }
    bool isRead = report_.damage.size() == before;
    for (size_t i = 0; i < kChildren.size(); ++i) {
      const ChildTable& child = kChildren[i];
      Attempt(id, std::string("Its ") + child.rows, [&] {
        if (child.count == nullptr) {
          LookAtOriginal(id);
        } else if (isRead) {
          // Of a message that is neither sent nor received no recipients are kept.
          bool isKept = hasRecipients || std::string_view(child.table) == "Attachment";
          Compare(id, child, isKept ? promised[i] : 0);
        }
      });
    }
    if (report_.damage.size() == before) report_.sound.push_back(id);
    return true;
  }

  void Compare(int64_t id, const ChildTable& child, int64_t promised) {
    jet::Recordset rows;
    rows.Open(std::string("SELECT * FROM ") + child.table + Where(child, id), RepositoryDb());
    int64_t count = 0;
    for (; !rows.Eof(); rows.MoveNext(), ++count) rows.Field("ID");
    // An attachment may be without a name; it is counted and has no row.
    bool isName = std::string_view(child.table) == "Attachment";
    if (count == promised || (isName && count < promised)) return;
    Add(id, std::to_string(count) + " " + child.rows + " instead of " + std::to_string(promised));
  }

  // An original is stored in one go: rows with rising numbers and no gap, all but the last full.
  void LookAtOriginal(int64_t id) {
    jet::Recordset rows;
    rows.Open("SELECT ID, FileBody FROM FileRepository WHERE FileID=" + std::to_string(id) +
                  " ORDER BY ID",
              RepositoryDb());
    if (rows.Eof()) {
      Add(id, "Its original is missing");
      return;
    }
    bool isWhole = true;
    size_t length = intake::kFileRecordLength;
    for (int64_t expected = rows.Field("ID").AsInt(); !rows.Eof(); rows.MoveNext(), ++expected) {
      isWhole =
          isWhole && rows.Field("ID").AsInt() == expected && length == intake::kFileRecordLength;
      length = rows.Field("FileBody").AsText().size();
      isWhole = isWhole && length > 0 && length <= intake::kFileRecordLength;
    }
    if (!isWhole) Add(id, "Its original is not whole");
  }

  void CountLeftovers() {
    // Where messages can't be read, their rows are no leftovers.
    if (listIsTorn_) return;
    for (const ChildTable& child : kChildren) {
      Attempt(0, std::string("Table ") + child.table, [&] {
        jet::Recordset rows;
        rows.Open(std::string("SELECT Count(*) AS RowCount FROM ") + child.table + " WHERE " +
                      child.key + " NOT IN (SELECT ID FROM Email)",
                  RepositoryDb());
        if (!rows.Eof()) report_.leftovers += rows.Field("RowCount").AsInt();
      });
    }
  }

  CheckReport& report_;
  Run run_;
  std::set<int64_t> unfinished_;  // the messages that are marked as left by half
  bool listIsTorn_ = false;
};

}  // namespace

Result CheckRepository(CheckReport& report) {
  return core::Guarded("CheckRepository", Result::kFailed, [&] {
    report = {};
    RepositoryDb().FlushGroup();
    core::LogProgress("Check of " + RepositoryDb().DataSource());
    Result result = Check(report).Work();
    std::stable_sort(report.damage.begin(), report.damage.end(),
                     [](const Finding& a, const Finding& b) { return a.id < b.id; });
    for (const Finding& finding : report.damage) {
      core::WriteLog("Check: " + core::OneLogLine(TextOf(finding)));
    }
    core::LogProgress("Check: " + std::to_string(report.messages) + " messages, " +
                      std::to_string(report.DamagedMessages()) + " damaged");
    return result;
  });
}

std::string TextOf(const Finding& finding) {
  std::string message = finding.id == 0 ? "" : "Message " + std::to_string(finding.id) + ": ";
  return message + finding.what;
}

Result CheckAndTell() {
  constexpr size_t kMostShown = 8;
  CheckReport report;
  Result result = CheckRepository(report);
  if (result == Result::kFailed) return result;
  bool isDone = result == Result::kDone;
  std::string text = isDone ? "Check is done. " : "Check is stopped. ";
  text += std::to_string(report.messages) + " message(s), " +
          std::to_string(report.DamagedMessages()) + " damaged.";
  size_t shown = std::min(report.damage.size(), kMostShown);
  for (size_t i = 0; i < shown; ++i) text += "\r\n" + TextOf(report.damage[i]);
  if (shown < report.damage.size()) {
    text += "\r\n" + std::to_string(report.damage.size() - shown) + " more are in the log, " +
            core::State().LogFile;
  }
  for (const std::string& copy : report.formerCopies) text += "\r\n" + CopyNote(copy);
  if (!report.IsSound()) {
    text +=
        "\r\nRestore a backup from before the damage. How to save the messages that are whole "
        "where there is none is told in the help.";
  }
  core::ShowMessage(text);
  return result;
}

std::string CopyNote(const std::string& copy) {
  return "The repository as it was before an earlier restore is still kept in " + copy +
         "; delete that file if you do not need it.";
}

Result ExportSound(const CheckReport& report, const std::string& file) {
  return core::Guarded("ExportSound", Result::kFailed, [&] {
    if (report.sound.empty()) {
      core::ShowMessage("There is no message that can be exported.");
      return Result::kDeclined;
    }
    std::string ids;
    for (int64_t id : report.sound) ids += (ids.empty() ? "" : ", ") + std::to_string(id);
    jet::Recordset list;
    list.Open("SELECT ID, ReceivedTime FROM Email WHERE ID In (" + ids + ")", RepositoryDb());
    return ExportEmails(file, list);
  });
}

}  // namespace tarnwick::maintenance
