// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What every window owes a person who works by keyboard or hears the screen read. For window tests.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QKeySequence>
#include <QLabel>
#include <QMap>
#include <QSet>
#include <QWidget>

namespace tarnwick::testing {

// Each control that takes the keyboard has a name for the program and one for the person, and is in
// the tab order; no two controls have the same mnemonic.
inline void CheckControls(const QWidget& window) {
  QSet<const QWidget*> inTabOrder;
  const QWidget* next = window.nextInFocusChain();
  for (; next != &window && !inTabOrder.contains(next); next = next->nextInFocusChain()) {
    inTabOrder.insert(next);
  }
  QMap<QString, QString> mnemonics;
  auto checkMnemonic = [&](const QString& text) {
    QString key = QKeySequence::mnemonic(text).toString();
    if (key.isEmpty()) return;
    EXPECT_FALSE(mnemonics.contains(key))
        << text.toStdString() << " and " << mnemonics.value(key).toStdString();
    mnemonics.insert(key, text);
  };
  for (const QWidget* widget : window.findChildren<QWidget*>()) {
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    const auto* label = qobject_cast<const QLabel*>(widget);
    if (button != nullptr) checkMnemonic(button->text());
    if (label != nullptr && label->buddy() != nullptr) checkMnemonic(label->text());
    const QWidget* combo = widget->parentWidget();
    while (combo != nullptr && qobject_cast<const QComboBox*>(combo) == nullptr) {
      combo = combo->parentWidget();
    }
    bool inner =
        combo != nullptr || widget->objectName().startsWith("qt_") ||
        (widget->parentWidget() != nullptr && widget->parentWidget()->focusProxy() == widget);
    if (inner || (widget->focusPolicy() & Qt::TabFocus) == 0) continue;
    std::string name = widget->objectName().toStdString();
    EXPECT_FALSE(name.empty()) << widget->metaObject()->className();
    // A label that takes the keyboard for its links is called by its text.
    bool captioned = label != nullptr || (button != nullptr && !button->text().isEmpty());
    EXPECT_TRUE(captioned || !widget->accessibleName().isEmpty()) << name;
    EXPECT_TRUE(inTabOrder.contains(widget)) << name;
  }
}

}  // namespace tarnwick::testing
