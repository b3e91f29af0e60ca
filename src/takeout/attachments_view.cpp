// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/attachments_view.h"

#include <QBuffer>
#include <QDialog>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QMimeData>
#include <QMimeDatabase>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStandardPaths>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <numeric>

#include "core/documents.h"
#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "repository/plain_text_view.h"
#include "takeout/file_kinds.h"

namespace tarnwick::takeout {

namespace {

constexpr int kMostRows = 3;
constexpr int kWidestPicture = 3000;
constexpr int64_t kMostPixels = int64_t{50} * 1000 * 1000;

QString NameOf(const Attachment& attachment) {
  return QString::fromStdString(attachment.name);
}

QString Caption(const Attachment& attachment) {
  QString caption = AttachmentsView::tr("%1 (%2)").arg(
      NameOf(attachment), QString::fromStdString(SizeText(attachment.size)));
  return attachment.isProgram ? AttachmentsView::tr("%1, a program").arg(caption) : caption;
}

// Of its kind where the desktop's theme has one.
QIcon IconOf(const Attachment& attachment, const QWidget& widget) {
  if (attachment.isProgram) return widget.style()->standardIcon(QStyle::SP_MessageBoxWarning);
  static const QMimeDatabase kinds;
  QString icon =
      kinds.mimeTypeForFile(NameOf(attachment), QMimeDatabase::MatchExtension).iconName();
  return QIcon::fromTheme(icon, widget.style()->standardIcon(QStyle::SP_FileIcon));
}

QString& LastFolder() {
  static QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  if (!QDir(folder).exists()) folder = QDir::homePath();
  return folder;
}

void ShowPicture(const QString& name, const QImage& picture, QWidget* parent) {
  auto* window = new QDialog(parent);
  window->setObjectName("Picture");
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowTitle(name);
  auto* scroll = new QScrollArea(window);
  scroll->setAccessibleName(name);
  auto* label = new QLabel(scroll);
  label->setPixmap(QPixmap::fromImage(picture));
  scroll->setWidget(label);
  auto* column = new QVBoxLayout(window);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(scroll);
  QSize room = QGuiApplication::primaryScreen()->availableGeometry().size() * 8 / 10;
  window->resize((picture.size() + QSize(24, 24)).boundedTo(room));
  window->show();
}

void ShowSaved(const QString& text) {
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), text.toStdString());
}

}  // namespace

void AskAndSaveAttachment(std::shared_ptr<const MessageAttachments> list, size_t which,
                          QWidget* parent) {
  const auto attachments = std::move(list);
  QString proposed = QDir(LastFolder()).filePath(NameOf(attachments->List()[which]));
  QString path =
      QFileDialog::getSaveFileName(parent, AttachmentsView::tr("Save attachment"), proposed);
  if (path.isEmpty()) return;
  LastFolder() = QFileInfo(path).path();
  if (SaveAttachmentAs(*attachments, which, QDir::toNativeSeparators(path).toStdString())) {
    ShowSaved(AttachmentsView::tr("%1 is saved.").arg(QFileInfo(path).fileName()));
  }
}

void AskAndSaveAllAttachments(std::shared_ptr<const MessageAttachments> list) {
  const auto attachments = std::move(list);
  if (core::State().Ui == nullptr) return;
  auto folder = core::State().Ui->ChooseFolder("Select folder for the attachments");
  if (!folder || folder->empty()) return;
  std::vector<size_t> all(attachments->List().size());
  std::iota(all.begin(), all.end(), size_t{0});
  size_t saved = SaveAttachments(*attachments, all, *folder).size();
  ShowSaved(
      saved == 1
          ? AttachmentsView::tr("1 attachment is saved in %1.").arg(QString::fromStdString(*folder))
          : AttachmentsView::tr("%L1 attachments are saved in %2.")
                .arg(saved)
                .arg(QString::fromStdString(*folder)));
}

QImage DecodePicture(const std::string& bytes, int widest) {
  QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);
  buffer.open(QIODevice::ReadOnly);
  QImageReader reader(&buffer);
  reader.setDecideFormatFromContent(true);
  static const QList<QByteArray> kPictures = {"png", "jpeg", "jpg", "gif", "bmp", "webp"};
  QSize size = reader.size();
  if (!kPictures.contains(reader.format()) || size.isEmpty() ||
      int64_t{size.width()} * size.height() > kMostPixels) {
    return {};
  }
  if (size.width() > widest)
    reader.setScaledSize(size.scaled(widest, 1 << 20, Qt::KeepAspectRatio));
  reader.setAutoTransform(true);
  return reader.read();
}

void OpenAttachment(const MessageAttachments& attachments, size_t which, QWidget* parent) {
  const Attachment& attachment = attachments.List()[which];
  if (attachment.isProgram) {
    core::ShowMessage(ProgramWarning(attachment.name) + "\r\n\r\nIt is not opened.");
    return;
  }
  QImage picture = DecodePicture(attachments.Bytes(which), kWidestPicture);
  if (!picture.isNull()) {
    ShowPicture(NameOf(attachment), picture, parent);
    return;
  }
  core::GuardedRun("OpenAttachment", [&] {
    std::string path = AttachmentScratchFile(attachments, which);
    if (!path.empty()) core::OpenDocument(path);
  });
}

// No name is wider than the list, so that a long one is shortened in its middle and keeps its end.
class FittingDelegate : public QStyledItemDelegate {
 public:
  explicit FittingDelegate(QListView* list) : QStyledItemDelegate(list), list_(list) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    int widest = list_->viewport()->width() - 2 * list_->spacing() - 2;
    return {std::min(size.width(), std::max(widest, 1)), size.height()};
  }

 private:
  QListView* list_;
};

// Names in rows; what is dragged away becomes a file on the way.
class AttachmentsView::List : public QListWidget {
 public:
  explicit List(QWidget* parent) : QListWidget(parent) {
    setObjectName("Attachments");
    setAccessibleName(AttachmentsView::tr("Attachments"));
    setFlow(QListView::LeftToRight);
    setWrapping(true);
    setResizeMode(QListView::Adjust);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setTextElideMode(Qt::ElideMiddle);
    setSpacing(1);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setItemDelegate(new FittingDelegate(this));
  }

  void Fill(std::shared_ptr<const MessageAttachments> attachments) {
    attachments_ = std::move(attachments);
    files_.clear();
    clear();
    if (attachments_ == nullptr) return;
    for (const Attachment& attachment : attachments_->List()) {
      auto* item = new QListWidgetItem(IconOf(attachment, *this), Caption(attachment), this);
      item->setToolTip(repository::TipText(
          attachment.isProgram ? QString::fromStdString(ProgramWarning(attachment.name))
                               : Caption(attachment)));
    }
    if (count() > 0) setCurrentRow(0);
  }

 protected:
  // Asked for when a drag begins.
  QMimeData* mimeData(const QList<QListWidgetItem*>& dragged) const override {
    QList<QUrl> urls;
    for (const QListWidgetItem* item : dragged) {
      std::string path = FileOf(static_cast<size_t>(row(item)));
      if (!path.empty()) urls << QUrl::fromLocalFile(QString::fromStdString(path));
    }
    if (urls.isEmpty()) return nullptr;
    auto* files = new QMimeData;
    files->setUrls(urls);
    return files;
  }

 private:
  // Made once, as long as it is there.
  std::string FileOf(size_t index) const {
    std::string& path = files_[index];
    bool isThere = !path.empty() && QFileInfo::exists(QString::fromStdString(path));
    if (!isThere) path = AttachmentScratchFile(*attachments_, index);
    return path;
  }

  std::shared_ptr<const MessageAttachments> attachments_;
  mutable std::map<size_t, std::string> files_;  // scratch files by row
};

AttachmentsView::AttachmentsView(QWidget* parent)
    : QWidget(parent), title_(new QLabel(this)), list_(new List(this)) {
  auto button = [this](const char* name, const QString& text) {
    auto* made = new QPushButton(text, this);
    made->setObjectName(name);
    made->setAutoDefault(false);
    return made;
  };
  open_ = button("OpenAttachment", tr("Open"));
  save_ = button("SaveAttachment", tr("Save..."));
  saveAll_ = button("SaveAllAttachments", tr("Save all..."));
  title_->setTextFormat(Qt::PlainText);
  auto* names = new QVBoxLayout;
  names->addWidget(title_);
  names->addWidget(list_);
  auto* buttons = new QVBoxLayout;
  buttons->addWidget(open_);
  buttons->addWidget(save_);
  buttons->addWidget(saveAll_);
  buttons->addStretch(1);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(6, 4, 6, 6);
  row->addLayout(names, 1);
  row->addLayout(buttons);

  auto* open = new QAction(tr("Open"), list_);
  auto* save = new QAction(tr("Save..."), list_);
  auto* saveAll = new QAction(tr("Save all..."), list_);
  list_->addActions({open, save, saveAll});
  connect(open, &QAction::triggered, this, &AttachmentsView::OpenCurrent);
  connect(open_, &QPushButton::clicked, this, &AttachmentsView::OpenCurrent);
  connect(save, &QAction::triggered, this, &AttachmentsView::SaveCurrent);
  connect(saveAll, &QAction::triggered, saveAll_, &QPushButton::click);
  connect(save_, &QPushButton::clicked, this, &AttachmentsView::SaveCurrent);
  connect(list_, &QListWidget::itemActivated, this, &AttachmentsView::SaveCurrent);
  connect(saveAll_, &QPushButton::clicked, this, [this] {
    if (attachments_ != nullptr) AskAndSaveAllAttachments(attachments_);
  });
  hide();
}

void AttachmentsView::Show(std::shared_ptr<const MessageAttachments> attachments) {
  attachments_ = std::move(attachments);
  list_->Fill(attachments_);
  int count = list_->count();
  setVisible(count > 0);
  if (count == 0) return;
  QString size = QString::fromStdString(SizeText(attachments_->TotalSize()));
  title_->setText(count == 1 ? tr("1 attachment")
                             : tr("%L1 attachments, %2").arg(QString::number(count), size));
  saveAll_->setVisible(count > 1);
  FitHeight();
}

void AttachmentsView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) FitHeight();
}

// A row for a few files, up to three for many; more are scrolled to.
void AttachmentsView::FitHeight() {
  constexpr int kNamesInARow = 3;
  int rows = std::clamp((list_->count() + kNamesInARow - 1) / kNamesInARow, 1, kMostRows);
  int rowHeight = std::max(list_->sizeHintForRow(0), fontMetrics().height() + 4) + 2;
  list_->setFixedHeight(rows * rowHeight + 2 * list_->frameWidth() + 2);
}

void AttachmentsView::OpenCurrent() {
  int row = list_->currentRow();
  if (attachments_ == nullptr || row < 0) return;
  // The list may change while the desktop is asked.
  const auto attachments = attachments_;
  OpenAttachment(*attachments, static_cast<size_t>(row), this);
}

void AttachmentsView::SaveCurrent() {
  int row = list_->currentRow();
  if (attachments_ == nullptr || row < 0) return;
  AskAndSaveAttachment(attachments_, static_cast<size_t>(row), this);
}

AttachmentsMenuView::AttachmentsMenuView(std::function<int64_t()> current, QWidget* parent)
    : QMenu(parent), current_(std::move(current)) {
  setToolTipsVisible(true);
  connect(this, &QMenu::aboutToShow, this, &AttachmentsMenuView::Fill);
}

void AttachmentsMenuView::Fill() {
  constexpr size_t kMostEntries = 30;
  clear();
  int64_t id = current_();
  std::shared_ptr<const MessageAttachments> attachments;
  if (id != 0) attachments = OpenAttachments(id);
  size_t count = attachments == nullptr ? 0 : attachments->List().size();
  if (count == 0) {
    addAction(tr("No attachments"))->setEnabled(false);
    return;
  }
  for (size_t i = 0; i < count && i < kMostEntries; ++i) {
    const Attachment& attachment = attachments->List()[i];
    QString caption = fontMetrics().elidedText(Caption(attachment), Qt::ElideMiddle,
                                               fontMetrics().averageCharWidth() * 60);
    // Whatever a name holds, it is no mnemonic.
    QAction* action = addAction(IconOf(attachment, *this), caption.replace('&', "&&"));
    connect(action, &QAction::triggered, this,
            [this, attachments, i] { AskAndSaveAttachment(attachments, i, parentWidget()); });
  }
  addSeparator();
  QAction* all = addAction(count == 1 ? tr("Save &all...") : tr("Save &all %L1...").arg(count));
  connect(all, &QAction::triggered, this, [attachments] { AskAndSaveAllAttachments(attachments); });
}

}  // namespace tarnwick::takeout
