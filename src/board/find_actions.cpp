// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/find_actions.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <algorithm>

#include "board/find_mail_dialog.h"
#include "board/load_found.h"

namespace tarnwick::board {

namespace {

QStringList LocalFiles(const QMimeData* data) {
  QStringList paths;
  if (data == nullptr) return paths;
  for (const QUrl& url : data->urls()) {
    if (url.isLocalFile()) paths += url.toLocalFile();
  }
  return paths;
}

// Folders, and files that hold more than one folder or belong to others.
bool IsPlace(const QString& path) {
  QFileInfo file(path);
  QString extension = file.suffix().toLower();
  return file.isDir() || extension == "dbx" || extension == "pst" || extension == "ost";
}

}  // namespace

FindActions::FindActions(const BoardParts& parts, BoardWork& work, LoadActions& load,
                         QObject* parent)
    : QObject(parent), parts_(parts), work_(work), load_(load) {
  connect(parts.actions->findMail, &QAction::triggered, this, [this] { Find({}); });
  parts.window->setAcceptDrops(true);
  parts.window->installEventFilter(this);
}

bool FindActions::eventFilter(QObject* window, QEvent* event) {
  if (event->type() == QEvent::DragEnter || event->type() == QEvent::Drop) {
    auto* drop = static_cast<QDropEvent*>(event);
    QStringList paths = LocalFiles(drop->mimeData());
    if (paths.isEmpty() || work_.IsRunning()) return false;
    drop->acceptProposedAction();
    // Whoever they come from waits until the drop has ended.
    if (event->type() == QEvent::Drop) QTimer::singleShot(0, this, [this, paths] { Take(paths); });
    return true;
  }
  return QObject::eventFilter(window, event);
}

void FindActions::Take(const QStringList& paths) {
  if (std::any_of(paths.begin(), paths.end(), IsPlace)) {
    Find(paths);
    return;
  }
  load_.Load([&] {
    std::vector<std::string> files;
    for (const QString& path : paths) files.push_back(path.toStdString());
    TakeResult taken = TakeTextFiles(files);
    LoadResult result;
    result.ran = taken.stored > 0;
    return result;
  });
}

void FindActions::Find(const QStringList& places) {
  if (work_.IsRunning()) return;
  FindMailDialog dialog(places, parts_.window);
  if (dialog.exec() != QDialog::Accepted) return;
  load_.Load([&] { return LoadFound(dialog.Ticked(), SenderPolicy::kAsk, dialog.WantsLost()); });
}

}  // namespace tarnwick::board
