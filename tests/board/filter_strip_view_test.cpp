// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/filter_strip_view.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRadioButton>
#include <QWheelEvent>

#include "board/list_query.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

class FilterStrip : public testing::ProgramFixture {
 protected:
  FilterStrip() {
    QObject::connect(&strip_, &FilterStripView::FilterChanged, [this] { ++changes_; });
    QObject::connect(&strip_, &FilterStripView::LastBoxLeft, [this] { ++left_; });
    ListFilter filter;
    filter.DateFrom = DateTime::FromDate(2004, 1, 2);
    filter.DateTo = DateTime::FromDate(2004, 12, 31);
    strip_.ShowFilter(filter);
    strip_.show();
    strip_.activateWindow();
    QApplication::processEvents();
  }

  template <typename Widget>
  Widget* Find(const char* name) {
    auto* widget = strip_.findChild<Widget*>(name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }
  static void Press(QWidget* widget, int key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QApplication::processEvents();
  }
  // Puts the focus in a box and types there.
  void Type(QWidget* box, const QString& text) {
    box->setFocus();
    if (auto* combo = qobject_cast<QComboBox*>(box)) {
      combo->setEditText(text);
    } else {
      qobject_cast<QLineEdit*>(box)->setText(text);
    }
  }
  ListFilter Read() {
    ListFilter filter;
    strip_.ReadFilter(filter);
    return filter;
  }
  static std::string Focused() {
    QWidget* focus = QApplication::focusWidget();
    return focus == nullptr ? "" : focus->objectName().toStdString();
  }

  FilterStripView strip_;
  int changes_ = 0;
  int left_ = 0;
};

TEST_F(FilterStrip, EnterAppliesWhatChangedAndMovesOn) {
  auto* name = Find<QComboBox>("cmbFromTo");
  Type(name, "ann");
  Press(name, Qt::Key_Return);
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(Focused(), "Subject");
  EXPECT_EQ(Read().FromTo, "ann");

  Press(Find<QLineEdit>("Subject"), Qt::Key_Enter);
  EXPECT_EQ(changes_, 1) << "nothing was changed";
  EXPECT_EQ(Focused(), "cmbFile");
  Press(Find<QComboBox>("cmbFile"), Qt::Key_Return);
  EXPECT_EQ(Focused(), "MailText");
  Type(Find<QLineEdit>("MailText"), "x");
  Press(Find<QLineEdit>("MailText"), Qt::Key_Return);
  EXPECT_EQ(changes_, 2);
  EXPECT_EQ(left_, 1);
}

TEST_F(FilterStrip, EscapePutsBackWhatTheBoxHadWhenItWasEntered) {
  auto* subject = Find<QLineEdit>("Subject");
  Type(subject, "kept");
  Press(subject, Qt::Key_Return);
  Type(subject, "dropped");
  Press(subject, Qt::Key_Escape);
  EXPECT_EQ(subject->text(), "kept");
  EXPECT_EQ(changes_, 1);
}

TEST_F(FilterStrip, DatesAreReadAsTheLocaleWritesThemAndShownInItsForm) {
  auto* from = Find<QLineEdit>("DateFrom");
  EXPECT_EQ(from->text(), "1/2/2004");
  Type(from, " 3/5/04 ");
  Press(from, Qt::Key_Return);
  EXPECT_EQ(from->text(), "3/5/2004");
  EXPECT_EQ(Read().DateFrom, DateTime::FromDate(2004, 3, 5));
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(Focused(), "DateTo");
}

TEST_F(FilterStrip, WhatIsNoDateKeepsTheFocusHoweverTheBoxIsLeft) {
  auto* from = Find<QLineEdit>("DateFrom");
  Type(from, "31/31/2004");
  Press(from, Qt::Key_Return);
  EXPECT_EQ(ui_.Shown("box").size(), 1U);
  EXPECT_EQ(Focused(), "DateFrom");
  Find<QLineEdit>("Subject")->setFocus(Qt::TabFocusReason);
  QApplication::processEvents();
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("Invalid date format.", "Invalid date format."));
  EXPECT_EQ(Focused(), "DateFrom");
  EXPECT_EQ(changes_, 0);
  EXPECT_EQ(Read().DateFrom, DateTime::FromDate(2004, 1, 2)) << "the last good one";
  Press(from, Qt::Key_Escape);
  EXPECT_EQ(from->text(), "1/2/2004");
  Press(from, Qt::Key_Return);
  EXPECT_EQ(Focused(), "DateTo");
}

TEST_F(FilterStrip, GroupsAndCheckBoxesApplyAtOnce) {
  Find<QRadioButton>("oOut")->click();
  Find<QRadioButton>("oFromTo")->click();
  Find<QRadioButton>("odAscending")->click();
  Find<QCheckBox>("ckbActive")->click();
  Find<QCheckBox>("AttachedFile")->click();
  EXPECT_EQ(changes_, 5);
  ListFilter filter = Read();
  EXPECT_EQ(filter.Direction, ListDirection::kOut);
  EXPECT_EQ(filter.SortBy, ListSort::kFromTo);
  EXPECT_EQ(filter.SortOrder, ListOrder::kAscending);
  EXPECT_TRUE(filter.Active && filter.AttachedFile);
}

TEST_F(FilterStrip, AHeaderClickTurnsTheOrderOfItsOwnSort) {
  strip_.SortBy(ListSort::kSubject);
  EXPECT_EQ(Read().SortOrder, ListOrder::kDescending);
  strip_.SortBy(ListSort::kSubject);
  EXPECT_EQ(Read().SortOrder, ListOrder::kAscending);
  EXPECT_EQ(Read().SortBy, ListSort::kSubject);
  EXPECT_EQ(changes_, 2);
}

TEST_F(FilterStrip, ListsOfferChoicesAndLeaveWhatWasTyped) {
  auto* name = Find<QComboBox>("cmbFromTo");
  name->setEditText("half a na");
  strip_.SetChoices(FilterStripView::Choices::kContacts, {"Ann", "Bob"});
  EXPECT_EQ(name->currentText(), "half a na");
  EXPECT_EQ(name->count(), 2);
  EXPECT_EQ(changes_, 0);
  name->setCurrentIndex(1);
  emit name->activated(1);
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(Read().FromTo, "Bob");
  QWheelEvent wheel({}, {}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(name, &wheel);
  EXPECT_EQ(name->currentText(), "Bob") << "scrolling past chooses nothing";
}

TEST_F(FilterStrip, AClickDropsDownChoicesThatWereNotReadYet) {
  QObject::connect(&strip_, &FilterStripView::ChoicesAskedFor, &strip_,
                   [this](FilterStripView::Choices list) { strip_.SetChoices(list, {"Ann"}); });
  strip_.ForgetChoices();
  auto* name = Find<QComboBox>("cmbFromTo");
  name->clearFocus();
  QPoint arrow(name->width() - 5, name->height() / 2);
  QMouseEvent press(QEvent::MouseButtonPress, arrow, name->mapToGlobal(arrow), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(name, &press);  // which gives it no focus
  EXPECT_TRUE(name->view()->isVisible());
  name->hidePopup();
}

TEST_F(FilterStrip, ATextThatIsLeftIsAppliedUnlessEscapeTookItBack) {
  auto* subject = Find<QLineEdit>("Subject");
  Type(subject, "budget");
  EXPECT_EQ(changes_, 0);
  Find<QWidget>("MailText")->setFocus();
  QApplication::processEvents();
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(Read().Subject, "budget");
  Type(subject, "other");
  Press(subject, Qt::Key_Escape);
  Find<QWidget>("MailText")->setFocus();
  QApplication::processEvents();
  EXPECT_EQ(changes_, 1);
  EXPECT_EQ(Read().Subject, "budget");
}

}  // namespace
}  // namespace tarnwick::board
