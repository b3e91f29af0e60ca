// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/folder_panel_view.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tarnwick::search {

namespace {

// What an item stands for, and where it keeps it.
enum Kind { kAll = QTreeWidgetItem::UserType, kSearches, kSearch, kIdentity, kFolder };
constexpr int kNameRole = Qt::UserRole;
constexpr int kTextRole = Qt::UserRole + 1;  // of a search; the identity of a folder

QString Shown(const std::string& name, const QString& nameless) {
  return name.empty() ? nameless : QString::fromStdString(name);
}

}  // namespace

FolderPanelView::FolderPanelView(QWidget* parent)
    : QWidget(parent),
      tree_(new QTreeWidget(this)),
      save_(new QPushButton(tr("Save Search..."), this)),
      remove_(new QPushButton(tr("Remove"), this)) {
  setObjectName("FolderPanel");
  tree_->setObjectName("Folders");
  tree_->setAccessibleName(tr("Folders and saved searches"));
  tree_->setColumnCount(2);
  tree_->setHeaderHidden(true);
  tree_->header()->setStretchLastSection(false);
  tree_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  tree_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  tree_->setTextElideMode(Qt::ElideMiddle);
  all_ = Add(nullptr, kAll, tr("All mail"));
  searches_ = Add(nullptr, kSearches, tr("Saved searches"));
  searches_->setHidden(true);
  save_->setObjectName("SaveSearch");
  save_->setToolTip(tr("Keeps what is in the search box, under a name"));
  remove_->setObjectName("RemoveSearch");
  remove_->setToolTip(tr("Removes the selected saved search"));
  remove_->setEnabled(false);
  SetCanSave(false);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(tree_, 1);
  auto* row = new QHBoxLayout;
  row->addWidget(save_);
  row->addWidget(remove_);
  column->addLayout(row);
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    remove_->setEnabled(item != nullptr && item->type() == kSearch);
    if (item != nullptr) Choose(item);
  });
  // Choosing what is current already, as a saved search after something else was typed.
  connect(tree_, &QTreeWidget::itemClicked, this, &FolderPanelView::Choose);
  connect(save_, &QPushButton::clicked, this, &FolderPanelView::SaveAskedFor);
  connect(remove_, &QPushButton::clicked, this, &FolderPanelView::RemoveCurrent);
}

QTreeWidgetItem* FolderPanelView::Add(QTreeWidgetItem* parent, int kind, const QString& text) {
  auto* item =
      parent == nullptr ? new QTreeWidgetItem(tree_, kind) : new QTreeWidgetItem(parent, kind);
  item->setText(0, text);
  item->setToolTip(0, text);
  item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  return item;
}

void FolderPanelView::ShowFolders(const std::optional<std::vector<Folder>>& folders) {
  QSignalBlocker quiet(tree_);
  for (QTreeWidgetItem* identity : identities_) delete identity;
  identities_.clear();
  all_->setText(1, folders ? QString() : tr("counting..."));
  if (!folders) return;
  qlonglong total = 0;
  QString former;
  for (const Folder& folder : *folders) {
    QString identity = Shown(folder.identity, tr("(no identity)"));
    if (identities_.empty() || former != identity) {
      identities_.push_back(Add(nullptr, kIdentity, identity));
      identities_.back()->setExpanded(true);
      former = identity;
    }
    QTreeWidgetItem* item = Add(identities_.back(), kFolder, Shown(folder.name, tr("(no folder)")));
    item->setText(1, QLocale().toString(qlonglong{folder.messages}));
    item->setData(0, kNameRole, QString::fromStdString(folder.name));
    item->setData(0, kTextRole, QString::fromStdString(folder.identity));
    item->setData(0, Qt::AccessibleTextRole,
                  tr("%1, %L2 messages").arg(item->text(0)).arg(qlonglong{folder.messages}));
    total += folder.messages;
  }
  all_->setText(1, QLocale().toString(total));
  ShowChosen(chosen_);
}

void FolderPanelView::ShowSearches(const std::vector<SavedSearch>& searches) {
  QSignalBlocker quiet(tree_);
  qDeleteAll(searches_->takeChildren());
  for (const SavedSearch& search : searches) {
    QTreeWidgetItem* item = Add(searches_, kSearch, QString::fromStdString(search.name));
    item->setData(0, kTextRole, QString::fromStdString(search.text));
    item->setToolTip(0, QString::fromStdString(search.text));
  }
  searches_->setHidden(searches.empty());
  searches_->setExpanded(true);
  remove_->setEnabled(false);
}

void FolderPanelView::ShowChosen(const std::optional<FolderName>& folder) {
  chosen_ = folder;
  QSignalBlocker quiet(tree_);
  if (!folder) {
    // A saved search that was chosen stays so.
    QTreeWidgetItem* current = tree_->currentItem();
    if (current == nullptr || current->type() == kFolder) tree_->setCurrentItem(all_);
    return;
  }
  for (QTreeWidgetItem* identity : identities_) {
    for (int i = 0; i < identity->childCount(); ++i) {
      QTreeWidgetItem* item = identity->child(i);
      if (item->data(0, kTextRole).toString().toStdString() == folder->first &&
          item->data(0, kNameRole).toString().toStdString() == folder->second) {
        tree_->setCurrentItem(item);
      }
    }
  }
}

void FolderPanelView::SetCanSave(bool can) {
  save_->setEnabled(can);
}

void FolderPanelView::Choose(QTreeWidgetItem* item) {
  switch (item->type()) {
    case kAll:
      if (chosen_) emit AllChosen();
      break;
    case kFolder: {
      FolderName folder{item->data(0, kTextRole).toString().toStdString(),
                        item->data(0, kNameRole).toString().toStdString()};
      if (chosen_ == folder) return;
      emit FolderChosen(item->data(0, kTextRole).toString(), item->data(0, kNameRole).toString());
      break;
    }
    case kSearch:
      emit SearchChosen(item->data(0, kTextRole).toString());
      break;
    default:
      break;
  }
}

void FolderPanelView::RemoveCurrent() {
  QTreeWidgetItem* item = tree_->currentItem();
  if (item != nullptr && item->type() == kSearch) emit RemoveAskedFor(item->text(0));
}

}  // namespace tarnwick::search
