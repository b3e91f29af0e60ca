// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/takeout_actions.h"

#include "board/message_commands.h"
#include "core/messages.h"
#include "takeout/attachments_view.h"
#include "takeout/save_messages_dialog.h"

namespace tarnwick::board {

TakeoutActions::TakeoutActions(BoardActions& actions, EmailGridView& grid, Runner run,
                               QWidget* window)
    : QObject(window), grid_(grid), run_(std::move(run)), window_(window) {
  connect(actions.saveMessages, &QAction::triggered, this, &TakeoutActions::AskAndSave);
  actions.attachments->setMenu(
      new takeout::AttachmentsMenuView([this] { return grid_.Current().id; }, window));
}

void TakeoutActions::AskAndSave() {
  int64_t listed = CountListed();
  if (listed == 0) {
    ShowNothingSelected();
    return;
  }
  takeout::SaveMessagesDialog dialog(grid_.SelectedCount(), listed, window_);
  if (dialog.exec() == QDialog::Accepted) Save(dialog.Order(), dialog.WantsSelected());
}

void TakeoutActions::Save(takeout::SaveOrder order, bool onlySelected) {
  run_([&] {
    // All of them are walked with events running, some are at hand.
    if (onlySelected && grid_.SelectedCount() < CountListed()) {
      order.ids = grid_.SelectedIds();
    } else {
      auto ids = ListedIds();
      if (!ids) {
        core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "Nothing was saved.");
        return;
      }
      order.ids = std::move(*ids);
    }
    auto counts = takeout::SaveMessages(order);
    if (!counts) return;
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), counts->Line());
    core::ShowMessage(counts->Report(order.folder));
  });
}

}  // namespace tarnwick::board
