// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The files that came with a message, as a strip of names with their sizes: saved one by one or all
// together, or dragged out to the desktop, for which a scratch file is made. Nothing is opened
// here, also not by a double click, which saves.
#pragma once

#include <QListWidget>
#include <QMenu>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "takeout/attachments.h"

class QLabel;
class QPushButton;

namespace tarnwick::takeout {

// Asks where and saves. Nothing is held for the time of the question: the list may change
// meanwhile.
void AskAndSaveAttachment(std::shared_ptr<const MessageAttachments> attachments, size_t which,
                          QWidget* parent);
void AskAndSaveAllAttachments(std::shared_ptr<const MessageAttachments> attachments);

class AttachmentsView : public QWidget {
  Q_OBJECT

 public:
  explicit AttachmentsView(QWidget* parent = nullptr);

  // Shows these and hides itself when there are none; null is none.
  void Show(std::shared_ptr<const MessageAttachments> attachments);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  class List;
  void SaveCurrent();
  void FitHeight();

  std::shared_ptr<const MessageAttachments> attachments_;
  QLabel* title_;
  List* list_;
  QPushButton* save_;
  QPushButton* saveAll_;
};

// The same as a menu: it asks for the current message whenever it opens.
class AttachmentsMenuView : public QMenu {
  Q_OBJECT

 public:
  // current gives the message's ID, 0 for none.
  AttachmentsMenuView(std::function<int64_t()> current, QWidget* parent);

 private:
  void Fill();

  std::function<int64_t()> current_;
};

}  // namespace tarnwick::takeout
