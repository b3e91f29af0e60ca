// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The text of one message in a window of its own, with the files that came with it. HTML is shown
// as the text that it is and never rendered: nothing in a message is run or fetched. The window's
// place is kept while it is hidden and from one run to the next.
#pragma once

#include <QDialog>

#include "reading/letter.h"
#include "takeout/attachments_view.h"

class QPlainTextEdit;

namespace tarnwick::reading {

class frmEmailText : public QDialog {
  Q_OBJECT

 public:
  // REQUIRES: a repository is open, also when the window is hidden.
  explicit frmEmailText(QWidget* parent = nullptr);

  // Shows the window with this message; the keyboard stays where it is.
  void ShowText(const EmailText& email);
  // Nothing is selected; the window stays where it is.
  void Clear();

 protected:
  void hideEvent(QHideEvent* event) override;

 private:
  void RestorePlace();

  QPlainTextEdit* text_;
  takeout::AttachmentsView* attachments_;
};

}  // namespace tarnwick::reading
