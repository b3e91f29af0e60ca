// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/reading_actions.h"

#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QSplitter>

#include "board/list_query.h"
#include "board/message_commands.h"
#include "reading/letter_view.h"
#include "reading/letter_window.h"
#include "reading/print_view.h"
#include "repository/file_place.h"
#include "search/query.h"

namespace tarnwick::board {

namespace {

// Lower, a pane would leave the list no rows to speak of.
constexpr int kLeastHeight = 600;

QStringList Words(const std::string& typed) {
  QString text = QString::fromStdString(typed).trimmed();
  return text.isEmpty() ? QStringList() : QStringList{text};
}

}  // namespace

ReadingActions::ReadingActions(const BoardParts& parts, BoardWork& work, ListActions& list,
                               QObject* parent)
    : QObject(parent), parts_(parts), work_(work) {
  const BoardActions& actions = *parts.actions;
  const std::pair<QAction*, ReadingPlace> places[] = {{actions.paneOff, ReadingPlace::kOff},
                                                      {actions.paneBelow, ReadingPlace::kBelow},
                                                      {actions.paneBeside, ReadingPlace::kBeside}};
  for (const auto& [action, place] : places) {
    connect(action, &QAction::triggered, this, [this, place = place] {
      SetPlace(place);
      SavePane();
    });
  }
  connect(actions.findInLetter, &QAction::triggered, this, [this] {
    if (place_ == ReadingPlace::kOff) SetPlace(ReadingPlace::kBelow);
    parts_.letter->BeginFind();
  });
  connect(actions.openWindow, &QAction::triggered, this,
          [this] { OpenWindow(parts_.grid->Current().id); });
  connect(actions.headers, &QAction::triggered, this, [this] { ShowSource(false); });
  connect(actions.source, &QAction::triggered, this, [this] { ShowSource(true); });
  connect(actions.print, &QAction::triggered, this, &ReadingActions::Print);
  connect(actions.savePdf, &QAction::triggered, this, &ReadingActions::SavePdf);
  follow_.setSingleShot(true);
  connect(&follow_, &QTimer::timeout, this, &ReadingActions::Follow);
  connect(parts.grid, &EmailGridView::CurrentChanged, &follow_, qOverload<>(&QTimer::start));
  connect(&list, &ListActions::LongSearchEnded, &follow_, qOverload<>(&QTimer::start));
  connect(&work, &BoardWork::Ended, &follow_, qOverload<>(&QTimer::start));
}

void ReadingActions::RestorePane() {
  bool hasRoom = parts_.window->height() >= kLeastHeight;
  ReadingPane pane = ReadReadingPane(hasRoom ? ReadingPlace::kBelow : ReadingPlace::kOff);
  SetPlace(pane.place);
  if (pane.place != ReadingPlace::kOff && pane.list > 0 && pane.letter > 0) {
    parts_.splitter->setSizes({pane.list, pane.letter});
  }
}

void ReadingActions::SavePane() const {
  QList<int> sizes = parts_.splitter->sizes();
  SaveReadingPane({place_, sizes.value(0), sizes.value(1)});
}

void ReadingActions::SetPlace(ReadingPlace place) {
  const BoardActions& actions = *parts_.actions;
  bool isChanged = place != place_;
  place_ = place;
  QAction* action = place == ReadingPlace::kBelow    ? actions.paneBelow
                    : place == ReadingPlace::kBeside ? actions.paneBeside
                                                     : actions.paneOff;
  action->setChecked(true);
  bool isBeside = place == ReadingPlace::kBeside;
  parts_.splitter->setOrientation(isBeside ? Qt::Horizontal : Qt::Vertical);
  parts_.letter->setVisible(place != ReadingPlace::kOff);
  if (!isChanged) return;
  int extent = isBeside ? parts_.splitter->width() : parts_.splitter->height();
  parts_.splitter->setSizes({extent * 45 / 100, extent * 55 / 100});
  follow_.start();
}

// Nothing may read from the repository while the engine is at work; the end of the work comes here
// again.
void ReadingActions::Follow() {
  if (!parts_.letter->isVisible() || work_.IsRunning()) return;
  const ListFilter& filter = Board().Filter;
  QStringList inText = Words(filter.MailText);
  QStringList inSubject = Words(filter.Subject);
  for (const search::Term& term : search::ParseQuery(Board().Found.text).terms) {
    if (term.excluded) continue;
    if (term.field == search::Field::kAny) inText += Words(term.text);
    if (term.field == search::Field::kAny || term.field == search::Field::kSubject) {
      inSubject += Words(term.text);
    }
  }
  parts_.letter->SetWords(inText, inSubject);
  int64_t id = parts_.grid->Current().id;
  if (id != parts_.letter->Id() || id == 0) parts_.letter->Show(id);
}

void ReadingActions::OpenWindow(int64_t id) {
  if (id == 0) {
    ShowNothingSelected();
    return;
  }
  (new reading::LetterWindow(id, parts_.window))->show();
}

void ReadingActions::ShowSource(bool whole) {
  int64_t id = parts_.grid->Current().id;
  if (id == 0) {
    ShowNothingSelected();
    return;
  }
  std::string text = whole ? reading::SourceOf(id) : reading::HeadersOf(id);
  QString title = whole ? tr("Source of the message") : tr("Headers of the message");
  (new reading::SourceWindow(title, text, parts_.window))->show();
}

void ReadingActions::Print() {
  std::vector<int64_t> ids = parts_.grid->SelectedIds();
  if (ids.empty()) {
    ShowNothingSelected();
    return;
  }
  QPrinter printer(QPrinter::HighResolution);
  printer.setFullPage(true);
  if (QPrintDialog(&printer, parts_.window).exec() != QDialog::Accepted) return;
  work_.RunStoppable([&] { reading::PrintLetters(ids, printer); });
}

void ReadingActions::SavePdf() {
  std::vector<int64_t> ids = parts_.grid->SelectedIds();
  if (ids.empty()) {
    ShowNothingSelected();
    return;
  }
  QString path = QFileDialog::getSaveFileName(
      parts_.window, tr("Save as PDF"),
      QString::fromStdString(repository::LastFolder()) + "letters.pdf", "PDF (*.pdf)");
  if (path.isEmpty()) return;
  repository::RememberFolderOf(path.toStdString());
  work_.RunStoppable([&] {
    if (reading::SaveAsPdf(ids, path)) {
      parts_.status->SetPanel(core::StatusPanel::kProgress, tr("The PDF file is written."));
    }
  });
}

}  // namespace tarnwick::board
