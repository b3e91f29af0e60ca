// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/options_window.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "support/program_fixture.h"
#include "support/window_checks.h"

namespace tarnwick::options {
namespace {

class OptionsWindowTest : public testing::ProgramFixture {
 protected:
  OptionsWindowTest() { platform::SetEnvironmentText("TARNWICK_PROFILE", std::nullopt); }
  ~OptionsWindowTest() override { platform::SetEnvironmentText("TARNWICK_PROFILE", std::nullopt); }

  // A disk with one profile on it.
  static ProfileSummary Disk(const std::string& folder) {
    if (folder != "/old/Ann/") return {};
    return {{"Ann's Mail", "Work"}, 14, {"archive.pst"}, {}};
  }
  static QString Text(const QWidget& window, const char* name) {
    if (auto* label = window.findChild<QLabel*>(name)) return label->text();
    return window.findChild<QLineEdit*>(name)->text();
  }
  static void Click(const QWidget& window, const char* name) {
    QTest::mouseClick(window.findChild<QAbstractButton*>(name), Qt::LeftButton);
  }
  static void Show(QWidget& window) {
    window.show();
    QCoreApplication::processEvents();
  }
  static double Stored(const char* option) {
    return repository::GetParameter(option, "1", repository::kAmountColumn).AsDouble();
  }
};

TEST_F(OptionsWindowTest, AMailerCountsAtOnce) {
  core::State().UseOutlookExpress = true;
  frmOptions window(
      nullptr,
      {{"Outlook Express", "OutlookExpress"}, {"Outlook", "MSOutlook"}, {"mbox files", "Mbox"}});
  EXPECT_EQ(window.windowTitle(), "Options");
  auto* express = window.findChild<QCheckBox*>("OutlookExpress");
  auto* outlook = window.findChild<QCheckBox*>("MSOutlook");
  auto* other = window.findChild<QCheckBox*>("Mbox");
  ASSERT_TRUE(express != nullptr && outlook != nullptr && other != nullptr);
  EXPECT_EQ(other->text(), "mbox files");
  EXPECT_FALSE(other->isChecked());
  other->click();
  EXPECT_EQ(Stored("Mbox"), 1);
  EXPECT_TRUE(express->isChecked());
  EXPECT_FALSE(outlook->isChecked());

  express->click();
  outlook->click();
  EXPECT_EQ(Stored("OutlookExpress"), 0);
  EXPECT_EQ(Stored("MSOutlook"), 1);
  EXPECT_FALSE(core::State().UseOutlookExpress);
  EXPECT_TRUE(core::State().UseMSOutlook);
  outlook->click();
  EXPECT_EQ(Stored("MSOutlook"), 0);
  EXPECT_FALSE(core::State().UseMSOutlook);
  EXPECT_EQ(repository::ParameterDb().Execute(
                "UPDATE Parameter SET ParameterAmount = 5 WHERE ParameterGroup = 'MSOutlook'"),
            1);
  // Closing by the frame keeps what was clicked.
  window.close();
  EXPECT_FALSE(core::State().UseOutlookExpress);
}

TEST_F(OptionsWindowTest, SubjectsAreLoggedUntilThePersonSaysNo) {
  frmOptions window(nullptr);
  auto* box = window.findChild<QCheckBox*>("LogMailTexts");
  EXPECT_TRUE(box->isChecked());
  box->click();
  EXPECT_FALSE(core::State().LogMailTexts);
  core::State().LogMailTexts = true;
  repository::ReadOptions();
  EXPECT_FALSE(core::State().LogMailTexts) << "it is kept";
}

TEST_F(OptionsWindowTest, FoldersAreTickedWithCompleteReadingAlone) {
  frmOptions window(nullptr);
  auto* reading = window.findChild<QCheckBox*>("CompleteReading");
  auto* drafts = window.findChild<QCheckBox*>("ReadDrafts");
  EXPECT_FALSE(reading->isChecked());
  EXPECT_FALSE(drafts->isEnabled());
  reading->click();
  EXPECT_TRUE(drafts->isEnabled());
  drafts->click();
  EXPECT_EQ(Stored("CompleteReading"), 1);
  EXPECT_EQ(Stored("ReadDrafts"), 1);
  frmOptions again(nullptr);
  EXPECT_TRUE(again.findChild<QCheckBox*>("ReadDrafts")->isEnabled());
  EXPECT_TRUE(again.findChild<QCheckBox*>("ReadDrafts")->isChecked());
  EXPECT_FALSE(again.findChild<QCheckBox*>("ReadOutbox")->isChecked());
}

TEST_F(OptionsWindowTest, AFullLoadIsAskedForOneWay) {
  core::State().RepositoryIsEmpty = false;
  frmOptions window(nullptr);
  auto* box = window.findChild<QCheckBox*>("LoadAllFolders");
  EXPECT_FALSE(box->isChecked());
  EXPECT_FALSE(core::State().RepositoryIsEmpty);
  box->click();
  EXPECT_TRUE(core::State().RepositoryIsEmpty);
  box->click();
  EXPECT_TRUE(core::State().RepositoryIsEmpty);
  Click(window, "cmdOK");
  EXPECT_EQ(window.result(), QDialog::Accepted);
}

TEST_F(OptionsWindowTest, AProfileWithMailIsTaken) {
  frmOptions window(Disk);
  testing::CheckControls(window);
  Show(window);
  EXPECT_EQ(Text(window, "ProfileFolder"), "");
  EXPECT_TRUE(Text(window, "ProfileFound").startsWith("Choose the folder"));

  ui_.folders = {"/old/Ann/", "/empty/", std::nullopt};
  Click(window, "ProfileBrowse");
  EXPECT_EQ(Text(window, "ProfileFolder"), "/old/Ann/");
  EXPECT_EQ(Text(window, "ProfileFound"),
            "Outlook Express: 2 identities (Ann's Mail, Work), 14 folders\n"
            "Outlook: 1 store (archive.pst)");
  Click(window, "ProfileBrowse");
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("/empty/")));
  Click(window, "ProfileBrowse");
  EXPECT_EQ(repository::GetProfileFolder(), "/old/Ann/");
  EXPECT_EQ(Text(window, "ProfileFolder"), "/old/Ann/");
}

TEST_F(OptionsWindowTest, AStoredProfileIsLookedIntoOnceShown) {
  repository::SetProfileFolder("/gone/");
  std::vector<std::string> read;
  frmOptions window([&](const std::string& folder) {
    read.push_back(folder);
    return ProfileSummary{};
  });
  EXPECT_TRUE(read.empty());
  Show(window);
  EXPECT_THAT(read, ElementsAre("/gone/"));
  EXPECT_EQ(Text(window, "ProfileFound"), "No mail was found there.");
}

TEST_F(OptionsWindowTest, TheEnvironmentsProfileStands) {
  platform::SetEnvironmentText("TARNWICK_PROFILE", "/old/Ann");
  frmOptions window(Disk);
  Show(window);
  EXPECT_EQ(Text(window, "ProfileFolder"), "/old/Ann/");
  EXPECT_FALSE(window.findChild<QPushButton*>("ProfileBrowse")->isEnabled());
}

TEST_F(OptionsWindowTest, NothingClosesTheWindowWhileADiskIsRead) {
  repository::SetProfileFolder("/old/Ann/");
  frmOptions* shown = nullptr;
  frmOptions window([&](const std::string& folder) {
    Click(*shown, "cmdOK");
    Click(*shown, "ProfileBrowse");
    shown->close();
    EXPECT_TRUE(shown->isVisible());
    return Disk(folder);
  });
  shown = &window;
  Show(window);
  EXPECT_TRUE(window.isVisible());
  Click(window, "cmdOK");
  EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace tarnwick::options
