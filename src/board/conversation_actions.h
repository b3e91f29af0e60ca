// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// View > Conversations: from the menu to a list that is grouped as soon as the conversations are
// known.
#pragma once

#include <QTimer>

#include "board/board_work_actions.h"
#include "board/list_actions.h"

namespace tarnwick::board {

class ConversationActions : public QObject {
  Q_OBJECT

 public:
  ConversationActions(const BoardParts& parts, BoardWork& work, ListActions& list, QObject* parent);

  // After a repository was opened, before it is listed.
  void Load();

 private:
  void SetOn(bool on);
  void Follow();
  void ReadOn();
  void OfferToLearn();
  void Learn();

  const BoardParts parts_;
  BoardWork& work_;
  ListActions& list_;
  QAction* show_;
  QTimer read_;            // while conversations are not known
  qlonglong offered_ = 0;  // so many messages were to be looked through
};

}  // namespace tarnwick::board
