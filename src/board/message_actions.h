// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The commands on the selected messages, put behind the window's actions, and the text window that
// follows the selection.
#pragma once

#include <QTimer>

#include "board/reading_actions.h"
#include "reading/email_text_window.h"

namespace tarnwick::board {

class MessageActions : public QObject {
  Q_OBJECT

 public:
  MessageActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                 ReadingActions& reading, QObject* parent);

  // Nothing follows the selection before its next change.
  void StopFollowing() { follow_.stop(); }
  // Until a message is selected again.
  void HideText();
  // The repository is another one, or its messages are.
  void ForgetDeleted();

 private:
  void Delete();
  void Undo();
  void ToggleHot();
  void MarkAllHotOff();
  void ShowEmail();
  void MoveHtml();
  void SetShowEmailText(bool on);
  void FollowSelection();

  const BoardParts parts_;
  BoardWork& work_;
  ListActions& list_;
  ReadingActions& reading_;
  maintenance::DeletedMessages deleted_;
  reading::frmEmailText* text_ = nullptr;  // made when it is first shown
  QTimer follow_;                          // so that many changes of the selection at once are one
};

}  // namespace tarnwick::board
