// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/sender_rules.h"

#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/store_message.h"
#include "platform/locale.h"
#include "repository/repository.h"

namespace tarnwick::intake {

namespace {

using core::QuoteSql;
using core::Report;
using core::SenderAnswer;
using repository::RepositoryDb;

bool HasRows(const std::string& query) {
  jet::Recordset recordset;
  recordset.Open(query, RepositoryDb());
  return !recordset.Eof();
}

bool IsIgnoredKey(const std::string& storedKey) {
  return HasRows("SELECT ID FROM IgnoredEmail WHERE MessageID='" + QuoteSql(storedKey) + "'");
}

std::string SenderOf(const MailMessage& message) {
  return message.FromName + "  <" + message.FromAddress + ">";
}

// A message that an error left by half is not there yet.
const char* ExceptUnfinished() {
  return repository::Repository().MayHoldUnfinished
             ? " AND ID NOT IN (SELECT EmailID FROM Unfinished)"
             : "";
}

SenderAnswer Ask(const MailMessage& message) {
  core::AskedEmail email;
  email.subject = message.Subject;
  email.from = SenderOf(message);
  email.date = platform::FormatDate(message.SentTime, "General Date");
  email.body = message.Body;
  RepositoryDb().FlushGroup();
  return core::State().Ui->AskAboutEmail(email);
}

Ending RejectedSender(const MailMessage& message) {
  return {Outcome::kRefused, "its sender is rejected: " + core::LoggedMailText(SenderOf(message))};
}

// The ending of a message that the person does not want; nullopt for one that they do.
std::optional<Ending> ActOnAnswer(SenderAnswer answer, const MailMessage& message) {
  switch (answer) {
    case SenderAnswer::kAccept:
    case SenderAnswer::kAcceptAll:
      return std::nullopt;
    case SenderAnswer::kIgnore:
      AddIgnoredMessage(message.MessageKey);
      return Ending{Outcome::kIgnored, {}};
    case SenderAnswer::kReject:
      SetAddresseeReject(message.FromName, message.FromAddress);
      return RejectedSender(message);
    case SenderAnswer::kCancel:
      break;
  }
  core::State().StopFlag = true;
  return Ending{Outcome::kStopped, {}};
}

// Why the message may not be stored; nullopt when it may.
std::optional<Ending> Judge(const MailMessage& message) {
  core::RunState& state = core::State();
  if (state.RunWideAnswer == SenderAnswer::kAcceptAll) return std::nullopt;
  if (IsSenderReject(message.FromAddress, message.FromName)) return RejectedSender(message);
  if (IsSenderAccepted(message.FromAddress, message.FromName)) return std::nullopt;
  if (state.RefuseUnknownSenders) {
    return Ending{Outcome::kRefused, "its sender is not among the contacts: " +
                                         core::LoggedMailText(SenderOf(message))};
  }
  state.RunWideAnswer = SenderAnswer::kCancel;
  state.RunWideAnswer = Ask(message);
  core::YieldEvents();
  return ActOnAnswer(state.RunWideAnswer, message);
}

}  // namespace

bool IsEmailExist(const std::string& key) {
  if (key.empty()) return false;
  return core::Guarded(
      "IsEmailExist", false,
      [&] {
        std::string stored = StoredKey(key);
        return IsIgnoredKey(stored) || HasRows("SELECT ID FROM Email WHERE EntryID='" +
                                               QuoteSql(stored) + "'" + ExceptUnfinished());
      },
      Report::kLog);
}

bool IsSenderReject(const std::string& address, const std::string& name) {
  return core::Guarded(
      "IsSenderReject", false,
      [&] {
        return HasRows("SELECT * FROM RejectSender WHERE Address='" + QuoteSql(address) + "'") ||
               HasRows("SELECT * FROM RejectSender WHERE SenderName='" + QuoteSql(name) + "'");
      },
      Report::kLog);
}

bool IsSenderAccepted(const std::string& /*address*/, const std::string& name) {
  return core::Guarded(
      "IsSenderAccepted", false,
      [&] { return HasRows("SELECT * FROM MeContact WHERE Name='" + QuoteSql(name) + "'"); },
      Report::kLog);
}

void SetAddresseeReject(const std::string& name, const std::string& address) {
  core::GuardedRun("SetAddresseeReject", [&] {
    jet::Recordset& rules = repository::Repository().RejectRecordset;
    rules.AddNew();
    rules.SetField("SenderName", name);
    rules.SetField("Address", address);
    rules.SetField("UserName", core::State().UserName);
    rules.Update();
  });
}

void AddIgnoredMessage(const std::string& key) {
  core::GuardedRun("AddIgnoredMessage", [&] {
    RepositoryDb().Execute("INSERT INTO IgnoredEmail (MessageID) VALUES ('" +
                           QuoteSql(StoredKey(key)) + "')");
  });
}

bool IsMessageIgnored(const std::string& key) {
  return core::Guarded(
      "IsMessageIgnored", false, [&] { return IsIgnoredKey(StoredKey(key)); }, Report::kLog);
}

bool HoldsIgnoredMessages() {
  return core::Guarded(
      "HoldsIgnoredMessages", true, [] { return HasRows("SELECT ID FROM IgnoredEmail"); },
      Report::kLog);
}

Outcome OutcomeOfKnown(const std::string& key) {
  return IsMessageIgnored(key) ? Outcome::kIgnored : Outcome::kAlreadyStored;
}

bool IsMessageAccepted(const MailMessage& message, Ending& ending) {
  std::optional<Ending> refusal = Ending{Outcome::kRefused, {}};  // where judging fails
  core::GuardedRun("IsMessageAccepted", [&] { refusal = Judge(message); });
  if (refusal) ending = *refusal;
  return !refusal;
}

}  // namespace tarnwick::intake
