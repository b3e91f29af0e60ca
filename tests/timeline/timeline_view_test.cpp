// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/timeline_view.h"

#include <QComboBox>
#include <QTest>
#include <QToolButton>

#include "board/board_window.h"

namespace tarnwick::timeline {
namespace {

// Two messages in March 2003, one in May 2003 (of Bob, outgoing), one each year from 2001 to 2004
// besides, and one of 1970.
class Timeline : public board::BoardWindow {
 protected:
  Timeline() {
    auto on = [](int year, int month, int day) { return DateTime::FromDate(year, month, day); };
    AddListed({.subject = "first", .received = on(2003, 3, 4)});
    AddListed({.subject = "last", .received = on(2003, 3, 31).WithTime(23, 59, 59)});
    AddListed(
        {.subject = "may", .name = "Bob O'Neil", .direction = "Out", .received = on(2003, 5, 9)});
    for (int year = 2001; year <= 2004; ++year) {
      for (int i = 0; i < 20; ++i) {
        AddListed({.subject = "July", .received = on(year, 7, 1 + i)});
      }
    }
    AddListed({.subject = "stray", .received = on(1970, 1, 1)});
    Start();
    Settle();
  }

  void Settle() {
    do {
      QApplication::processEvents();
    } while (window_->Timeline().IsCounting());
  }
  TimelinePlotView& Plot() { return window_->Timeline().Plot(); }
  const TimelineState& State() { return Plot().State(); }
  int BarOf(int year, int month) {
    int day = DayNumber(DateTime::FromDate(year, month, 1));
    for (size_t i = 0; i < State().Bars().size(); ++i) {
      if (State().Bars()[i].days.first == day) return static_cast<int>(i);
    }
    ADD_FAILURE() << "no bar of " << year << "-" << month;
    return 0;
  }
  QPoint At(int bar) { return Plot().SlotRect(bar).center(); }
  void Key(int key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key), modifiers);
    Settle();
  }
  std::string Box(const char* name) { return Find<QLineEdit>(name)->text().toStdString(); }
  std::string Dates() { return Box("DateFrom") + "-" + Box("DateTo"); }
};

TEST_F(Timeline, ADragChoosesTheDatesOfTheListAndEscapeTakesThemBack) {
  ASSERT_EQ(State().Unit(), PeriodUnit::kMonth);
  std::string whole = Dates();
  QTest::mousePress(&Plot(), Qt::LeftButton, {}, At(BarOf(2003, 5)));
  QTest::mouseMove(&Plot(), At(BarOf(2003, 3)));
  EXPECT_EQ(Dates(), whole);
  QTest::mouseRelease(&Plot(), Qt::LeftButton, {}, At(BarOf(2003, 3)));
  Settle();
  EXPECT_EQ(Dates(), "3/1/2003-5/31/2003");
  EXPECT_THAT(ListedSubjects(), ElementsAre("may", "last", "first"));
  EXPECT_EQ(Find<repository::ElidedLabel>("TimelineText")->WholeText(),
            "March 2003 – May 2003: 3 messages (2 in, 1 out)");
  // The bars are those of all dates still.
  EXPECT_EQ(State().Counts().Total().Total(), 84);
  EXPECT_TRUE(Find<QToolButton>("AllDates")->isVisible());

  // A drag that is broken off changes nothing.
  QTest::mousePress(&Plot(), Qt::LeftButton, {}, At(BarOf(2001, 7)));
  Key(Qt::Key_Escape);
  QTest::mouseRelease(&Plot(), Qt::LeftButton, {}, At(BarOf(2001, 8)));
  EXPECT_EQ(Dates(), "3/1/2003-5/31/2003");
  Key(Qt::Key_Escape);
  EXPECT_EQ(Dates(), whole);
  EXPECT_EQ(board::CountListed(), 84);
}

TEST_F(Timeline, OfASearchItCountsWhatWasFound) {
  auto search = [&](const char* words) {
    Find<QLineEdit>("SearchBox")->setText(words);
    QTest::keyClick(Find<QLineEdit>("SearchBox"), Qt::Key_Return);
  };
  auto waitFor = [&](int64_t messages) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return State().Counts().Total().Total() == messages; }));
    EXPECT_EQ(State().Counts().Total().Total(), messages);
    Settle();
  };
  search("-july");
  waitFor(4);
  EXPECT_EQ(State().Counts().Total().out, 1);
  EXPECT_EQ(Find<repository::ElidedLabel>("TimelineText")->WholeText(), "Found: 4 messages");
  // Dates narrow the list; the bars stay.
  window_->Timeline().Plot().Choose(
      {DayNumber(DateTime::FromDate(2003, 5, 1)), DayNumber(DateTime::FromDate(2003, 5, 31))});
  Settle();
  EXPECT_THAT(ListedSubjects(), ElementsAre("may"));
  EXPECT_EQ(State().Counts().Total().Total(), 4);
  Find<QToolButton>("ShowCorrespondents")->click();
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return window_->Timeline().Correspondents().People().size() == 1; }));
  EXPECT_EQ(window_->Timeline().Correspondents().People()[0].name, "Bob O'Neil");
  Find<QToolButton>("ShowCorrespondents")->click();
  // Another search is counted anew, within the dates that it was made for.
  search("-first");
  waitFor(1);
  search("");
  waitFor(84);
  search("nowhere");
  waitFor(0);
}

TEST_F(Timeline, ADoubleClickZoomsInAndOneEscapeUndoesIt) {
  std::string whole = Dates();
  QTest::mouseClick(&Plot(), Qt::LeftButton, {}, At(BarOf(2003, 3)));
  QTest::mouseDClick(&Plot(), Qt::LeftButton, {}, At(BarOf(2003, 3)));
  Settle();
  EXPECT_EQ(State().Unit(), PeriodUnit::kDay);
  ASSERT_EQ(State().Bars().size(), 31U);
  EXPECT_EQ(State().Bars()[3].count.in, 1);
  EXPECT_EQ(State().Bars()[30].count.in, 1);
  EXPECT_THAT(ListedSubjects(), ElementsAre("last", "first"));
  Key(Qt::Key_Escape);
  EXPECT_EQ(State().Unit(), PeriodUnit::kMonth);
  EXPECT_EQ(Dates(), whole);
}

TEST_F(Timeline, TheKeyboardDoesWhatTheMouseDoes) {
  Plot().setFocus();
  Key(Qt::Key_Home);
  EXPECT_EQ(Plot().accessibleDescription(), "July 2001: 20 messages (20 in, 0 out)");
  for (int i = 0; i < 20; ++i) Key(Qt::Key_Right);
  Key(Qt::Key_Right, Qt::ShiftModifier);
  Key(Qt::Key_Right, Qt::ShiftModifier);
  Key(Qt::Key_Return);
  EXPECT_EQ(Dates(), "3/1/2003-5/31/2003");
  EXPECT_TRUE(Plot().hasFocus());
  Key(Qt::Key_Plus);
  EXPECT_EQ(State().Unit(), PeriodUnit::kDay);
  EXPECT_EQ(State().Bars().size(), 92U);
  Key(Qt::Key_Minus);
  EXPECT_EQ(State().Bars().size(), 12U);
  Key(Qt::Key_Escape);
  Key(Qt::Key_Escape);
  Key(Qt::Key_Escape);
  EXPECT_EQ(board::CountListed(), 84);
  // What lies before the bulk of the mail is two keys away.
  Key(Qt::Key_Home);
  Key(Qt::Key_Home);
  EXPECT_EQ(Plot().accessibleDescription(), "1 January 1970: 1 message (1 in, 0 out)");
  // Elsewhere Escape is not the strip's.
  window_->Grid().setFocus();
  Key(Qt::Key_Escape);
  EXPECT_EQ(State().Unit(), PeriodUnit::kDay);
}

TEST_F(Timeline, FollowsTheFilterAndWhatChanges) {
  Filter("Subject", "July");
  Settle();
  EXPECT_EQ(State().Counts().Total().Total(), 80);
  Filter("Subject", "absent");
  Settle();
  EXPECT_TRUE(State().Bars().empty());
  window_->Actions().showAll->trigger();
  Settle();
  ASSERT_EQ(State().Counts().Total().Total(), 84);

  window_->Grid().selectRow(0);
  ui_.yesNo = {true};
  window_->Actions().deleteSelected->trigger();
  Settle();
  EXPECT_EQ(State().Counts().Total().Total(), 83);
}

TEST_F(Timeline, ACorrespondentIsFilteredByAndLetGoAgain) {
  Find<QToolButton>("ShowCorrespondents")->click();
  Settle();
  CorrespondentsView& people = window_->Timeline().Correspondents();
  ASSERT_THAT(people.People(),
              ElementsAre(Correspondent{"Ann", 83}, Correspondent{"Bob O'Neil", 1}));
  auto* fromTo = Find<QComboBox>("cmbFromTo");
  QTest::mouseClick(&people, Qt::LeftButton, {}, people.CellRect(1).center());
  Settle();
  EXPECT_EQ(fromTo->currentText(), "Bob O'Neil");
  EXPECT_THAT(ListedSubjects(), ElementsAre("may"));
  EXPECT_EQ(people.People().size(), 2U);
  people.setFocus();
  Key(Qt::Key_Return);
  EXPECT_EQ(fromTo->currentText(), "");
  EXPECT_EQ(board::CountListed(), 84);
}

TEST_F(Timeline, HiddenItStaysHiddenAndCountsNothing) {
  EXPECT_TRUE(window_->Timeline().isVisible());
  window_->Actions().timeline->trigger();
  EXPECT_FALSE(window_->Timeline().isVisible());
  window_->close();
  Start();
  EXPECT_FALSE(window_->Timeline().isVisible() || window_->Timeline().IsCounting());
  EXPECT_THAT(State().Bars(), IsEmpty());
  window_->Actions().timeline->trigger();
  Settle();
  EXPECT_EQ(State().Counts().Total().Total(), 84);
}

}  // namespace
}  // namespace tarnwick::timeline
