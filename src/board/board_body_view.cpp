// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/board_body_view.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>
#include <initializer_list>

#include "reading/letter_view.h"

namespace tarnwick::board {

namespace {

// A null pointer stands for a separator.
void AddMenu(QMainWindow* window, const QString& title, const char* name,
             std::initializer_list<QAction*> actions) {
  QMenu* menu = window->menuBar()->addMenu(title);
  menu->setObjectName(name);
  for (QAction* action : actions) {
    if (action == nullptr) {
      menu->addSeparator();
    } else {
      menu->addAction(action);
    }
  }
}

// "Edit" has no letter of its own left: each is a filter box's or a button's.
void AddMenus(const BoardParts& parts) {
  const BoardActions& a = *parts.actions;
  QMainWindow* window = parts.window;
  AddMenu(window, BoardActions::tr("&File"), "mnuFile",
          {a.openRepository, a.recentRepositories, a.createRepository, nullptr, a.backup, a.restore,
           a.exportListed, a.merge, a.check, nullptr, a.protect, a.lock, nullptr, a.loadTextFile,
           a.findMail, a.saveMessages, nullptr, a.exit});
  AddMenu(window, BoardActions::tr("Edit"), "mnuEdit", {a.undo, nullptr, a.copy, a.deleteSelected});
  AddMenu(window, BoardActions::tr("&View"), "mnuView",
          {a.timeline, nullptr, a.paneBelow, a.paneBeside, a.paneOff});
  AddMenu(window, BoardActions::tr("Messa&ge"), "mnuMessage",
          {a.showEmail, a.openWindow, a.attachments, nullptr, a.findInLetter, a.showRelated,
           a.toggleHot, nullptr, a.print, a.savePdf, a.headers, a.source});
  AddMenu(window, BoardActions::tr("&Tools"), "mnuTools",
          {a.contacts, a.options, a.findLost, a.lastLoad, nullptr, a.markAllNotHot, a.moveHtml});
  AddMenu(window, BoardActions::tr("&Help"), "mnuHelp", {a.helpTopics, a.about});
}

QLabel* MakeNotice(QWidget* body) {
  auto* notice = new QLabel(body);
  notice->setObjectName("Notice");
  notice->setTextFormat(Qt::RichText);
  notice->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  notice->hide();
  return notice;
}

QCheckBox* MakeShowEmailText(QMainWindow* window, QWidget* body) {
  auto* box = new QCheckBox(BoardActions::tr("Show email text"), body);
  box->setObjectName("cbShowEmailText");
  // Every letter of the caption is another control's. A shortcut of the box itself would take the
  // focus from the list, whose selection the text follows.
  auto* key = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_T), window);
  QObject::connect(key, &QShortcut::activated, box, &QCheckBox::toggle);
  box->setToolTip(BoardActions::tr("A window with the text of the selected message (Ctrl+T)"));
  return box;
}

constexpr int kLeastMargin = 12;

QLayout* MakeButtons(BoardParts& parts, QWidget* body) {
  const BoardActions& a = *parts.actions;
  auto* row = new QHBoxLayout;
  auto add = [&](QAction* action, const char* name) {
    QPushButton* button = BoardActions::MakeButton(action, name, body);
    // Styles make buttons wider than their captions need: a narrow window takes that back.
    QSize caption = button->fontMetrics().size(Qt::TextShowMnemonic, button->text());
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    button->setMinimumWidth(caption.width() + kLeastMargin);
    row->addWidget(button);
  };
  add(a.showAll, "ShowAll");
  add(a.showEmail, "ShowEmail");
  add(a.showRelated, "cmRelated");
  add(a.toggleHot, "MarkActive");
  add(a.deleteSelected, "DeleteCurent");
  parts.showEmailText = MakeShowEmailText(parts.window, body);
  row->addSpacing(8);
  row->addWidget(parts.showEmailText);
  row->addStretch(1);
  add(a.loadFromMailer, "LoadMailler");
  add(a.quit, "Quite");
  return row;
}

// The context menu, and the keys of what is in no menu.
void AddActions(const BoardParts& parts) {
  const BoardActions& a = *parts.actions;
  auto* separator = new QAction(parts.window);
  separator->setSeparator(true);
  parts.grid->addActions({a.showEmail, a.openWindow, a.attachments, a.showRelated, a.toggleHot,
                          a.markAllNotHot, separator, a.copy, a.saveMessages, a.deleteSelected});
  parts.window->addActions({a.showAll, a.loadFromMailer, a.stop});
}

}  // namespace

BoardParts BuildBoard(QMainWindow* window) {
  auto* body = new QWidget(window);
  BoardParts parts;
  parts.window = window;
  parts.actions = new BoardActions(window);
  parts.search = new search::SearchBoxView(body);
  parts.strip = new FilterStripView(body);
  parts.timeline = new timeline::TimelineView(body);
  parts.notice = MakeNotice(body);
  parts.otherDates = new OtherDatesView(body);
  parts.splitter = new QSplitter(body);
  parts.splitter->setChildrenCollapsible(false);
  parts.grid = new EmailGridView(parts.splitter);
  parts.letter = new reading::LetterView(parts.splitter);
  parts.status = new StatusPanelsView(window);
  parts.folders = new search::FolderPanelView(window);
  auto* column = new QVBoxLayout(body);
  column->setContentsMargins(8, 6, 8, 6);
  column->addWidget(parts.search);
  column->addWidget(parts.strip);
  column->addWidget(parts.timeline);
  column->addWidget(parts.notice);
  column->addWidget(parts.otherDates);
  column->addWidget(parts.splitter, 1);
  column->addLayout(MakeButtons(parts, body));
  window->setCentralWidget(body);
  window->setStatusBar(parts.status);
  AddActions(parts);
  AddMenus(parts);
  return parts;
}

}  // namespace tarnwick::board
