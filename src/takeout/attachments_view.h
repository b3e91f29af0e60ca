// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The files that came with a message, as a strip of names with their sizes: saved one by one or all
// together, dragged out to the desktop, for which a scratch file is made, or opened: a picture in a
// window of the program, what is no program with the desktop's own. A double click saves.
#pragma once

#include <QImage>
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

// A picture is shown in a window of the program's own, another file by the desktop's program for
// its kind. One that a desktop would run is never opened; the person is told why.
void OpenAttachment(const MessageAttachments& attachments, size_t which, QWidget* parent);

// A picture of a kind that holds nothing but a picture, at most so many pixels wide; null
// otherwise.
QImage DecodePicture(const std::string& bytes, int widest);

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
  void OpenCurrent();
  void FitHeight();

  std::shared_ptr<const MessageAttachments> attachments_;
  QLabel* title_;
  List* list_;
  QPushButton* open_;
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
