// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The panel beside the list: the searches that the person saved, and the identities and folders of
// the mail program with the number of their messages. Choosing one narrows the list; "All mail"
// takes the folder back.
#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "search/mail_map.h"
#include "search/saved_searches.h"

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tarnwick::search {

class FolderPanelView : public QWidget {
  Q_OBJECT

 public:
  using FolderName = std::pair<std::string, std::string>;  // identity and name

  explicit FolderPanelView(QWidget* parent = nullptr);

  // folders: nullopt while they are still being counted. What is chosen stays so.
  void ShowFolders(const std::optional<std::vector<Folder>>& folders);
  void ShowSearches(const std::vector<SavedSearch>& searches);
  // Marks a folder as the chosen one, or none. Nothing is narrowed by it.
  void ShowChosen(const std::optional<FolderName>& folder);
  // Whether there is a search that could be saved.
  void SetCanSave(bool can);

 signals:
  void FolderChosen(const QString& identity, const QString& name);
  void AllChosen();
  void SearchChosen(const QString& text);
  void SaveAskedFor();
  void RemoveAskedFor(const QString& name);

 private:
  void Choose(QTreeWidgetItem* item);
  void RemoveCurrent();
  QTreeWidgetItem* Add(QTreeWidgetItem* parent, int kind, const QString& text);

  QTreeWidget* tree_;
  QTreeWidgetItem* all_;
  QTreeWidgetItem* searches_;
  std::vector<QTreeWidgetItem*> identities_;
  QPushButton* save_;
  QPushButton* remove_;
  std::optional<FolderName> chosen_;
};

}  // namespace tarnwick::search
