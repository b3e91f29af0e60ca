// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/about_dialog.h"

#include <cassert>

#include <QApplication>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "repository/repository.h"

namespace tarnwick::options {

namespace {

struct Used {
  const char* name;
  const char* purpose;
  const char* licence;
};

// What the program is built on.
constexpr Used kUsed[] = {
    {"Qt 6", QT_TR_NOOP("windows"), "GNU LGPL 3"},
    {"SQLite", QT_TR_NOOP("database"), QT_TR_NOOP("public domain")},
    {"SQLite3 Multiple Ciphers", QT_TR_NOOP("encryption of the database"), "MIT"},
    {"ICU", QT_TR_NOOP("character sets, dates and sorting"), "Unicode License"},
    {"libxml2", QT_TR_NOOP("reading HTML"), "MIT"},
    {"Zstandard", QT_TR_NOOP("compression"), "BSD, 3 clauses"},
    {"libseccomp", QT_TR_NOOP("shutting in the reader of Outlook stores"), "GNU LGPL 2.1"},
    {"libsodium", QT_TR_NOOP("passwords"), "ISC"},
    {"zxcvbn", QT_TR_NOOP("the strength of passwords"), "MIT"},
    {"libpff", QT_TR_NOOP("reading Outlook stores"), "GNU LGPL 3"},
};

}  // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
  assert(repository::RepositoryDb().IsOpen());
  setObjectName("frmAbout");
  setWindowTitle(tr("About Tarnwick"));
  auto* column = new QVBoxLayout(this);
  column->addWidget(MakeHead());
  column->addWidget(MakeLicences(), 1);
  auto* ok = new QPushButton(tr("OK"), this);
  ok->setObjectName("cmdOK");
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  column->addWidget(ok, 0, Qt::AlignRight);
  resize(fontMetrics().averageCharWidth() * 92, fontMetrics().height() * 33);
  ok->setFocus();
}

QWidget* AboutDialog::MakeHead() {
  auto* head = new QWidget(this);
  auto* grid = new QGridLayout(head);
  grid->setContentsMargins(0, 0, 0, 0);
  auto* icon = new QLabel(head);
  const int edge = 64;
  icon->setPixmap(QApplication::windowIcon().pixmap(QSize(edge, edge), devicePixelRatioF()));
  icon->setAlignment(Qt::AlignTop);
  auto* title =
      new QLabel(tr("Tarnwick %1").arg(QApplication::applicationVersion()).trimmed(), head);
  title->setObjectName("Version");
  QFont bold = title->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.4);
  title->setFont(bold);
  auto* what = new QLabel(
      tr("Keeps the mail of old Outlook Express and Outlook stores, where you can find and read "
         "it without them."),
      head);
  what->setWordWrap(true);
  // A box of its own kind: the path can be copied and is scrolled when it is long.
  auto* folder =
      new QLineEdit(QString::fromStdString(repository::Repository().RepositoryFolder), head);
  folder->setObjectName("RepositoryFolder");
  folder->setAccessibleName(tr("Repository folder"));
  folder->setReadOnly(true);
  folder->setCursorPosition(0);
  auto* folderLabel = new QLabel(tr("&Repository folder:"), head);
  folderLabel->setBuddy(folder);
  int row = 0;
  for (QWidget* widget : {static_cast<QWidget*>(title), static_cast<QWidget*>(what),
                          static_cast<QWidget*>(folderLabel), static_cast<QWidget*>(folder)}) {
    grid->addWidget(widget, row++, 1);
  }
  grid->addWidget(icon, 0, 0, row, 1);
  grid->setColumnStretch(1, 1);
  if (icon->pixmap(Qt::ReturnByValue).isNull()) icon->hide();
  return head;
}

QWidget* AboutDialog::MakeLicences() {
  QString rows;
  for (const Used& used : kUsed) {
    rows += QString("<tr><td>%1</td><td>%2</td><td>%3</td></tr>")
                .arg(QString(used.name), tr(used.purpose), tr(used.licence));
  }
  auto* text = new QTextBrowser(this);
  text->setObjectName("Licences");
  text->setAccessibleName(tr("Licences"));
  text->setTabChangesFocus(true);
  text->setHtml(tr("<p>Copyright 2026 The Tarnwick maintainers. Tarnwick is free software under "
                   "the MIT License: use it, change it and pass it on; it comes without any "
                   "warranty.</p><p>It uses the work of others:</p>") +
                "<table cellpadding=\"3\">" + rows + "</table>" +
                tr("<p>This is Qt %1.</p>").arg(QString::fromLatin1(qVersion())));
  return text;
}

}  // namespace tarnwick::options
