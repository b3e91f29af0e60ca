// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The commands that take mail in, put behind the window's actions; each lists what it brought.
#pragma once

#include <functional>

#include "board/list_actions.h"
#include "board/load_command.h"

namespace tarnwick::board {

class LoadActions : public QObject {
  Q_OBJECT

 public:
  LoadActions(const BoardParts& parts, BoardWork& work, ListActions& list, QObject* parent);

  // Runs a load, with the Stop button at hand, and lists what it brought.
  void Load(const std::function<LoadResult()>& load);
  // Takes one message file in and lists it.
  void LoadTextFile(const QString& path);

 private:
  void ChooseTextFile();
  void ShowNotice();

  const BoardParts parts_;
  BoardWork& work_;
  ListActions& list_;
};

}  // namespace tarnwick::board
