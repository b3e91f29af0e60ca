// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/program_fixture.h"

#include "core/messages.h"
#include "core/startup.h"
#include "repository/app_folder.h"
#include "repository/schema.h"

namespace tarnwick::testing {

namespace {

// Making the databases costs a key derivation each; they are made once a test program and copied.
const std::string& EmptyDatabases() {
  static TempFolder folder;
  static bool made = [] {
    repository::CreateDatabaseFiles(folder.Path());
    return true;
  }();
  (void)made;
  return folder.Path();
}

}  // namespace

ProgramFixture::ProgramFixture() {
  platform::ClockOverride clock;
  clock.now = DateTime::FromDate(2020, 6, 15).WithTime(12, 0, 0);
  clock.zoneBiasMinutes = -180;
  clock.logonName = "ann";
  platform::SetClockOverride(clock);
  platform::SetLocaleOverride("en_US");
  repository::SeedAppFolder(folder_.Path(), EmptyDatabases());
  core::PrepareRun(folder_.Path());
  EXPECT_TRUE(repository::OpenRepository(false));
  repository::ReadOptions();
  // A test says where it wants complete reading.
  repository::SetOption(repository::kCompleteReadingOption, false);
}

ProgramFixture::~ProgramFixture() {
  repository::LockRepository();
  platform::SetClockOverride({});
  platform::SetLocaleOverride("");
  platform::SetFileFault(nullptr);
  platform::SetFreeSpaceOverride({});
}

jet::Value ProgramFixture::Query(const std::string& sql) {
  jet::Recordset rows;
  rows.Open(sql, repository::RepositoryDb());
  return rows.Eof() ? jet::Value() : rows.Field(0);
}

std::string ProgramFixture::Rows(const std::string& sql) {
  jet::Recordset rows;
  std::string text;
  for (rows.Open(sql, repository::RepositoryDb()); !rows.Eof(); rows.MoveNext()) {
    if (!text.empty()) text += "\n";
    for (int i = 0; i < rows.FieldCount(); ++i) {
      if (i > 0) text += "|";
      text += rows.Field(i).IsNull() ? "Null" : rows.Field(i).AsText();
    }
  }
  return text;
}

int64_t ProgramFixture::CountRows(const std::string& table) {
  return Query("SELECT Count(*) AS RowCount FROM " + table).AsInt();
}

void ProgramFixture::RemoveLog() {
  core::CloseLog();
  platform::RemoveFile(core::State().LogFile);
}

std::string ProgramFixture::Log() {
  const std::string& file = core::State().LogFile;
  return platform::FileExists(file) ? platform::ReadFile(file) : std::string();
}

std::string ProgramFixture::WriteTemp(const std::string& name, const std::string& text) {
  std::string path = folder_.File(name);
  platform::WriteFile(path, text);
  return path;
}

}  // namespace tarnwick::testing
