// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/board_actions.h"

#include <QActionGroup>
#include <QIcon>
#include <QWidget>

namespace tarnwick::board {

BoardActions::BoardActions(QWidget* parent) : QObject(parent) {
  const struct {
    QAction*& action;
    const char* name;
    QString text;
    QKeySequence shortcut;
    const char* icon;
    QString tip;
  } rows[] = {
      {openRepository, "mnOpenRepository", tr("&Open Repository"), QKeySequence::Open,
       "document-open", tr("Lists the repository of another folder")},
      {recentRepositories,
       "mnRecentRepositories",
       tr("Rece&nt Repositories"),
       {},
       nullptr,
       tr("The repositories that were open before")},
      {createRepository, "mnCreateRepository", tr("&Create Repository"), QKeySequence::New,
       "document-new", tr("Makes an empty repository in a folder")},
      {backup,
       "mnuFileSaveAs",
       tr("&Backup"),
       {},
       "document-save-as",
       tr("Copies the whole repository to a file")},
      {restore,
       "mnuFileOpen",
       tr("&Restore"),
       {},
       "document-revert",
       tr("Replaces the repository by a backup")},
      {exportListed,
       "mnuBackupSelected",
       tr("&Export"),
       {},
       "document-export",
       tr("Copies the listed messages to a file")},
      {merge,
       "mnuMerge",
       tr("&Import"),
       {},
       nullptr,
       tr("Takes the messages of an export file in")},
      {check,
       "mnCheck",
       tr("Chec&k"),
       {},
       nullptr,
       tr("Looks whether every message of the repository is whole")},
      {protect,
       "mnProtect",
       tr("&Protect..."),
       {},
       "document-encrypt",
       tr("Gives the repository a password of your own, or changes it")},
      {lock, "mnLock", tr("Lock no&w"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L),
       "system-lock-screen", tr("Closes a protected repository until its password is given again")},
      {loadTextFile,
       "mnLoadTextFile",
       tr("&Load Text File"),
       {},
       "document-import",
       tr("Takes a file with one message in")},
      {findMail,
       "mnFindMail",
       tr("&Find mail..."),
       {},
       "edit-find",
       tr("Looks for mail on a disk or in a folder and loads what is ticked")},
      {saveMessages, "mnSaveMessages", tr("Sa&ve messages as..."), QKeySequence::Save,
       "document-save", tr("Saves messages as ordinary files that other programs read")},
      {exit,
       "mnuFileExit",
       tr("E&xit"),
       QKeySequence(Qt::CTRL | Qt::Key_Q),
       "application-exit",
       {}},
      {undo, "mnEditUndo", tr("&Undo Delete"), QKeySequence::Undo, "edit-undo",
       tr("Brings back the messages that were deleted last")},
      {timeline, "mnViewTimeline", tr("&Timeline"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_T),
       nullptr, tr("Shows over the list how its mail spreads over the years")},
      {contacts,
       "mnuContacts",
       tr("&Contacts"),
       {},
       "x-office-address-book",
       tr("Opens the people in the messages and their addresses")},
      {options, "mnuOptions", tr("&Options"), QKeySequence::Preferences, "configure",
       tr("Chooses the mailers that are loaded, and the old Windows profile")},
      {findLost,
       "mnFindLost",
       tr("Look for Lost &Messages"),
       {},
       nullptr,
       tr("Loads, and looks for what the old files still hold of deleted and damaged messages")},
      {lastLoad,
       "mnLastLoad",
       tr("Last &Load Account"),
       {},
       nullptr,
       tr("Opens the list of what the last loads left out, with the reasons")},
      {markAllNotHot,
       "mnMarkAllNotHot",
       tr("Mark all &not hot"),
       {},
       nullptr,
       tr("Takes the hot mark from every listed message")},
      {moveHtml,
       "mnMoveHtmlToBody",
       tr("Move &HTML to body"),
       {},
       nullptr,
       tr("Puts the text of each message's HTML into its body")},
      {helpTopics, "mnReadMe", tr("&Help Topics"), QKeySequence::HelpContents, "help-contents",
       tr("Opens the handbook")},
      {about, "mnuHelpAbout", tr("&About"), {}, "help-about", {}},
      {showAll, "actionShowAll", tr("Show &All"), QKeySequence(Qt::Key_F5), nullptr,
       tr("Empties the filter and lists every message")},
      {showEmail,
       "actionShowEmail",
       tr("&Show Email"),
       {},
       "mail-read",
       tr("Opens the selected message as it was received, in the desktop's mail program")},
      {showRelated, "actionShowRelated", tr("Sho&w Related"), QKeySequence(Qt::CTRL | Qt::Key_R),
       nullptr, tr("Lists the messages with the selected one's subject")},
      {toggleHot, "actionMarkActive", tr("Hot/&Not hot"), QKeySequence(Qt::CTRL | Qt::Key_H),
       nullptr, tr("Marks the selected messages as hot, or takes the mark away")},
      {deleteSelected, "actionDeleteCurent", tr("&Delete Selected"), QKeySequence::Delete,
       "edit-delete", tr("Deletes the selected messages from the repository")},
      {loadFromMailer, "actionLoadMailler", tr("&Load from Mailer"),
       QKeySequence(Qt::CTRL | Qt::Key_L), "mail-receive",
       tr("Takes new mail from the mail program's stores into the repository")},
      {quit, "actionQuite", tr("&Quit"), {}, nullptr, tr("Closes the program")},
      {copy, "actionCopy", tr("&Copy"), QKeySequence::Copy, "edit-copy",
       tr("Copies the selected rows as text")},
      {attachments,
       "actionAttachments",
       tr("A&ttachments"),
       {},
       "mail-attachment",
       tr("The files that came with the selected message")},
      {paneBelow,
       "mnViewPaneBelow",
       tr("Reading pane &below"),
       {},
       nullptr,
       tr("Shows the selected message under the list")},
      {paneBeside,
       "mnViewPaneBeside",
       tr("Reading pane besi&de"),
       {},
       nullptr,
       tr("Shows the selected message at the right of the list")},
      {paneOff, "mnViewPaneOff", tr("Reading pane &off"), {}, nullptr, tr("Shows the list alone")},
      {openWindow, "mnOpenWindow", tr("Open in own &window"),
       QKeySequence(Qt::CTRL | Qt::Key_Return), "window-new",
       tr("Shows the selected message in a window of its own")},
      {findInLetter, "mnFindInLetter", tr("&Find in the letter"), QKeySequence::Find, "edit-find",
       tr("Finds words in the message that is shown")},
      {print, "mnPrint", tr("&Print..."), QKeySequence::Print, "document-print",
       tr("Prints the selected messages")},
      {savePdf,
       "mnSavePdf",
       tr("Save as P&DF..."),
       {},
       nullptr,
       tr("Writes the selected messages to a PDF file")},
      {headers,
       "mnHeaders",
       tr("H&eaders"),
       {},
       nullptr,
       tr("Shows the lines that came before the message's text")},
      {source, "mnSource", tr("So&urce"), QKeySequence(Qt::CTRL | Qt::Key_U), nullptr,
       tr("Shows the message as it was received")},
      {stop, "actionStop", tr("Stop"), QKeySequence(Qt::Key_Escape), nullptr, {}},
  };
  for (const auto& row : rows) {
    row.action = new QAction(row.text, parent);
    row.action->setObjectName(row.name);
    row.action->setShortcut(row.shortcut);
    if (!row.tip.isEmpty()) row.action->setToolTip(row.tip);
    if (row.icon != nullptr) row.action->setIcon(QIcon::fromTheme(row.icon));
  }
  timeline->setCheckable(true);
  timeline->setChecked(true);
  undo->setEnabled(false);
  auto* panes = new QActionGroup(this);
  for (QAction* pane : {paneBelow, paneBeside, paneOff}) {
    pane->setCheckable(true);
    panes->addAction(pane);
  }
  paneOff->setChecked(true);
  // These keys belong to the text boxes unless the list has the focus.
  deleteSelected->setShortcutContext(Qt::WidgetShortcut);
  copy->setShortcutContext(Qt::WidgetShortcut);
  showEmail->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
  showEmail->setShortcutContext(Qt::WidgetShortcut);
  SetBusy(false);
}

void BoardActions::SetBusy(bool busy) {
  for (QAction* action : {recentRepositories,
                          openRepository,
                          createRepository,
                          backup,
                          restore,
                          exportListed,
                          merge,
                          loadTextFile,
                          contacts,
                          options,
                          markAllNotHot,
                          moveHtml,
                          helpTopics,
                          about,
                          showAll,
                          showEmail,
                          showRelated,
                          toggleHot,
                          deleteSelected,
                          loadFromMailer,
                          copy,
                          saveMessages,
                          attachments,
                          check,
                          findLost,
                          protect,
                          lock,
                          lastLoad,
                          openWindow,
                          findInLetter,
                          print,
                          savePdf,
                          headers,
                          source}) {
    action->setEnabled(!busy);
  }
  undo->setEnabled(!busy && canUndo_);
  stop->setEnabled(busy);
}

void BoardActions::SetCanUndo(bool can) {
  canUndo_ = can;
  undo->setEnabled(can && !stop->isEnabled());
}

QPushButton* BoardActions::MakeButton(QAction* action, const char* objectName, QWidget* parent) {
  auto* button = new QPushButton(action->text(), parent);
  button->setObjectName(objectName);
  button->setAutoDefault(false);
  button->setToolTip(action->toolTip());
  connect(button, &QPushButton::clicked, action, &QAction::trigger);
  connect(action, &QAction::changed, button,
          [button, action] { button->setEnabled(action->isEnabled()); });
  return button;
}

}  // namespace tarnwick::board
