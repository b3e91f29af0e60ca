// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The commands on the selected messages, put behind the window's actions, and the text window that
// follows the selection.
#pragma once

#include <QTimer>

#include "board/email_text_window.h"
#include "board/list_actions.h"

namespace tarnwick::board {

class MessageActions : public QObject {
  Q_OBJECT

 public:
  MessageActions(const BoardParts& parts, BoardWork& work, ListActions& list, QObject* parent);

  // Nothing follows the selection before its next change.
  void StopFollowing() { follow_.stop(); }
  // Until a message is selected again.
  void HideText();

 private:
  void Delete();
  void ToggleHot();
  void MarkAllHotOff();
  void ShowEmail();
  void MoveHtml();
  void SetShowEmailText(bool on);
  void FollowSelection();

  const BoardParts parts_;
  BoardWork& work_;
  ListActions& list_;
  frmEmailText* text_ = nullptr;  // made when it is first shown
  QTimer follow_;                 // so that many changes of the selection at once are one
};

}  // namespace tarnwick::board
