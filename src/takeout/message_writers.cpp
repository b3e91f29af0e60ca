// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/message_writers.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "takeout/msg_writer.h"
#include "takeout/new_files.h"

namespace tarnwick::takeout {

namespace {

constexpr size_t kMostFolderChars = 60;
constexpr const char* kMailbox = "Tarnwick";

std::string Joined(const std::string& folder, const std::vector<std::string>& names) {
  std::string path = platform::WithSeparator(folder);
  for (const std::string& name : names) path += name + platform::kSeparator;
  return path;
}

// "2003-05-02 1432 Ann Lee - Budget"; without a name or a subject what there is.
std::string StemOf(const MessageLabel& label) {
  constexpr size_t kMostCorrespondent = 40;
  std::string stem;
  if (label.time) {
    stem = label.time->ToIso().substr(0, 16);
    std::erase(stem, ':');
  }
  auto add = [&stem](std::string_view text, const char* between) {
    if (!text.empty()) stem.append(stem.empty() ? "" : between).append(text);
  };
  add(platform::FirstChars(label.correspondent, kMostCorrespondent), " ");
  add(label.subject, label.correspondent.empty() ? " " : " - ");
  return stem.empty() ? "message" : stem;
}

// A file for each message.
class FilesWriter : public MessageWriter {
 public:
  FilesWriter(std::string folder, bool folders) : folder_(std::move(folder)), folders_(folders) {}

 protected:
  void Add(const MessageLabel& label, std::string_view extension, std::string_view bytes) {
    std::string path =
        folders_ ? Joined(folder_, SafeFolderPath(label)) : platform::WithSeparator(folder_);
    files_.try_emplace(path, path).first->second.Add(StemOf(label), extension, bytes, label.time);
    ++saved_;
  }

 private:
  std::string folder_;
  bool folders_;
  std::map<std::string, NewFiles> files_;
};

class EmlWriter : public FilesWriter {
 public:
  using FilesWriter::FilesWriter;
  void Save(const MessageLabel& label, std::string_view file) override { Add(label, ".eml", file); }
};

class MsgWriter : public FilesWriter {
 public:
  using FilesWriter::FilesWriter;
  void Save(const MessageLabel& label, std::string_view file) override {
    std::optional<StoredMessage> message = ReadStoredMessage(label.id);
    if (!message) throw Error(ErrorNumber::kNoCurrentRow, "The message is gone.");
    Add(label, ".msg", MsgFileBytes(*message, file));
  }
};

class MaildirWriter : public MessageWriter {
 public:
  MaildirWriter(std::string folder, bool folders) : folder_(std::move(folder)), folders_(folders) {
    std::string box = platform::WithSeparator(folder_);
    MakeFolders(box);
    // Windows and the disks of cameras take no colon in a name; where that is so, mail programs
    // write another mark.
    std::string probe = platform::UniquePath(box + "tmp/", "probe:2,S");
    try {
      platform::WriteFile(probe, "");
    } catch (const Error& error) {
      if (error.Number() != ErrorNumber::kPathAccess) throw;
      mark_ = ';';
      return;
    }
    platform::RemoveFile(probe);
  }

  void Save(const MessageLabel& label, std::string_view file) override {
    const std::string& box = MakeBox(label);
    int64_t arrived = label.time ? std::max<int64_t>(platform::UnixFromLocal(*label.time), 0) : 0;
    std::string stem = std::to_string(arrived) + "." + std::to_string(label.id) + "_";
    platform::StagedFile made(platform::UniquePath(box + "tmp/", stem + "new"));
    platform::WriteFile(made.Path(), file);
    if (label.time) platform::SetFileModified(made.Path(), *label.time);
    // Where nothing is known, seen, as all mail here has been.
    std::string flags = label.state.isKnown ? intake::MaildirFlags(label.state) : "S";
    // A message saved once more gets a name of its own.
    for (int number = 0; !made.IsInPlace(); ++number) {
      std::string name = stem;
      name.append(std::to_string(number)).append(".tarnwick") += mark_;
      name.append("2,").append(flags);
      made.TakeName(std::string(box).append("cur/").append(name));
    }
    ++saved_;
  }

 private:
  // The mailbox of a message, with its folders; a folder's own mailbox is one of the dotted ones
  // inside the first.
  const std::string& MakeBox(const MessageLabel& label) {
    std::string name;
    if (folders_) {
      for (std::string part : SafeFolderPath(label)) {
        std::replace(part.begin(), part.end(), '.', '_');
        name += "." + part;
      }
    }
    auto [found, isNew] = boxes_.try_emplace(name);
    if (!isNew) return found->second;
    std::string box = platform::WithSeparator(folder_);
    if (!name.empty()) {
      box = platform::WithSeparator(box + name);
      MakeFolders(box);
      if (!platform::FileExists(box + "maildirfolder")) {
        platform::WriteFile(box + "maildirfolder", "");
      }
    }
    found->second = box;
    return found->second;
  }

  static void MakeFolders(const std::string& box) {
    for (const char* part : {"tmp/", "new/", "cur/"}) platform::MakeFolder(box + part);
  }

  std::string folder_;
  bool folders_;
  char mark_ = ':';                           // between a file's name and its state
  std::map<std::string, std::string> boxes_;  // paths by dotted name
};

// The line before a message: its sender and when it came, UTC.
std::string FromLine(const MessageLabel& label) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  bool isAddress = label.sender.size() <= 200 && label.sender.find('@') != std::string::npos &&
                   std::all_of(label.sender.begin(), label.sender.end(),
                               [](char c) { return c > ' ' && c < 0x7F; });
  DateTime utc =
      DateTime::FromSeconds(label.time ? platform::UnixFromLocal(*label.time) : int64_t{0});
  CivilTime civil = utc.ToCivil();
  char when[64];
  std::snprintf(when, sizeof when, " %s %s %2d %02d:%02d:%02d %04d\n", kDays[utc.Weekday()],
                kMonths[civil.month - 1], civil.day, civil.hour, civil.minute, civil.second,
                civil.year);
  return "From " + (isAddress ? label.sender : "MAILER-DAEMON") + when;
}

// One mailbox file after the other. A line of a message that could be taken for the beginning of
// the next gets a ">" in front, and so does one that has such marks already: taken away again, the
// bytes are what they were.
class MboxWriter : public MessageWriter {
 public:
  MboxWriter(std::string folder, bool folders) : folder_(std::move(folder)), folders_(folders) {}

  void Save(const MessageLabel& label, std::string_view file) override {
    Begin(label);
    Write(FromLine(label));
    WriteState(label.state, file);
    size_t written = 0;
    for (size_t at = file.find(kFrom); at != std::string_view::npos;
         at = file.find(kFrom, at + 1)) {
      size_t start = at;
      while (start > written && file[start - 1] == '>') --start;
      if (start > 0 && file[start - 1] != '\n') continue;
      Write(file.substr(written, start - written));
      Write(">");
      written = start;
    }
    Write(file.substr(written));
    Write(file.empty() || file.back() == '\n' ? "\n" : "\n\n");
    ends_.push_back(size_);
    constexpr uint64_t kFlushed = 64 << 20;
    if (size_ - begun_ > kFlushed) {
      begun_ = size_;
      platform::BeginFlush(made_->Path());
    }
  }

  void Finish() override {
    if (output_ == nullptr) return;
    std::exception_ptr failure;
    try {
      output_->Close();
    } catch (...) {
      failure = std::current_exception();
    }
    output_.reset();
    // Whatever failed, the messages that came whole to the disk are kept.
    const std::string path = made_->Path();
    uint64_t onDisk = platform::FileSize(path);
    while (!ends_.empty() && ends_.back() > onDisk) ends_.pop_back();
    const uint64_t whole = ends_.empty() ? 0 : ends_.back();
    if (whole != 0) {
      if (whole != onDisk) platform::CutFile(path, whole);
      platform::FlushToDisk(path);
      files_->Place(*made_, stem_, ".mbox");
      saved_ += static_cast<int64_t>(ends_.size());
    }
    made_.reset();
    ends_.clear();
    if (failure) std::rethrow_exception(failure);
  }

 private:
  static constexpr std::string_view kFrom = "From ";

  void Begin(const MessageLabel& label) {
    std::vector<std::string> place = folders_ ? SafeFolderPath(label) : std::vector{Mailbox()};
    if (output_ != nullptr && place == place_) return;
    Finish();
    place_ = place;
    stem_ = place.back();
    place.pop_back();
    std::string path = Joined(folder_, place);
    if (files_ == nullptr || files_->Folder() != path) files_ = std::make_unique<NewFiles>(path);
    made_.emplace(files_->UnfinishedPath(stem_, ".mbox"));
    output_ = std::make_unique<platform::OutputFile>(made_->Path());
    size_ = 0;
    begun_ = 0;
  }

  // What the letter's own headers do not say: programs that read mailboxes keep the state there.
  void WriteState(const intake::MessageState& state, std::string_view file) {
    if (state == intake::StateOfHeaders(file)) return;
    std::string_view first = file.substr(0, file.find('\n'));
    Write(intake::HeadersOfState(state, first.ends_with('\r') ? "\r\n" : "\n"));
  }

  static std::string Mailbox() { return kMailbox; }

  void Write(std::string_view bytes) {
    output_->Write(bytes);
    size_ += bytes.size();
  }

  std::string folder_;
  bool folders_;
  std::vector<std::string> place_;
  std::unique_ptr<NewFiles> files_;
  std::string stem_;
  std::optional<platform::StagedFile> made_;
  std::unique_ptr<platform::OutputFile> output_;
  uint64_t size_ = 0;
  uint64_t begun_ = 0;          // so much is on its way to the disk
  std::vector<uint64_t> ends_;  // where the messages of the open file end
};

}  // namespace

std::unique_ptr<MessageWriter> MakeWriter(SaveFormat format, const std::string& folder,
                                          bool folders) {
  switch (format) {
    case SaveFormat::kMbox:
      return std::make_unique<MboxWriter>(folder, folders);
    case SaveFormat::kMaildir:
      return std::make_unique<MaildirWriter>(folder, folders);
    case SaveFormat::kMsg:
      return std::make_unique<MsgWriter>(folder, folders);
    case SaveFormat::kEml:
      break;
  }
  return std::make_unique<EmlWriter>(folder, folders);
}

std::vector<std::string> SafeFolderPath(const MessageLabel& label) {
  constexpr size_t kDeepest = 16;
  std::vector<std::string> path;
  for (const std::string& name : label.folder) {
    std::string safe = platform::SafeFileName(name, kMostFolderChars);
    if (!safe.empty() && path.size() < kDeepest) path.push_back(std::move(safe));
  }
  if (path.empty()) path.emplace_back("Mail");
  return path;
}

}  // namespace tarnwick::takeout
