// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/print_view.h"

#include <QAbstractTextDocumentLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextDocument>
#include <cmath>

#include "core/guard.h"
#include "core/messages.h"
#include "core/steps.h"
#include "platform/error.h"
#include "reading/letter_view.h"
#include "repository/plain_text_view.h"

namespace tarnwick::reading {

namespace {

constexpr double kMargin = 0.7;  // inches
constexpr int kFontPoints = 10;

// A document that gives out a letter's own pictures and opens nothing.
class PaperDocument : public QTextDocument {
 public:
  explicit PaperDocument(const Letter& letter) : pictures_(letter.files) {
    setUndoRedoEnabled(false);
    QString body = letter.formatted
                       ? QString::fromStdString(letter.formatted->html)
                       : "<div style=\"white-space:pre-wrap\">" +
                             repository::ReadableText(letter.text).toHtmlEscaped() + "</div>";
    setHtml(HeadOf(letter, true) + "<hr/>" + body);
  }

 protected:
  QVariant loadResource(int type, const QUrl& name) override {
    if (type != ImageResource || name.scheme() != "cid") return {};
    QImage picture = pictures_.Find(name.path(QUrl::FullyDecoded));
    return picture.isNull() ? QVariant() : QVariant(picture);
  }

 private:
  LetterPictures pictures_;
};

// isFirst: the paper has no page yet that something stands on.
void PaintLetter(const Letter& letter, QPagedPaintDevice& paper, QPainter& painter, bool isFirst) {
  PaperDocument document(letter);
  document.documentLayout()->setPaintDevice(&paper);
  QFont font;
  font.setPointSize(kFontPoints);
  document.setDefaultFont(font);
  double margin = kMargin * paper.logicalDpiX();
  QSizeF page(paper.width() - 2 * margin, paper.height() - 2 * margin);
  document.setDocumentMargin(0);
  document.setPageSize(page);
  for (int i = 0; i < document.pageCount(); ++i) {
    if (i > 0 || !isFirst) paper.newPage();
    painter.save();
    painter.translate(margin, margin - i * page.height());
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = QRectF(0, i * page.height(), page.width(), page.height());
    context.palette.setColor(QPalette::Text, Qt::black);
    painter.setClipRect(context.clip);
    document.documentLayout()->draw(&painter, context);
    painter.restore();
  }
}

}  // namespace

bool PrintLetters(const std::vector<int64_t>& ids, QPagedPaintDevice& paper) {
  return core::Guarded("PrintLetters", false, [&] {
    QPainter painter;
    if (ids.empty() || !painter.begin(&paper)) return false;
    core::Steps steps(static_cast<int64_t>(ids.size()));
    bool isFirst = true;
    for (int64_t id : ids) {
      if (std::optional<Letter> letter = ReadLetter(id)) {
        PaintLetter(*letter, paper, painter, isFirst);
        isFirst = false;
      }
      if (!steps.Next()) return false;
    }
    return !isFirst;
  });
}

bool SaveAsPdf(const std::vector<int64_t>& ids, const QString& path) {
  QPdfWriter pdf(path);
  pdf.setPageSize(QPageSize(QPageSize::A4));
  pdf.setPageMargins({});
  pdf.setResolution(300);
  pdf.setCreator("Tarnwick");
  bool isWritten = PrintLetters(ids, pdf);
  if (!isWritten) {
    core::ShowMessage("The letters were not written to\r\n" + path.toStdString());
  }
  return isWritten;
}

}  // namespace tarnwick::reading
