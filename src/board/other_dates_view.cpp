// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/other_dates_view.h"

#include <QEvent>

#include "platform/locale.h"

namespace tarnwick::board {

OtherDatesView::OtherDatesView(QWidget* parent) : QLabel(parent) {
  setObjectName("OtherDates");
  setTextFormat(Qt::RichText);
  setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  setWordWrap(true);
  hide();
  work_.setInterval(0);
  connect(&work_, &QTimer::timeout, this, &OtherDatesView::Work);
  connect(this, &QLabel::linkActivated, this, &OtherDatesView::AllDatesAskedFor);
}

void OtherDatesView::Follow(const timeline::Scope& scope, bool isOwn) {
  scope_ = scope;
  isOwn_ = isOwn;
  begun_ = false;
  work_.stop();
  if (!isOwn) {
    hide();
  } else if (isEnabled()) {
    work_.start();
  }
}

// Messages may have come or gone meanwhile.
void OtherDatesView::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() != QEvent::EnabledChange) return;
  work_.stop();
  reader_.Forget();
  begun_ = false;
  if (isEnabled() && isOwn_) work_.start();
}

void OtherDatesView::Work() {
  if (!begun_) {
    begun_ = true;
    reader_.Forget();
    reader_.Start(scope_);
  } else if (reader_.IsRunning()) {
    reader_.Step();
  } else {
    work_.stop();
    Tell();
  }
}

void OtherDatesView::Tell() {
  const timeline::DayCounts& counts = reader_.Counts();
  timeline::DaySpan listed{timeline::DayNumber(scope_.from), timeline::DayNumber(scope_.to)};
  qlonglong others = counts.Total().Total() - counts.Within(listed).Total();
  if (others > 0) {
    QString day = QString::fromStdString(platform::FormatDate(scope_.from, "ddddd"));
    setText(tr("The list begins on %1, the day of the latest message loaded. %L2 more at other "
               "dates. <a href=\"all\">Show them</a>")
                .arg(day.toHtmlEscaped())
                .arg(others));
  }
  setVisible(others > 0);
}

}  // namespace tarnwick::board
