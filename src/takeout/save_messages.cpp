// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/save_messages.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/steps.h"
#include "core/text.h"
#include "database/recordset.h"
#include "intake/mail_message.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "takeout/new_files.h"
#include "takeout/stored_file.h"

namespace tarnwick::takeout {

namespace {

using repository::RepositoryDb;

// So many failures one behind the other are no longer a matter of single messages.
constexpr int kMostFailuresInARow = 20;
// What a file takes on a disk beyond its bytes, at most.
constexpr uint64_t kFileOverhead = 4096;

std::string Known(const std::string& text, std::string_view unknown) {
  return text == unknown ? std::string() : text;
}

std::optional<MessageLabel> ReadLabel(int64_t id) {
  jet::Recordset row;
  row.Open(
      "SELECT ReceivedTime, CreationTime, Subject, FromToName, FromToAddress, AddressFrom, "
      "Application, Folder, Parent, State FROM Email WHERE ID=" +
          std::to_string(id),
      RepositoryDb());
  if (row.Eof()) return std::nullopt;
  MessageLabel label;
  label.id = id;
  label.time = row.Field(0).AsDate();
  if (!label.time) label.time = row.Field(1).AsDate();
  label.subject = row.Field(2).AsText();
  label.correspondent = Known(row.Field(3).AsText(), intake::kNoName);
  if (label.correspondent.empty()) {
    label.correspondent = Known(row.Field(4).AsText(), intake::kNoAddress);
  }
  label.sender = row.Field(5).AsText();
  label.folder = FolderPath(row.Field(6).AsText(), row.Field(8).AsText(), row.Field(7).AsText());
  label.state = intake::StateOfStored(row.Field(9).AsText());
  return label;
}

// The bytes of all stored files; nullopt when the person stopped it.
std::optional<uint64_t> SizeOf(const std::vector<int64_t>& ids) {
  core::Steps steps(static_cast<int64_t>(ids.size()));
  uint64_t size = 0;
  for (int64_t id : ids) {
    jet::Recordset rows;
    rows.Open("SELECT Sum(Len(FileBody)) AS FileSize FROM FileRepository WHERE FileID=" +
                  std::to_string(id),
              RepositoryDb());
    if (!rows.Eof()) size += static_cast<uint64_t>(rows.Field(0).AsInt());
    if (!steps.Next()) return std::nullopt;
  }
  return size;
}

// Throws when the messages do not fit; false when the person stopped it. The messages are looked
// at only where the whole repository, with room to spare, would not fit.
bool CheckSpace(const SaveOrder& order) {
  uint64_t overhead = order.ids.size() * kFileOverhead;
  uint64_t all = platform::FileSize(repository::Repository().RepositoryFolder +
                                    std::string(repository::kRepositoryFile));
  if (platform::FreeSpace(order.folder) >= overhead + 4 * all) return true;
  std::optional<uint64_t> size = SizeOf(order.ids);
  if (!size) return false;
  platform::RequireSpace(order.folder, overhead + *size);
  return true;
}

// Puts the messages of each folder together, in the order in which the folders come first.
bool SortByFolder(std::vector<int64_t>& ids) {
  core::Steps steps(static_cast<int64_t>(ids.size()));
  std::vector<std::pair<std::string, int64_t>> keyed;
  for (int64_t id : ids) {
    std::string key;
    if (std::optional<MessageLabel> label = ReadLabel(id)) {
      for (const std::string& name : SafeFolderPath(*label)) {
        key += platform::FoldCase(name) + '\n';
      }
    }
    keyed.emplace_back(std::move(key), id);
    if (!steps.Next()) return false;
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::transform(keyed.begin(), keyed.end(), ids.begin(),
                 [](const auto& entry) { return entry.second; });
  return true;
}

// One run.
class Saving {
 public:
  Saving(const SaveOrder& order, MessageWriter& writer) : order_(order), writer_(writer) {
    counts_.selected = static_cast<int64_t>(order.ids.size());
  }

  SaveCounts Run(const std::vector<int64_t>& ids) {
    int64_t tried = 0;
    {
      core::Steps steps(counts_.selected);
      for (int64_t id : ids) {
        ++tried;
        if (!SaveOne(id) || !steps.Next()) break;
      }
    }
    core::GuardedRun("SaveMessages", [&] { writer_.Finish(); });
    counts_.saved = writer_.Saved();
    counts_.failed = tried - counts_.saved - counts_.withoutFile;
    counts_.notReached = counts_.selected - tried;
    return counts_;
  }

 private:
  // False when there is no point in going on, which has been shown.
  bool SaveOne(int64_t id) {
    std::optional<MessageLabel> label;
    std::optional<std::string> file;
    bool isRead = core::GuardedRun(
        "SaveMessages",
        [&] {
          label = ReadLabel(id);
          file = ReadStoredFile(id);
        },
        core::Report::kLog);
    if (!isRead) return true;
    if (!label || !file) {
      ++counts_.withoutFile;
      core::WriteLog("Not saved, no stored file: message " + std::to_string(id) +
                     (label ? ", " + core::LoggedMailText(label->subject) : std::string()));
      return true;
    }
    try {
      writer_.Save(*label, *file);
      failuresInARow_ = 0;
      return true;
    } catch (const Error& error) {
      ++failuresInARow_;
      core::WriteLog("Not saved: message " + std::to_string(id) + ", " +
                     core::LoggedMailText(label->subject));
      // A mailbox file ends where writing fails.
      bool isLast = core::IsDiskFull(error) || order_.format == SaveFormat::kMbox ||
                    failuresInARow_ >= kMostFailuresInARow;
      core::ReportCurrentException("SaveMessages",
                                   isLast ? core::Report::kShow : core::Report::kLog);
      return !isLast;
    }
  }

  const SaveOrder& order_;
  MessageWriter& writer_;
  SaveCounts counts_;
  int failuresInARow_ = 0;
};

// What lies in the scratch folder is gone at the next start.
void RefuseScratchFolder(const std::string& folder) {
  std::string chosen = platform::WithSeparator(platform::AbsolutePath(folder));
  const std::string& scratch = core::State().EmailFileFolder;
  bool isInside = !scratch.empty() && core::BeginsWith(chosen, scratch);
  if (isInside || platform::IsSameFile(chosen, scratch)) {
    throw Error(ErrorNumber::kPathAccess,
                "This folder is emptied at every start; choose another: " + folder);
  }
}

}  // namespace

std::string SaveCounts::Line() const {
  return "selected " + std::to_string(selected) + ", saved " + std::to_string(saved) +
         ", no stored file " + std::to_string(withoutFile) + ", failed " + std::to_string(failed) +
         ", not reached " + std::to_string(notReached);
}

std::string SaveCounts::Report(const std::string& folder) const {
  std::string text = (saved == 1 ? "1 message is" : std::to_string(saved) + " messages are") +
                     std::string(" saved in ") + folder;
  if (saved < selected) {
    text += "\r\n\r\nOf " + std::to_string(selected) + ", these are not:";
    auto add = [&text](int64_t count, const char* why) {
      if (count > 0) text += "\r\n" + std::to_string(count) + why;
    };
    add(withoutFile, " whose original is not in the repository");
    add(failed, " that could not be written");
    add(notReached, " that were not reached");
    if (withoutFile + failed > 0) text += "\r\nThe log names them.";
  }
  return text;
}

std::optional<SaveCounts> SaveMessages(const SaveOrder& order) {
  using Result = std::optional<SaveCounts>;
  return core::Guarded("SaveMessages", Result(), [&]() -> Result {
    SaveCounts nothing;
    nothing.selected = nothing.notReached = static_cast<int64_t>(order.ids.size());
    RefuseScratchFolder(order.folder);
    if (!CheckSpace(order)) return nothing;
    std::vector<int64_t> ids = order.ids;
    if (order.folders && order.format == SaveFormat::kMbox && !SortByFolder(ids)) return nothing;
    platform::MakeFolder(order.folder);
    auto writer = MakeWriter(order.format, order.folder, order.folders);
    SaveCounts counts = Saving(order, *writer).Run(ids);
    core::WriteLog("Save messages into " + order.folder + ": " + counts.Line());
    return counts;
  });
}

std::vector<std::string> FolderPath(const std::string& application, const std::string& parent,
                                    const std::string& folder) {
  // Outlook's are paths with backslashes; of Outlook Express, names joined by dots, the folder's
  // own among them where it lies in another.
  char separator = application == "Outlook" ? '\\' : '.';
  std::vector<std::string> path;
  std::string_view rest = parent;
  bool endsWithFolder = separator == '.' && rest.size() > folder.size() && !folder.empty() &&
                        rest.substr(rest.size() - folder.size()) == folder;
  if (endsWithFolder) rest.remove_suffix(folder.size());
  while (!rest.empty()) {
    size_t end = std::min(rest.find(separator), rest.size());
    if (end > 0) path.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (!folder.empty()) path.push_back(folder);
  return path;
}

}  // namespace tarnwick::takeout
