// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include "board/load_command.h"
#include "board/other_dates_view.h"
#include "board_window.h"
#include "samples/profile_builder.h"
#include "support/window_checks.h"

namespace tarnwick::board {
namespace {

using core::StatusPanel;

class Window : public BoardWindow {
 protected:
  // A message as a store holds it.
  static std::string Mail(const std::string& subject, const std::string& date) {
    return "From: Ann Lee <ann@example.org>\r\nTo: bob@example.org\r\nSubject: " + subject +
           "\r\nDate: " + date + "\r\n\r\nText.\r\n";
  }
};

TEST_F(Window, EveryControlBearsItsNameAndCanBeReached) {
  Start();
  EXPECT_EQ(window_->windowTitle(), "Email List");
  for (const char* name :
       {"DateFrom",   "DateTo",       "cmbFromTo",      "Subject",     "cmbFile",      "MailText",
        "ckbActive",  "AttachedFile", "Frame1",         "Frame2",      "Frame3",       "oDate",
        "oSubject",   "oFromTo",      "oDirection",     "odAscending", "odDescending", "EmailGrid",
        "ShowAll",    "cmRelated",    "DeleteCurent",   "MarkActive",  "LoadMailler",  "Quite",
        "StatusBar1", "ShowEmail",    "cbShowEmailText"}) {
    Find<QWidget>(name);
  }
  testing::CheckControls(*window_);
}

TEST_F(Window, AnEmptyRepositorySaysWhatToDoNext) {
  Start();
  EXPECT_EQ(window_->Grid().Model().rowCount(), 1);
  EXPECT_TRUE(window_->Grid().accessibleDescription().contains("Load from Mailer"));
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "0; 0 In; 0 Out");
  EXPECT_EQ(ui_.status[StatusPanel::kFolder], "Tarnwick folder " + folder_.Path());
  for (const char* name : {"DeleteCurent", "MarkActive", "cmRelated", "ShowEmail"}) Click(name);
  EXPECT_THAT(ui_.Shown("box"), Each("There isn't selected row."));
  EXPECT_EQ(ui_.Shown("box").size(), 4U);
}

TEST_F(Window, AFilterNarrowsAndShowAllListsEverythingAgain) {
  AddListed({.subject = "Budget"});
  AddListed({.subject = "Photos", .direction = "Out", .hot = true});
  Start();
  EXPECT_EQ(window_->Grid().Model().rowCount(), 2);
  Filter("Subject", "budg");
  EXPECT_THAT(ListedSubjects(), ElementsAre("Budget"));
  Filter("Subject", "nothing");
  EXPECT_TRUE(window_->Grid().accessibleDescription().contains("Show All"));
  Click("ShowAll");
  EXPECT_EQ(Find<QLineEdit>("Subject")->text(), "");
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "2; 1 In; 1 Out");
}

// A clock that leaps makes any search a long one.
TEST_F(Window, ALongSearchCanBeStoppedAndTheListStays) {
  testing::AddMany(4000, {.subject = "many", .body = "a text of some words"});
  Start();
  window_->Grid().selectRow(7);
  platform::ClockOverride clock;
  clock.tickStep = 1000;
  platform::SetClockOverride(clock);
  int turns = 0;
  ui_.onYield = [&] {
    ++turns;
    EXPECT_TRUE(window_->IsBusy());
    EXPECT_FALSE(window_->Grid().isEnabled());
    EXPECT_FALSE(window_->Actions().deleteSelected->isEnabled());
    window_->Actions().stop->trigger();
  };
  Filter("MailText", "no");
  EXPECT_EQ(turns, 1);
  EXPECT_FALSE(window_->IsBusy());
  EXPECT_EQ(window_->Grid().Model().rowCount(), 4000);
  EXPECT_EQ(window_->Grid().currentIndex().row(), 7);
  EXPECT_TRUE(window_->Status().findChild<QLabel*>("Message")->text().contains("stopped"));
  EXPECT_TRUE(ui_.Shown("error").empty());

  ui_.onYield = [&] { ++turns; };
  Filter("MailText", "no");
  EXPECT_GT(turns, 1);
  EXPECT_TRUE(window_->Grid().Model().IsPlaceholder());
  EXPECT_TRUE(window_->Grid().isEnabled());
  platform::SetClockOverride({});
}

TEST_F(Window, ShowRelatedListsTheSubjectBehindItsPrefix) {
  AddListed({.subject = "Re: Budget", .received = DateTime::FromDate(2005, 1, 1)});
  AddListed({.subject = "Fw: Re: Budget"});
  AddListed({.subject = "Photos"});
  Start();
  window_->Grid().selectRow(0);
  Click("cmRelated");
  EXPECT_EQ(Find<QLineEdit>("Subject")->text(), "Budget");
  EXPECT_THAT(ListedSubjects(), UnorderedElementsAre("Re: Budget", "Fw: Re: Budget"));
  // An empty list of related messages says why.
  AddListed({.subject = "Re: Ann's \"plan\"", .received = DateTime::FromDate(2006, 1, 1)});
  Click("ShowAll");
  window_->Grid().selectRow(0);
  Click("cmRelated");
  EXPECT_EQ(CountListed(), 0);
  EXPECT_TRUE(window_->Grid().accessibleDescription().contains("apostrophe"));
  Filter("Subject", "nothing like it");
  EXPECT_FALSE(window_->Grid().accessibleDescription().contains("apostrophe"));
}

TEST_F(Window, HotAndDeleteKeepThePlaceAndDeletingTheLastLeavesThePlaceholder) {
  for (int day = 3; day > 0; --day) {
    AddListed({.subject = std::to_string(day), .received = DateTime::FromDate(2004, 1, day)});
  }
  Start();
  EmailGridView& grid = window_->Grid();
  grid.selectRow(1);
  Click("MarkActive");
  EXPECT_EQ(grid.Current().subject, "2");
  EXPECT_EQ(grid.Model().index(1, 5).data().toString(), "+");
  ui_.yesNo = {true};
  Click("DeleteCurent");
  EXPECT_EQ(grid.Current().subject, "1");
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "2; 2 In; 0 Out");
  grid.selectAll();
  ui_.yesNo = {true};
  Click("DeleteCurent");
  EXPECT_TRUE(Board().ListIsPlaceholder);
  EXPECT_EQ(CountRows("Email"), 0);
}

TEST_F(Window, TheSelectionStaysWithItsMessageAndUndoBringsBackWhatWasDeleted) {
  for (int day = 1; day <= 3; ++day) {
    AddListed({.subject = std::string(1, static_cast<char>('d' - day)),
               .received = DateTime::FromDate(2004, 1, day),
               .body = "body of it",
               .files = {"a.txt"}});
  }
  Start();
  EmailGridView& grid = window_->Grid();
  grid.selectRow(0);
  ASSERT_EQ(grid.Current().subject, "a");
  window_->Filter().SortBy(ListSort::kSubject);  // descending: c, b, a
  EXPECT_EQ(grid.currentIndex().row(), 2);
  EXPECT_EQ(grid.Current().subject, "a");
  Filter("Subject", "b");
  EXPECT_EQ(grid.Current().id, 0);
  Filter("Subject", "");

  QAction* undo = window_->Actions().undo;
  EXPECT_FALSE(undo->isEnabled());
  // Twice: what came back can be deleted once more.
  for (int time = 0; time < 2; ++time) {
    for (const char* subject : {"c", "b"}) {
      Filter("Subject", subject);
      grid.selectRow(0);
      ui_.yesNo = {true};
      Click("DeleteCurent");
      EXPECT_THAT(ui_.losses.back(), ::testing::StartsWith("1 message with 1 attached file goes."));
    }
    Filter("Subject", "");
    EXPECT_THAT(ListedSubjects(), ElementsAre("a"));
    undo->trigger();
    EXPECT_THAT(ListedSubjects(), ElementsAre("b", "a"));
    undo->trigger();
    EXPECT_THAT(ListedSubjects(), ElementsAre("c", "b", "a"));
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_EQ(Query("SELECT Body FROM Email WHERE Subject='c'").AsText(), "body of it");
  }
  EXPECT_EQ(CountRows("Attachment"), 3);
}

TEST_F(Window, TheChosenRowStaysInSightWhenTheListShrinks) {
  testing::AddMany(60, {.subject = "one of many"});
  Start();
  window_->resize(1000, 900);
  QApplication::processEvents();
  EmailGridView& grid = window_->Grid();
  int row = grid.indexAt({4, grid.viewport()->height() - 4}).row();
  ASSERT_GT(row, 5);
  Select(row);
  window_->resize(1000, 700);
  QApplication::processEvents();
  QRect shown = grid.visualRect(grid.model()->index(row, 1));
  EXPECT_TRUE(grid.viewport()->rect().contains(shown.center()));
}

TEST_F(Window, At800PixelsTheFilterFoldsAndNothingIsCut) {
  Start();
  auto isWhole = [&] {
    for (const char* name : {"Frame1", "Frame2", "Frame3", "Subject", "LoadMailler", "Quite"}) {
      auto* widget = Find<QWidget>(name);
      QRect place(widget->mapTo(window_.get(), QPoint()), widget->size());
      EXPECT_TRUE(window_->rect().contains(place)) << name;
      auto* button = qobject_cast<QPushButton*>(widget);
      int least =
          button == nullptr
              ? widget->minimumSizeHint().width()
              : button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + 8;
      EXPECT_GE(widget->width(), least) << name;
    }
    return Find<QWidget>("Frame3")->y() > Find<QWidget>("MailText")->y();
  };
  window_->resize(1300, 700);
  QApplication::processEvents();
  EXPECT_FALSE(isWhole());
  window_->resize(800, 600);
  QApplication::processEvents();
  EXPECT_EQ(window_->width(), 800);
  EXPECT_TRUE(isWhole()) << "the groups stand in a row of their own";
  window_->resize(1300, 700);
  QApplication::processEvents();
  EXPECT_FALSE(isWhole());
}

TEST_F(Window, RowsAreFoundByTypingAndCopiedAsText) {
  AddListed({.subject = "Apples", .received = DateTime::FromDate(2005, 1, 2)});
  AddListed({.subject = "Bananas"});
  Start();
  EmailGridView& grid = window_->Grid();
  grid.setCurrentIndex(grid.Model().index(0, 2));
  grid.keyboardSearch("b");
  EXPECT_EQ(grid.Current().subject, "Bananas");
  grid.selectAll();
  window_->Actions().copy->trigger();
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
            "1/2/2005 00:00\tApples\tAnn\tIn\t\n3/7/2004 14:07\tBananas\tAnn\tIn\t\n");
}

TEST_F(Window, LayoutAndFilterComeBack) {
  AddListed({.subject = "Budget"});
  Start();
  window_->Grid().setColumnWidth(3, 333);
  Filter("Subject", "budg");
  window_->resize(window_->width(), 555);
  EXPECT_TRUE(window_->close());
  Start();
  EXPECT_EQ(window_->Grid().columnWidth(3), 333);
  EXPECT_EQ(window_->height(), 555);
  EXPECT_EQ(Find<QLineEdit>("Subject")->text(), "budg");
  EXPECT_TRUE(window_->Grid().isColumnHidden(6));
}

TEST_F(Window, DatesThatWereTypedStayAndOthersGrow) {
  AddListed({.subject = "Budget"});
  Start();
  auto* to = Find<QLineEdit>("DateTo");
  ASSERT_EQ(to->text(), "6/15/2020");
  to->setFocus();
  to->selectAll();
  QTest::keyClicks(to, "6/15/2020");
  QTest::keyClick(to, Qt::Key_Return);
  EXPECT_TRUE(window_->close());
  AddListed({.subject = "Older", .received = DateTime::FromDate(2001, 1, 2)});
  SetNow(DateTime::FromDate(2020, 6, 18));
  Start();
  EXPECT_EQ(Find<QLineEdit>("DateTo")->text(), "6/15/2020");
  EXPECT_EQ(Find<QLineEdit>("DateFrom")->text(), "1/2/2001");
}

TEST_F(Window, AnEntryOfABoxsOwnListFindsItsMessages) {
  const char* names[] = {"Ann  Lee", "Ann\u3000Lee", "Ann\u00A0Lee",
                         "Ann\tLee", "Pat O'Brien",  "\"Bob\" the builder",
                         "'",        " Edge ",       "100% 'sure' [_] "};
  for (const char* name : names) AddListed({.subject = name, .name = name, .files = {name}});
  Start();
  for (const char* box : {"cmbFromTo", "cmbFile"}) {
    auto* combo = Enter(box);
    ASSERT_EQ(combo->count(), static_cast<int>(std::size(names))) << box;
    for (int i = 0; i < combo->count(); ++i) {
      combo->setCurrentIndex(i);
      std::string chosen = combo->currentText().toStdString();
      emit combo->activated(i);
      EXPECT_THAT(ListedSubjects(), Contains(chosen)) << box;
    }
    // It is as it was when the window opens again.
    auto listed = ListedSubjects();
    EXPECT_TRUE(window_->close());
    Start();
    EXPECT_EQ(ListedSubjects(), listed) << box;
    Click("ShowAll");
  }
}

TEST_F(Window, TheCountsAreExplainedInPlainNumbers) {
  AddListed({.subject = "a", .files = {"1.txt", "2.txt", "3.txt"}});
  AddListed({.subject = "b", .direction = "Out"});
  Start();
  auto* counts = Find<QLabel>("Counts");
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "2; 2 In; 0 Out") << "files count, as ever";
  EXPECT_EQ(counts->toolTip(), "2 messages: 1 received, 1 sent");
  EXPECT_EQ(counts->accessibleDescription(), counts->toolTip());
  Find<QComboBox>("cmbFile")->setEditText(".txt");
  emit window_->Filter().FilterChanged();
  EXPECT_EQ(counts->toolTip(), "1 message: 1 received, 0 sent");
}

class LoadingWindow : public Window {
 protected:
  LoadingWindow() : profile_(folder_.File("Ann/")) {
    samples::MessageStoreBuilder inbox;
    auto add = [&](const char* subject, int day, int hour) {
      samples::IndexedMessage message;
      message.subject = subject;
      message.date = DateTime::FromDate(2004, 1, day).WithTime(hour, 20, 30);
      message.text =
          Mail(subject, std::to_string(day) + " Jan 2004 " + std::to_string(hour) + ":20:30 +0000");
      inbox.AddMessage(message);
    };
    add("old", 5, 10);
    add("late", 6, 10);
    add("latest", 6, 11);
    inbox.Finish();
    std::string store = profile_.AddIdentity("Main Identity");
    profile_.WriteStore(store, samples::StandardFolders(inbox.Bytes(), ""));
    profile_.WriteHive();
  }

  void Settle() {
    do {
      QApplication::processEvents();
    } while (Find<OtherDatesView>("OtherDates")->IsCounting());
  }

  samples::ProfileBuilder profile_;
};

TEST_F(LoadingWindow, AFirstLoadAsksForTheProfileAndListsFromTheLatestDay) {
  Start();
  ui_.yesNo = {true};
  ui_.folders = {profile_.Folder()};
  ui_.senders = {core::SenderAnswer::kAcceptAll};
  Enter("cmbFromTo");
  Click("LoadMailler");
  EXPECT_EQ(CountRows("Email"), 3);
  EXPECT_EQ(Find<QLineEdit>("DateFrom")->text(), "1/6/2004");
  EXPECT_THAT(ListedSubjects(), ElementsAre("latest", "late"));
  EXPECT_EQ(ui_.status[StatusPanel::kLastLoaded], "Last loaded on 6/15/2020 12:00");
  EXPECT_TRUE(ui_.status[StatusPanel::kProgress].starts_with("found 3, stored 3,"));
  EXPECT_EQ(Find<QComboBox>("cmbFromTo")->count(), 1) << "entered before the load";

  auto* line = Find<OtherDatesView>("OtherDates");
  Settle();
  EXPECT_TRUE(line->isVisible()) << "there is more than is listed";
  EXPECT_TRUE(line->text().contains("1 more at other dates.")) << line->text().toStdString();
  // The line is there for an empty list, too, and at the next start.
  Filter("Subject", "old");
  Settle();
  EXPECT_EQ(CountListed(), 0);
  EXPECT_TRUE(line->text().contains("1 more at other dates."));
  EXPECT_TRUE(window_->close());
  Start();
  line = Find<OtherDatesView>("OtherDates");
  Settle();
  EXPECT_TRUE(line->isVisible());
  emit line->linkActivated("all");
  EXPECT_THAT(ListedSubjects(), ElementsAre("old"));
  EXPECT_FALSE(line->isVisible());
  Filter("Subject", "");
  EXPECT_EQ(CountListed(), 3);
}

TEST_F(LoadingWindow, ASearchFindsWhatTheDatesOfALoadHide) {
  Start();
  ui_.yesNo = {true};
  ui_.folders = {profile_.Folder()};
  ui_.senders = {core::SenderAnswer::kAcceptAll};
  Click("LoadMailler");
  ASSERT_THAT(ListedSubjects(), ElementsAre("latest", "late"));
  auto* box = Find<QLineEdit>("SearchBox");
  box->setText("old");
  QTest::keyClick(box, Qt::Key_Return);
  EXPECT_THAT(ListedSubjects(), ElementsAre("old"));
  EXPECT_EQ(window_->Status().PanelText(StatusPanel::kProgress), "1 found");
}

TEST_F(LoadingWindow, WithoutMailTextsTheLogTellsNoSubject) {
  Start();
  for (bool logged : {true, false}) {
    core::State().LogMailTexts = logged;
    core::State().RepositoryIsEmpty = true;
    ui_.yesNo = {true};
    if (logged) ui_.folders = {profile_.Folder()};
    if (logged) ui_.senders = {core::SenderAnswer::kAcceptAll};
    platform::RemoveFile(core::State().LogFile);
    Click("LoadMailler");
    EXPECT_NE(Log().find("*****Email = "), std::string::npos);
    EXPECT_EQ(Log().find("latest") != std::string::npos, logged);
  }
}

TEST_F(LoadingWindow, OnlyStopCanBeGivenWhileALoadRunsAndClosingWaitsForIt) {
  Start();
  repository::SetProfileFolder(profile_.Folder());
  testing::ContactId("Ann Lee");  // so that nobody is asked about her
  ui_.yesNo = {true};
  bool seen = false;
  ui_.onYield = [&] {
    if (seen) return;
    seen = true;
    EXPECT_TRUE(window_->IsBusy());
    for (const char* name : {"LoadMailler", "DeleteCurent", "MarkActive", "ShowAll"}) {
      EXPECT_FALSE(Find<QPushButton>(name)->isEnabled()) << name;
    }
    EXPECT_FALSE(window_->Filter().isEnabled());
    EXPECT_TRUE(Find<QPushButton>("Stop")->isVisible());
    EXPECT_FALSE(window_->close());
    EXPECT_TRUE(core::State().ImportCancelFlag);
  };
  Click("LoadMailler");
  EXPECT_TRUE(seen);
  EXPECT_FALSE(window_->IsBusy());
  EXPECT_LT(CountRows("Email"), 3);
  QApplication::processEvents();
  EXPECT_FALSE(window_->isVisible()) << "closed once the load had ended";
}

TEST_F(Window, ATextFileIsTakenAndListedWhateverTheDates) {
  AddListed({.subject = "there already"});
  Start();
  Filter("DateFrom", "1/1/2019");
  std::string file = WriteTemp("letter.txt", Mail("taken", "Mon, 5 Jan 2004 10:20:30 +0000"));
  window_->Loading().LoadTextFiles({QString::fromStdString(file)});
  EXPECT_THAT(ListedSubjects(), Contains("taken"));
  window_->Loading().LoadTextFiles({QString::fromStdString(file)});
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("This email is in the repository."));
}

TEST_F(Window, AnotherRepositoryIsListedAtOnceAndTheFormerStaysOnAFailure) {
  AddListed({.subject = "former"});
  Start();
  std::string other = folder_.File("other/");
  platform::MakeFolder(other);
  ui_.folders = {other};
  window_->Actions().createRepository->trigger();
  EXPECT_TRUE(Board().ListIsPlaceholder);
  EXPECT_EQ(ui_.status[StatusPanel::kFolder], "Tarnwick folder " + other);

  std::string broken = folder_.File("broken/");
  platform::MakeFolder(broken);
  platform::WriteFile(broken + "Tarnwick.twr", "no database");
  AddListed({.subject = "in the other"});
  ui_.folders = {broken};
  window_->Actions().openRepository->trigger();
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
  EXPECT_THAT(ListedSubjects(), ElementsAre("in the other"));
}

TEST_F(Window, AfterACrashACheckIsOffered) {
  board::TakeTextFiles({WriteTemp("one.txt", Mail("one", "Mon, 5 Jan 2004 10:20:30 +0000"))});
  repository::DisconnectRepository();
  WriteTemp("Tarnwick.twr-wal", "");
  ASSERT_TRUE(repository::OpenRepository(false));
  Start();
  auto* notice = Find<QLabel>("Notice");
  ASSERT_TRUE(notice->isVisible());
  repository::RepositoryDb().Execute("DELETE * FROM FileRepository");
  emit notice->linkActivated("check");
  EXPECT_FALSE(notice->isVisible());
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre(AllOf(HasSubstr("1 message(s), 1 damaged"),
                                HasSubstr("Message 1: Its original is missing"))));
  EXPECT_THAT(ListedSubjects(), ElementsAre("one"));
}

TEST_F(Window, WhatIsBackedUpComesBackAndWhatIsExportedIsMerged) {
  board::TakeTextFiles({WriteTemp("one.txt", Mail("one", "Mon, 5 Jan 2004 10:20:30 +0000"))});
  board::TakeTextFiles({WriteTemp("two.txt", Mail("two", "Tue, 6 Jan 2004 10:20:30 +0000"))});
  Start();
  const ListModel& model = window_->Grid().Model();
  QString backup = QString::fromStdString(folder_.File("all.twb"));
  QString exported = QString::fromStdString(folder_.File("listed.twb"));
  window_->Maintenance().Work(MaintenanceActions::Command::kBackup, backup);
  EXPECT_EQ(ui_.Shown("box").back(), "Backup is done.");
  Filter("Subject", "two");
  window_->Maintenance().Work(MaintenanceActions::Command::kExport, exported);
  EXPECT_EQ(model.rowCount(), 1);

  repository::ClearRepository();
  ui_.senders = {core::SenderAnswer::kAccept};
  window_->Maintenance().Work(MaintenanceActions::Command::kMerge, exported);
  EXPECT_EQ(CountRows("Email"), 1);
  ui_.yesNo = {true, true};
  window_->Maintenance().Work(MaintenanceActions::Command::kRestore, backup);
  EXPECT_EQ(ui_.Shown("box").back(), "Restore is done.");
  Click("ShowAll");
  EXPECT_EQ(model.rowCount(), 2);
  EXPECT_TRUE(Find<QAction>("mnuFileSaveAs")->isEnabled());
}

}  // namespace
}  // namespace tarnwick::board
