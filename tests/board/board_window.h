// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window on a repository of the test's own.
#pragma once

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "board/main_board_window.h"
#include "board_rows.h"
#include "support/program_fixture.h"

namespace tarnwick::board {

class BoardWindow : public testing::ProgramFixture {
 protected:
  ~BoardWindow() override {
    window_.reset();
    ResetBoard();
  }

  void Start() {
    window_ = std::make_unique<MainBoard>();
    ASSERT_TRUE(window_->Load());
    window_->show();
    QApplication::processEvents();
  }
  template <typename Widget>
  Widget* Find(const char* name) {
    auto* widget = window_->findChild<Widget*>(name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }
  // A box whose list is read when it is entered.
  QComboBox* Enter(const char* name) {
    auto* box = Find<QComboBox>(name);
    box->setFocus();
    QApplication::processEvents();
    return box;
  }
  void Click(const char* name) { Find<QPushButton>(name)->click(); }
  // Types into a box of the filter and applies it.
  void Filter(const char* name, const QString& text) {
    Find<QLineEdit>(name)->setText(text);
    emit window_->Filter().FilterChanged();
  }
  void Select(int row) {
    window_->Grid().selectRow(row);
    QApplication::processEvents();
  }

  std::unique_ptr<MainBoard> window_;
};

}  // namespace tarnwick::board
