// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The search box. What is typed is searched for after a pause, and at once with Enter, which also
// goes on to the list, as the down key does. Escape empties the box.
#pragma once

#include <QTimer>
#include <QWidget>

class QLineEdit;

namespace tarnwick::search {

class SearchBoxView : public QWidget {
  Q_OBJECT

 public:
  explicit SearchBoxView(QWidget* parent = nullptr);

  QString Text() const;
  // As if it had been typed: searched for at once.
  void Search(const QString& text);
  // Nothing is searched for by it.
  void ShowText(const QString& text);
  // The keyboard goes to the box, with all of its text selected.
  void Enter();

 signals:
  void SearchAskedFor(const QString& text);
  void Left();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Apply();

  QLineEdit* box_;
  QTimer pause_;
  QString applied_;
};

}  // namespace tarnwick::search
