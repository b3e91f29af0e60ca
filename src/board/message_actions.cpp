// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/message_actions.h"

#include <QCheckBox>

#include "board/message_commands.h"
#include "board/message_viewer.h"
#include "core/run_state.h"
#include "repository/parameter_store.h"

namespace tarnwick::board {

namespace {

constexpr const char* kShowEmailText = "ShowEmailText";

}  // namespace

MessageActions::MessageActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                               ReadingActions& reading, QObject* parent)
    : QObject(parent), parts_(parts), work_(work), list_(list), reading_(reading) {
  const BoardActions& actions = *parts.actions;
  auto on = [this](QAction* action, void (MessageActions::*command)()) {
    connect(action, &QAction::triggered, this, command);
  };
  on(actions.deleteSelected, &MessageActions::Delete);
  on(actions.undo, &MessageActions::Undo);
  on(actions.toggleHot, &MessageActions::ToggleHot);
  on(actions.markAllNotHot, &MessageActions::MarkAllHotOff);
  on(actions.showEmail, &MessageActions::ShowEmail);
  on(actions.moveHtml, &MessageActions::MoveHtml);
  connect(actions.copy, &QAction::triggered, parts.grid, &EmailGridView::CopySelected);
  connect(parts.grid, &QTableView::doubleClicked, this, [this] {
    if (parts_.grid->Current().id != 0) parts_.actions->showEmail->trigger();
  });
  follow_.setSingleShot(true);
  connect(&follow_, &QTimer::timeout, this, &MessageActions::FollowSelection);
  connect(parts.grid, &EmailGridView::CurrentChanged, &follow_, qOverload<>(&QTimer::start));
  connect(&list, &ListActions::LongSearchEnded, &follow_, qOverload<>(&QTimer::start));
  connect(parts.showEmailText, &QCheckBox::toggled, this, &MessageActions::SetShowEmailText);
}

void MessageActions::Delete() {
  work_.Run([this] { list_.ListAnew(DeleteMessages(parts_.grid->Selected(), &deleted_)); });
  parts_.actions->SetCanUndo(deleted_.CanTakeBack());
}

void MessageActions::Undo() {
  work_.Run([this] { list_.ListAnew(UndoDelete(deleted_)); });
  parts_.actions->SetCanUndo(deleted_.CanTakeBack());
}

void MessageActions::ForgetDeleted() {
  deleted_.Forget();
  parts_.actions->SetCanUndo(false);
}

void MessageActions::ToggleHot() {
  work_.Run([this] { list_.ListAnew(ToggleActive(parts_.grid->Selected())); });
}

void MessageActions::MarkAllHotOff() {
  work_.Run([this] { list_.ListAnew(MarkAllNotHot()); });
}

void MessageActions::ShowEmail() {
  SelectedMessage message = parts_.grid->Current();
  if (message.id == 0) {
    ShowNothingSelected();
    return;
  }
  // The desktop may take a few seconds to refuse, and events run meanwhile.
  bool hasNoProgram = false;
  work_.Run([&] { ShowStoredMessage(message.id, message.application, &hasNoProgram); });
  if (hasNoProgram) reading_.OpenWindow(message.id);
}

void MessageActions::MoveHtml() {
  work_.Run([this] {
    parts_.status->SetBusy(true);
    list_.ListAnew(MoveHtmlToBody());
  });
}

void MessageActions::SetShowEmailText(bool on) {
  if (core::State().ShowEmailText != on) repository::SetOption(kShowEmailText, on);
  if (on) {
    FollowSelection();
  } else {
    HideText();
  }
}

void MessageActions::HideText() {
  if (text_ != nullptr) text_->hide();
}

void MessageActions::FollowSelection() {
  QCheckBox* box = parts_.showEmailText;
  if (!box->isChecked() || !parts_.window->isVisible() || !parts_.grid->isEnabled()) return;
  int64_t id = parts_.grid->Current().id;
  auto shown = id == 0 ? std::nullopt : reading::ReadEmailText(id);
  if (!shown) {
    // A text that is no longer the selected message's would be taken for it.
    if (text_ != nullptr) text_->Clear();
    return;
  }
  if (text_ == nullptr) {
    text_ = new reading::frmEmailText(parts_.window);
    // Closed by the person, it stays away until the box is checked again.
    connect(text_, &QDialog::rejected, box, [box] { box->setChecked(false); });
  }
  text_->ShowText(*shown);
}

}  // namespace tarnwick::board
