// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/conversation_actions.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>

#include "board/layout_store.h"
#include "board/list_query.h"
#include "search/conversations.h"

namespace tarnwick::board {

namespace {

constexpr int64_t kStepMilliseconds = 12;
constexpr const char* kLink = "conversations";

}  // namespace

ConversationActions::ConversationActions(const BoardParts& parts, BoardWork& work,
                                         ListActions& list, QObject* parent)
    : QObject(parent),
      parts_(parts),
      work_(work),
      list_(list),
      show_(new QAction(tr("C&onversations"), parts.window)) {
  show_->setObjectName("mnViewConversations");
  show_->setCheckable(true);
  show_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
  show_->setToolTip(tr("Lists the letters of each conversation together"));
  auto* view = parts_.window->menuBar()->findChild<QMenu*>("mnuView");
  if (view != nullptr) view->addAction(show_);
  connect(show_, &QAction::toggled, this, &ConversationActions::SetOn);
  connect(&list_, &ListActions::Bound, this, &ConversationActions::Follow);
  connect(&read_, &QTimer::timeout, this, &ConversationActions::ReadOn);
  connect(parts_.notice, &QLabel::linkActivated, this, [this](const QString& link) {
    if (link == kLink) Learn();
  });
}

void ConversationActions::Load() {
  search::AllConversations().Forget();
  offered_ = 0;
  Board().Conversations.isOn = ReadConversationsShown();
  QSignalBlocker blocker(show_);
  show_->setChecked(Board().Conversations.isOn);
}

void ConversationActions::SetOn(bool on) {
  if (work_.IsRunning()) {
    QSignalBlocker blocker(show_);
    show_->setChecked(!on);
    return;
  }
  SaveConversationsShown(on);
  Board().Conversations.isOn = on;
  list_.Refresh();
  // What is not looked at takes no memory.
  if (!on) search::AllConversations().Forget();
}

// The list was bound: grouped, unless its conversations are still to be read or it still grows.
void ConversationActions::Follow() {
  bool isGrouped = !Board().Conversations.listed.empty();
  if (Board().Conversations.isOn && !isGrouped && !Board().ListIsPlaceholder) {
    read_.start();
  } else {
    read_.stop();
    if (isGrouped) OfferToLearn();
  }
}

void ConversationActions::ReadOn() {
  // What runs may be asking the engine.
  if (work_.IsRunning() || IsListGrowing()) return;
  if (!PrepareConversations(kStepMilliseconds)) {
    parts_.status->SetPanel(
        core::StatusPanel::kProgress,
        tr("Finding conversations... %1 %").arg(search::AllConversations().Percent()));
    return;
  }
  read_.stop();
  parts_.status->SetPanel(core::StatusPanel::kProgress, {});
  GroupList();
  if (!Board().Conversations.listed.empty()) BindEmailList(list_);
}

void ConversationActions::OfferToLearn() {
  auto unknown = static_cast<qlonglong>(search::AllConversations().Unknown().size());
  if (unknown <= offered_) return;
  offered_ = unknown;
  parts_.notice->setText(
      tr("%L1 messages were loaded by an earlier version, which did not look for conversations. "
         "<a href=\"%2\">Find theirs now</a>")
          .arg(unknown)
          .arg(kLink));
  parts_.notice->show();
}

void ConversationActions::Learn() {
  parts_.notice->hide();
  work_.RunStoppable([] { search::LearnThreads(search::AllConversations().Unknown()); });
  offered_ = 0;
  list_.Refresh();
}

}  // namespace tarnwick::board
