// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A letter in a window of its own, and its headers or source in one.
#pragma once

#include <QDialog>
#include <cstdint>
#include <string>

namespace tarnwick::reading {

class LetterWindow : public QDialog {
  Q_OBJECT

 public:
  // Deletes itself when it is closed.
  LetterWindow(int64_t id, QWidget* parent);
};

class SourceWindow : public QDialog {
  Q_OBJECT

 public:
  SourceWindow(const QString& title, const std::string& text, QWidget* parent);
};

}  // namespace tarnwick::reading
