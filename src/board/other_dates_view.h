// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The line over the list that tells how many more messages there are at other dates, while the list
// begins at a day that nobody has chosen: a load puts it there. It counts when nothing else is to
// be done, and not while it is disabled.
#pragma once

#include <QLabel>
#include <QTimer>

#include "timeline/query.h"

namespace tarnwick::board {

class OtherDatesView : public QLabel {
  Q_OBJECT

 public:
  explicit OtherDatesView(QWidget* parent = nullptr);

  // The list shows these messages now; isOwn: the program chose where they begin.
  void Follow(const timeline::Scope& scope, bool isOwn);
  bool IsCounting() const { return work_.isActive(); }

 signals:
  void AllDatesAskedFor();

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void Work();
  void Tell();

  timeline::Scope scope_;
  bool isOwn_ = false;
  bool begun_ = false;
  timeline::TimelineReader reader_;
  QTimer work_;
};

}  // namespace tarnwick::board
