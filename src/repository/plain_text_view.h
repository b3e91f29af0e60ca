// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Words of the mail are shown as they are, wherever they come up: a subject that looks like markup
// opens no file and fetches no picture.
#pragma once

#include <QString>
#include <string>

class QApplication;

namespace tarnwick::repository {

// From now on no label, box or tool tip of the program guesses whether its text is markup: all of
// it is plain. A label that shows markup of the program's own says so (Qt::RichText).
void KeepTextsPlain(QApplication& application);

// A text of any length fit for a tool tip: in lines that fit a screen, and no more of them than a
// person reads there.
QString TipText(const QString& text);

// A message's text fit for a window: lines without an end are broken, and what is more than anyone
// reads in a window is cut, with a last line that says so and the advice.
QString ReadableText(const std::string& text, const QString& advice = {});

}  // namespace tarnwick::repository
