// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The status bar: progress or message | counts | last loaded | folder. While something long runs
// its first panel also holds a progress bar, the rate and the Stop button.
#pragma once

#include <QElapsedTimer>
#include <QStatusBar>
#include <array>
#include <cstdint>

#include "core/user_interface.h"
#include "repository/elided_label_view.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace tarnwick::board {

using repository::ElidedLabel;

class StatusPanelsView : public QStatusBar {
  Q_OBJECT

 public:
  explicit StatusPanelsView(QWidget* parent = nullptr);

  void SetPanel(core::StatusPanel panel, const QString& text);
  QString PanelText(core::StatusPanel panel) const;

  // What a panel's text means, until the next text.
  void ExplainPanel(core::StatusPanel panel, const QString& meaning);

  // Brings the Stop button and takes it away again.
  void SetBusy(bool busy);
  // "1,200 of 20,000 (3,400/s)"; painted at once, but at most about 30 times a second. total 0:
  // unknown. done == total ends the display.
  void ShowProgress(int64_t done, int64_t total);
  // Tells that the stop was heard, until SetBusy(false).
  void ShowStopping();

 signals:
  void StopAskedFor();
  // As often as the display changes; total 0: unknown.
  void Progressed(qint64 done, qint64 total);
  void ProgressEnded();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void EndProgress();
  void ShareRoom();

  std::array<ElidedLabel*, 4> panels_{};
  QProgressBar* bar_;
  QLabel* figures_;
  QPushButton* stop_;
  QElapsedTimer sinceStart_;
  QElapsedTimer sincePaint_;
};

}  // namespace tarnwick::board
