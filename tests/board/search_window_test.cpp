// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers

#include <QDockWidget>
#include <QTest>
#include <QTreeWidget>

#include "board_window.h"
#include "search/saved_searches.h"
#include "support/window_checks.h"

namespace tarnwick::board {
namespace {

using core::StatusPanel;
using testing::AddListed;
using testing::ListedSubjects;

class SearchWindow : public BoardWindow {
 protected:
  ~SearchWindow() override { platform::SetClockOverride({}); }

  void Type(const QString& text) {
    auto* box = Find<QLineEdit>("SearchBox");
    box->setText(text);
    QTest::keyClick(box, Qt::Key_Return);
  }
  QTreeWidgetItem* Item(const QString& text) {
    auto* tree = Find<QTreeWidget>("Folders");
    auto items = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    EXPECT_EQ(items.size(), 1) << text.toStdString();
    return items.isEmpty() ? nullptr : items.first();
  }
  void Choose(const QString& text) { Find<QTreeWidget>("Folders")->setCurrentItem(Item(text)); }
};

TEST_F(SearchWindow, TheBoxNarrowsTogetherWithTheFilter) {
  AddListed({.subject = "Budget", .body = "numbers for Ann"});
  AddListed({.subject = "Budget", .direction = "Out", .body = "more numbers"});
  AddListed({.subject = "Photos", .body = "numbers"});
  Start();
  window_->activateWindow();
  QTest::keyClick(window_.get(), Qt::Key_K, Qt::ControlModifier);
  auto* box = Find<QLineEdit>("SearchBox");
  EXPECT_EQ(window_->focusWidget(), box);
  Type("numbers budget");
  EXPECT_THAT(ListedSubjects(), ElementsAre("Budget", "Budget"));
  EXPECT_EQ(window_->Grid().Current().subject, "Budget") << "Enter goes to the first";
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "2; 1 In; 1 Out");
  EXPECT_EQ(window_->Status().PanelText(StatusPanel::kProgress), "2 found");
  Filter("MailText", "more");
  EXPECT_THAT(ListedSubjects(), ElementsAre("Budget"));
  Type("photos");
  EXPECT_EQ(CountListed(), 0);
  EXPECT_TRUE(window_->Grid().accessibleDescription().contains("search"));
  QTest::keyClick(box, Qt::Key_Escape);
  EXPECT_EQ(box->text(), "");
  EXPECT_THAT(ListedSubjects(), ElementsAre("Budget"));
  EXPECT_EQ(window_->Status().PanelText(StatusPanel::kProgress), "");
  Type("photos");
  Click("ShowAll");
  EXPECT_EQ(box->text(), "");
  EXPECT_EQ(CountListed(), 3);
}

// A clock that leaps has each step end at once.
TEST_F(SearchWindow, AListGrowsWhileTheWindowAnswers) {
  testing::AddMany(700, {.subject = "found"});
  testing::AddMany(700, {.subject = "other"});
  Start();
  platform::ClockOverride clock;
  clock.tickStep = 1000;
  platform::SetClockOverride(clock);
  Type("found");
  EXPECT_TRUE(IsListGrowing());
  EXPECT_EQ(CountListed(), 0);
  while (CountListed() == 0) QApplication::processEvents();
  EXPECT_TRUE(IsListGrowing());
  window_->Grid().selectRow(0);
  int64_t first = window_->Grid().Current().id;
  while (IsListGrowing()) QApplication::processEvents();
  EXPECT_EQ(window_->Grid().Model().rowCount(), 700);
  EXPECT_EQ(window_->Grid().Current().id, first);
  EXPECT_EQ(ui_.status[StatusPanel::kCounts], "700; 700 In; 0 Out");
  EXPECT_EQ(window_->Grid().Model().SubjectAt(699), "found");
}

TEST_F(SearchWindow, FoldersAndSavedSearchesNarrowWithAClick) {
  for (const char* folder : {"Inbox", "Inbox", "Old"}) {
    int64_t id = AddListed({.subject = std::string("in ") + folder});
    repository::RepositoryDb().Execute("UPDATE Email SET Identity = 'Ann', Folder = '" +
                                       std::string(folder) + "' WHERE ID = " + std::to_string(id));
  }
  search::SaveSearch({"It's old", "in:old"});
  Start();
  auto* dock = Find<QDockWidget>("FolderDock");
  EXPECT_FALSE(dock->isVisible());
  QTest::keyClick(window_.get(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(dock->isVisible());
  testing::CheckControls(*window_);
  QTRY_VERIFY(Find<QTreeWidget>("Folders")->topLevelItem(0)->text(1) == "3");
  EXPECT_EQ(Item("Inbox")->text(1), "2");
  Choose("Inbox");
  EXPECT_EQ(CountListed(), 2);
  Choose("All mail");
  EXPECT_EQ(CountListed(), 3);
  Choose("It's old");
  EXPECT_THAT(ListedSubjects(), ElementsAre("in Old"));
  EXPECT_EQ(Find<QLineEdit>("SearchBox")->text(), "in:old");
  Choose("Inbox");
  EXPECT_EQ(CountListed(), 0);
  // Hidden, it narrows nothing.
  Choose("Old");
  QTest::keyClick(window_.get(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  Type("");
  EXPECT_EQ(CountListed(), 3);
  Choose("It's old");
  Click("RemoveSearch");
  EXPECT_TRUE(search::SavedSearches().empty());
  window_ = nullptr;
  EXPECT_FALSE(search::ReadFoldersShown());
}

}  // namespace
}  // namespace tarnwick::board
