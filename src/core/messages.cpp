// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/messages.h"

#include <cassert>

#include "core/guard.h"
#include "core/run_state.h"
#include "core/tellings.h"
#include "core/text.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::core {

namespace {

using Hook = void (*)();
Hook& BeforeQuestion() {
  static Hook hook = nullptr;
  return hook;
}

ErrorsHeld*& Holder() {
  static ErrorsHeld* holder = nullptr;
  return holder;
}

std::string DateLine(DateTime now) {
  return platform::FormatDate(now, "General Date");
}

// The event log while a load writes it, with the date line of a second's entries.
struct LoadLog {
  LoadLog(const std::string& path, DateTime now)
      : file(path), second(now), dateLine(DateLine(now)) {}
  platform::AppendedFile file;
  DateTime second;
  std::string dateLine;
};

std::optional<LoadLog>& LogOfLoad() {
  static std::optional<LoadLog> log;
  return log;
}

// Opened anew each second: one that was removed meanwhile is made again.
LoadLog& LogOfLoadAt(DateTime now) {
  std::optional<LoadLog>& log = LogOfLoad();
  if (!log || log->file.Path() != State().LogFile || log->second != now) {
    log.emplace(State().LogFile, now);
  }
  return *log;
}

void CommitFirst() {
  if (BeforeQuestion() != nullptr) BeforeQuestion()();
}

void ShowBox(BoxIcon icon, std::string_view kind, const std::string& text) {
  RunState& state = State();
  if (state.Ui == nullptr) return;
  if (!state.LoadIsRunning) {
    state.Ui->ShowBox(icon, text, false);
    return;
  }
  RunState::RepeatedBox& box = state.RepeatedBoxes[std::string(kind.empty() ? text : kind)];
  if (box.silenced) return;
  ++box.shown;
  CommitFirst();
  box.silenced = state.Ui->ShowBox(icon, text, box.shown > 1);
}

}  // namespace

void SetBeforeQuestion(void (*hook)()) {
  BeforeQuestion() = hook;
}

void ShowMessage(const std::string& text) {
  if (State().Ui == nullptr) return;
  CommitFirst();
  State().Ui->ShowBox(BoxIcon::kInformation, text, false);
}

void ShowRepeatedMessage(std::string_view kind, const std::string& text) {
  if (TellingsKept::Keep({Telling::Kind::kBox, std::string(kind), text})) return;
  LogProgress(text);
  ShowBox(BoxIcon::kInformation, kind, text);
}

void ShowError(const std::string& text, bool quiet, std::string_view kind) {
  std::string prefixed = "Error: " + text;
  ++State().ReportedErrors;
  State().LastReportedError = text;
  ErrorsHeld* holder = Holder();
  if (holder == nullptr) {
    if (!quiet) ShowBox(BoxIcon::kCritical, kind, prefixed);
  } else if (holder->first_.empty()) {
    holder->first_ = text;
  }
  WriteLog(prefixed);
}

ErrorsHeld::ErrorsHeld() : outer_(Holder()) {
  Holder() = this;
}

ErrorsHeld::~ErrorsHeld() {
  Holder() = outer_;
}

bool AskYesNo(const std::string& text) {
  if (State().Ui == nullptr) return false;
  CommitFirst();
  return State().Ui->AskYesNo(text);
}

bool AskBeforeLoss(const std::string& text, const std::string& loss) {
  if (State().Ui == nullptr) return false;
  CommitFirst();
  return State().Ui->AskBeforeLoss(text, loss);
}

RepeatedAnswer AskYesNoAll(const std::string& text) {
  if (State().Ui == nullptr) return RepeatedAnswer::kNo;
  CommitFirst();
  return State().Ui->AskYesNoAll(text);
}

std::optional<platform::Secret> AskPassword(const std::string& file, int attempt) {
  if (State().Ui == nullptr) return std::nullopt;
  CommitFirst();
  return State().Ui->AskPassword(file, attempt);
}

void ReportUnknownFormat(const std::string& fileName) {
  constexpr std::string_view kText = "Program can't recognize file format.";
  ShowError(std::string(kText) + " " + OneLogLine(fileName), false, kText);
}

void WriteLog(std::string_view text) {
  if (TellingsKept::Keep({Telling::Kind::kEntry, {}, std::string(text)})) return;
  DateTime now = platform::Now();
  LoadLog* log = State().LoadIsRunning ? &LogOfLoadAt(now) : nullptr;
  std::string entry = (log != nullptr ? log->dateLine : DateLine(now)) + "\r\n";
  for (size_t end = 0; end != std::string_view::npos;) {
    end = text.find("\r\n");
    entry += OneLogLine(text.substr(0, end)) + "\r\n";
    if (end != std::string_view::npos) text.remove_prefix(end + 2);
  }
  entry += "\r\n";
  if (log != nullptr) {
    log->file.Append(entry);
  } else {
    platform::AppendToFile(State().LogFile, entry);
  }
}

void CloseLog() {
  LogOfLoad().reset();
}

void LogProgress(std::string_view text) {
  if (TellingsKept::Keep({Telling::Kind::kProgress, {}, std::string(text)})) return;
  if (State().LogEvents) WriteLog(text);
}

std::string LoggedMailText(const std::string& text) {
  return State().LogMailTexts ? OneLogLine(text) : "(not logged)";
}

void SetStatus(int panel, const std::string& text) {
  if (State().Ui != nullptr) State().Ui->SetStatus(static_cast<StatusPanel>(panel), text);
}

void YieldEvents() {
  if (State().Ui != nullptr) State().Ui->YieldEvents();
}

Error CurrentError() {
  try {
    throw;
  } catch (const Error& error) {
    return error;
  } catch (const std::exception& error) {
    return {ErrorNumber::kUnexpected, error.what()};
  } catch (...) {
    return {ErrorNumber::kUnexpected, "Internal error"};
  }
}

bool IsDiskFull(const Error& error) {
  constexpr int kEngineFull = 13;  // also the number of what is no date or number
  constexpr std::string_view kEngineText = "database or disk is full";
  return error.Number() == ErrorNumber::kDiskFull ||
         (error.Number() == kEngineFull && error.Description().starts_with(kEngineText));
}

void ReportCurrentException(std::string_view routine, Report report, std::string_view detail) {
  assert(std::current_exception() != nullptr);
  Error error = CurrentError();
  if (TellingsKept::Keep({Telling::Kind::kError, std::string(routine), error.Description(),
                          error.Number(), report == Report::kShow, std::string(detail)})) {
    return;
  }
  RunState& state = State();
  if (state.LoadIsRunning && IsDiskFull(error)) {
    state.DiskIsFull = true;
    if (state.EndTellsOfFullDisk) report = Report::kLog;
  }
  std::string number = std::to_string(error.Number());
  std::string name(routine);
  ShowError(number + " " + OneLogLine(error.Description()) + " " + name + std::string(detail),
            report == Report::kLog, number + " " + name);
}

}  // namespace tarnwick::core
