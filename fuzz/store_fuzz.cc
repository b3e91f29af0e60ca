// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the whole way of a message from its file to its rows. What is no message leaves no row;
// what is one is stored with its original byte for byte, its texts in UTF-8, and as many rows as it
// counts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/run_state.h"
#include "core/startup.h"
#include "database/recordset.h"
#include "intake/header_parser.h"
#include "maintenance/check.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/html.h"
#include "repository/app_folder.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "support/temp_folder.h"
#include "takeout/stored_file.h"
#include "takeout/stored_message.h"

namespace {

using namespace tarnwick;
using repository::RepositoryDb;

void Demand(bool holds) {
  if (!holds) std::abort();
}

class Nobody : public core::UserInterface {
 public:
  bool ShowBox(core::BoxIcon, const std::string&, bool) override { return true; }
  bool AskYesNo(const std::string&) override { return false; }
  bool AskBeforeLoss(const std::string&, const std::string&) override { return false; }
  core::SenderAnswer AskAboutEmail(const core::AskedEmail&) override {
    return core::SenderAnswer::kAccept;
  }
  std::optional<std::string> ChooseFolder(const std::string&) override { return {}; }
  void SetStatus(core::StatusPanel, const std::string&) override {}
  void ShowProgress(int64_t, int64_t) override {}
  void YieldEvents() override {}
};

// The program, started on an empty repository. Other drivers of the process reset its state.
const core::RunState& Started() {
  static const testing::TempFolder folder;
  static Nobody nobody;
  static const core::RunState state = [] {
    testing::TempFolder databases;
    repository::CreateDatabaseFiles(databases.Path());
    core::State().Ui = &nobody;
    repository::SeedAppFolder(folder.Path(), databases.Path());
    core::PrepareRun(folder.Path());
    Demand(repository::OpenRepository(false));
    core::State().LogEvents = false;
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    RepositoryDb().BeginGroup();
    return core::State();
  }();
  return state;
}

void CheckTexts(const takeout::StoredMessage& message) {
  for (const std::string* text : {&message.subject, &message.fromName, &message.fromAddress,
                                  &message.direction, &message.body, &message.htmlBody}) {
    Demand(platform::IsValidUtf8(*text));
  }
  for (const std::string& name : message.attachments) {
    Demand(platform::IsValidUtf8(name) && !name.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  core::UserInterface* former = core::State().Ui;
  core::State() = Started();
  static int runs = 0;
  static int64_t lastId = 0;
  const std::string original(reinterpret_cast<const char*>(data), size);
  platform::WriteFile(core::State().TempMessageFile, original);
  intake::Ending ending;
  bool isMessage = intake::dbxParseMessage(
      core::State().TempMessageFile, {"Inbox", "Local Folders", "Fuzz"}, "somebody", "", &ending);
  RepositoryDb().EndUnit();
  bool isStored = ending.outcome == intake::Outcome::kStored;
  Demand(isStored == isMessage);
  jet::Recordset rows;
  rows.Open("SELECT Max(ID) AS Last FROM Email", RepositoryDb());
  int64_t id = rows.Field("Last").AsInt();
  Demand(isStored ? id > lastId : id == 0);
  if (isStored) {
    lastId = id;
    Demand(takeout::ReadStoredFile(id) == original);
    CheckTexts(*takeout::ReadStoredMessage(id));
    if (++runs % 8 == 0) {
      maintenance::CheckReport report;
      Demand(maintenance::CheckRepository(report) == maintenance::Result::kDone);
      Demand(report.IsSound() && report.messages == 1);
    }
    Demand(repository::ClearRepository());
  }
  core::State().Ui = former;
  return 0;
}
