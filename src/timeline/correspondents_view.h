// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The correspondents with most mail, the first at the top left, as names over bars. A click or
// Enter asks for the mail of one; on the one whose mail is listed already, for that of all. The
// arrow keys go from one to the next.
#pragma once

#include <QString>
#include <QWidget>
#include <vector>

#include "timeline/query.h"

namespace tarnwick::timeline {

class CorrespondentsView : public QWidget {
  Q_OBJECT

 public:
  static constexpr int kRows = 4;
  static constexpr int kColumns = 5;

  explicit CorrespondentsView(QWidget* parent = nullptr);

  void SetPeople(std::vector<Correspondent> people);
  // The text that the list is filtered by.
  void SetFiltered(const std::string& text);
  void SetEmptyText(const QString& text);
  const std::vector<Correspondent>& People() const { return people_; }
  QRect CellRect(int person) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 signals:
  // Empty: everybody.
  void NameAskedFor(const QString& text);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  int PersonAt(const QPoint& point) const;  // -1: nobody
  bool IsFiltered(int person) const;
  QString TextOf(int person) const;
  void Pick(int person);
  void MoveTo(int person);
  void PaintPerson(QPainter& painter, int person, int64_t most);

  std::vector<Correspondent> people_;
  std::string filtered_;
  QString emptyText_;
  int current_ = 0;
  int hovered_ = -1;
};

}  // namespace tarnwick::timeline
