// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/status_panels_view.h"

#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <algorithm>
#include <limits>

namespace tarnwick::board {

namespace {

constexpr qint64 kPaintPause = 33;  // milliseconds between two paintings of the progress
constexpr qint64 kFirstRate = 500;  // milliseconds before a rate means anything

size_t IndexOf(core::StatusPanel panel) {
  return static_cast<size_t>(panel) - 1;
}

}  // namespace

StatusPanelsView::StatusPanelsView(QWidget* parent) : QStatusBar(parent) {
  setObjectName("StatusBar1");
  bar_ = new QProgressBar(this);
  bar_->setTextVisible(false);
  bar_->setFixedWidth(160);
  bar_->setAccessibleName(tr("Progress"));
  figures_ = new QLabel(this);
  stop_ = new QPushButton(tr("Sto&p"), this);
  stop_->setObjectName("Stop");
  stop_->setToolTip(tr("Stops what is running (Esc)"));
  stop_->setAutoDefault(false);
  connect(stop_, &QPushButton::clicked, this, &StatusPanelsView::StopAskedFor);

  const struct {
    Qt::TextElideMode mode;
    const char* name;
    QString title;
  } rows[] = {{Qt::ElideRight, "Message", tr("Message")},
              {Qt::ElideRight, "Counts", tr("Listed, received and sent messages")},
              {Qt::ElideRight, "LastLoaded", tr("Last load")},
              {Qt::ElideMiddle, "Folder", tr("Repository folder")}};
  for (size_t i = 0; i < panels_.size(); ++i) {
    panels_[i] = new ElidedLabel(rows[i].mode, this);
    panels_[i]->setObjectName(rows[i].name);
    panels_[i]->setAccessibleName(rows[i].title);
  }
  addWidget(bar_);
  addWidget(figures_);
  addWidget(stop_);
  addWidget(panels_[0], 1);
  for (size_t i = 1; i < panels_.size(); ++i) addPermanentWidget(panels_[i]);
  // The bar keeps its height when the button comes and goes.
  setMinimumHeight(stop_->sizeHint().height() + 6);
  bar_->hide();
  figures_->hide();
  stop_->hide();
}

void StatusPanelsView::SetPanel(core::StatusPanel panel, const QString& text) {
  size_t index = IndexOf(panel);
  if (index >= panels_.size()) return;
  panels_[index]->SetText(text);
  panels_[index]->setVisible(index == 0 || !text.isEmpty());
  ShareRoom();
}

void StatusPanelsView::ExplainPanel(core::StatusPanel panel, const QString& meaning) {
  size_t index = IndexOf(panel);
  if (index < panels_.size()) panels_[index]->Explain(meaning);
}

// A message has the room before the folder, which is known and is in its tool tip.
void StatusPanelsView::ShareRoom() {
  constexpr int kGaps = 60;  // between the panels, and the size grip
  int room = width() - kGaps;
  for (size_t i = 0; i < panels_.size() - 1; ++i) {
    if (!panels_[i]->isHidden()) room -= panels_[i]->sizeHint().width();
  }
  ElidedLabel* folder = panels_.back();
  folder->setMaximumWidth(std::max(room, folder->minimumSizeHint().width()));
}

void StatusPanelsView::resizeEvent(QResizeEvent* event) {
  QStatusBar::resizeEvent(event);
  ShareRoom();
}

QString StatusPanelsView::PanelText(core::StatusPanel panel) const {
  size_t index = IndexOf(panel);
  return index < panels_.size() ? panels_[index]->WholeText() : QString();
}

void StatusPanelsView::SetBusy(bool busy) {
  stop_->setEnabled(busy);
  stop_->setVisible(busy);
  if (!busy) EndProgress();
}

void StatusPanelsView::ShowProgress(int64_t done, int64_t total) {
  if (total > 0 && done >= total) {
    EndProgress();
    return;
  }
  if (!sinceStart_.isValid()) sinceStart_.start();
  if (sincePaint_.isValid() && sincePaint_.elapsed() < kPaintPause) return;
  sincePaint_.start();

  // The bar counts in int.
  constexpr int64_t kMost = std::numeric_limits<int>::max();
  bar_->setRange(0, static_cast<int>(std::min(std::max<int64_t>(total, 0), kMost)));
  bar_->setValue(static_cast<int>(std::min(done, kMost)));
  QLocale locale;
  QString text =
      total > 0
          ? tr("%1 of %2").arg(locale.toString(qlonglong{done}), locale.toString(qlonglong{total}))
          : locale.toString(qlonglong{done});
  qint64 elapsed = sinceStart_.elapsed();
  if (elapsed > kFirstRate) {
    text += tr(" (%1/s)").arg(locale.toString(qlonglong{done * 1000 / elapsed}));
  }
  figures_->setText(text);
  bar_->show();
  figures_->show();
  emit Progressed(done, total);
  if (stop_->isHidden()) SetBusy(true);
}

void StatusPanelsView::ShowStopping() {
  stop_->setEnabled(false);
  SetPanel(core::StatusPanel::kProgress, tr("Stopping..."));
}

void StatusPanelsView::EndProgress() {
  sinceStart_.invalidate();
  sincePaint_.invalidate();
  bar_->hide();
  figures_->hide();
  emit ProgressEnded();
}

}  // namespace tarnwick::board
