// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/timeline_view.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "repository/date_range.h"

namespace tarnwick::timeline {

namespace {

// Counts that take longer are shown as they grow.
constexpr qint64 kPatienceMilliseconds = 120;

class Legend : public QWidget {
 public:
  explicit Legend(QWidget* parent) : QWidget(parent) {
    setObjectName("TimelineLegend");
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  }
  QSize sizeHint() const override {
    QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(In() + Out()) + 2 * (Mark() + 4) + 12, metrics.height()};
  }
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    QFontMetrics metrics = fontMetrics();
    int left = 0;
    auto entry = [&](auto paintMark, const QString& text) {
      paintMark(painter, QRect(left, (height() - Mark()) / 2, Mark(), Mark()), palette());
      left += Mark() + 4;
      painter.setPen(palette().color(QPalette::WindowText));
      painter.drawText(QRect(left, 0, width() - left, height()), Qt::AlignLeft | Qt::AlignVCenter,
                       text);
      left += metrics.horizontalAdvance(text) + 12;
    };
    entry(TimelinePlotView::PaintIn, In());
    entry(TimelinePlotView::PaintOut, Out());
  }

 private:
  static QString In() { return TimelineView::tr("In"); }
  static QString Out() { return TimelineView::tr("Out"); }
  int Mark() const { return fontMetrics().ascent(); }
};

}  // namespace

TimelineView::TimelineView(QWidget* parent) : QWidget(parent) {
  setObjectName("Timeline");
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(1);
  column->addWidget(BuildHead());
  pages_ = new QStackedWidget(this);
  plot_ = new TimelinePlotView(pages_);
  correspondents_ = new CorrespondentsView(pages_);
  pages_->addWidget(plot_);
  pages_->addWidget(correspondents_);
  column->addWidget(pages_);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

  work_.setInterval(0);
  connect(&work_, &QTimer::timeout, this, &TimelineView::Work);
  connect(plot_, &TimelinePlotView::DaysChosen, this,
          [this](int first, int last) { emit DatesAskedFor(DayDate(first), DayDate(last)); });
  connect(plot_, &TimelinePlotView::Told, this, [this](const QString& text) {
    told_ = text;
    ShowText();
  });
  connect(correspondents_, &CorrespondentsView::NameAskedFor, this, &TimelineView::NameAskedFor);
  connect(showCorrespondents_, &QToolButton::toggled, this, &TimelineView::ShowCorrespondents);
  connect(allDates_, &QToolButton::clicked, this, [this] {
    repository::DateRange whole = repository::WholeDateRange();
    plot_->Choose({DayNumber(whole.from), DayNumber(whole.to)});
    plot_->setFocus();
  });
}

QWidget* TimelineView::BuildHead() {
  auto* head = new QWidget(this);
  auto* row = new QHBoxLayout(head);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(12);
  text_ = new repository::ElidedLabel(Qt::ElideRight, head);
  text_->setObjectName("TimelineText");
  auto button = [&](const char* name, const QString& text, const QString& tip) {
    auto* made = new QToolButton(head);
    made->setObjectName(name);
    made->setText(text);
    made->setToolTip(tip);
    made->setMaximumHeight(fontMetrics().height() + 4);
    return made;
  };
  allDates_ = button("AllDates", tr("All dates"), tr("Lists the mail of all dates again"));
  showCorrespondents_ = button("ShowCorrespondents", tr("Correspondents"),
                               tr("Shows who has most of the listed mail (Ctrl+Shift+P)"));
  showCorrespondents_->setCheckable(true);
  showCorrespondents_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
  // The row is as high with it as without.
  QSizePolicy keepsRoom = allDates_->sizePolicy();
  keepsRoom.setRetainSizeWhenHidden(true);
  allDates_->setSizePolicy(keepsRoom);
  allDates_->hide();
  legend_ = new Legend(head);
  row->addWidget(text_, 1);
  row->addWidget(allDates_);
  row->addWidget(legend_);
  row->addWidget(showCorrespondents_);
  return head;
}

void TimelineView::Follow(const Scope& scope, const std::string& correspondent) {
  scope_ = scope;
  begun_ = false;
  plot_->SetChosen({DayNumber(scope.from), DayNumber(scope.to)});
  correspondents_->SetFiltered(correspondent);
  FollowSearch();
  ShowText();
  if (isEnabled() && isVisible()) work_.start();
}

void TimelineView::FollowSearch() {
  if (scope_->search.empty()) return found_.reset();
  auto isWithin = [this](const Scope& wider) {
    return wider.search == scope_->search && wider.conditions == scope_->conditions &&
           wider.ofCorrespondent == scope_->ofCorrespondent && wider.from <= scope_->from &&
           scope_->to <= wider.to;
  };
  bool isKnown = found_ && found_->isWhole && isWithin(found_->scope);
  if (!isKnown) found_ = Found{*scope_, {}, false, true, {}};
  found_->countsDays = !isKnown;
  found_->messages.clear();
}

void TimelineView::AddFound(const std::vector<FoundMessage>& messages, bool isAll) {
  if (!found_) return;
  for (const FoundMessage& message : messages) {
    if (found_->countsDays) {
      found_->counts.Add(message.day, message.isIn ? MessageCount{1, 0} : MessageCount{0, 1});
    }
    ++found_->messages[message.contact];
  }
  found_->isWhole = found_->isWhole || isAll;
  ShowCounts();
  if (pages_->currentWidget() == correspondents_) ShowPeople();
}

void TimelineView::ShowPeople() {
  constexpr size_t kMost = size_t{CorrespondentsView::kRows} * CorrespondentsView::kColumns;
  correspondents_->SetPeople(found_ ? TopCorrespondents(found_->messages, kMost)
                                    : correspondentReader_.Top(kMost));
}

void TimelineView::Forget() {
  reader_.Forget();
  correspondentReader_.Stop();
  correspondentsOf_.clear();
  if (found_) found_->isWhole = false;
  begun_ = false;
  if (scope_ && isEnabled() && isVisible()) work_.start();
}

void TimelineView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() != QEvent::EnabledChange) return;
  work_.stop();
  Forget();
}

void TimelineView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (scope_) work_.start();
}

void TimelineView::Begin() {
  begun_ = true;
  since_.start();
  if (!found_) reader_.Start(*scope_);
  if (IsToldAll()) ShowCounts();
  if (pages_->currentWidget() == correspondents_) BeginCorrespondents();
}

void TimelineView::BeginCorrespondents() {
  if (found_) {
    correspondentsOf_.clear();
    return ShowPeople();
  }
  Scope ofAll = *scope_;
  ofAll.ofCorrespondent.clear();
  std::string query = CorrespondentCountQueryText(ofAll);
  if (query == correspondentsOf_) return;
  correspondentsOf_ = query;
  correspondentReader_.Start(*scope_);
  if (!correspondentReader_.IsRunning()) correspondents_->SetPeople({});
}

void TimelineView::Work() {
  // What was found is told, not counted here.
  if (!isEnabled() || !isVisible() || (begun_ && found_)) {
    work_.stop();
    return;
  }
  if (!begun_) {
    Begin();
  } else if (reader_.IsRunning()) {
    bool more = reader_.Step();
    if (!more || since_.elapsed() > kPatienceMilliseconds) {
      ShowCounts();
      since_.restart();
    }
  } else if (correspondentReader_.IsRunning()) {
    if (!correspondentReader_.Step()) ShowPeople();
  } else {
    work_.stop();
  }
}

void TimelineView::ShowCounts() {
  plot_->SetCounts(Counts());
  QString none = IsToldAll() ? tr("No messages to show.") : tr("Counting...");
  plot_->SetEmptyText(none);
  correspondents_->SetEmptyText(none);
  ShowText();
}

void TimelineView::ShowText() {
  const TimelineState& state = plot_->State();
  bool isAll = state.ChoosesAll();
  allDates_->setVisible(!isAll);
  if (!told_.isEmpty()) {
    text_->SetText(told_);
  } else if (state.Counts().IsEmpty()) {
    text_->SetText({});
  } else if (isAll) {
    text_->SetText((found_ ? tr("Found: %1") : tr("All dates: %1"))
                       .arg(MessagesText(state.Counts().Total().Total())));
  } else {
    DaySpan chosen = state.Chosen();
    text_->SetText(SpanText(chosen, state.Counts().Within(chosen)));
  }
}

void TimelineView::ShowCorrespondents(bool on) {
  pages_->setCurrentWidget(on ? static_cast<QWidget*>(correspondents_) : plot_);
  legend_->setVisible(!on);
  told_.clear();
  ShowText();
  if (on && scope_ && isEnabled() && begun_) {
    BeginCorrespondents();
    work_.start();
  }
}

}  // namespace tarnwick::timeline
