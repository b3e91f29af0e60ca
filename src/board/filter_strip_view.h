// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The filter controls: two rows of boxes, the option groups at their end. Enter in a box applies
// what was changed and moves on to the next one, leaving it in any other way applies it too; Escape
// puts back the text that the box had when it was entered. Option groups, check boxes and a choice
// from a drop-down list apply at once.
#pragma once

#include <QWidget>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "board/list_filter.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLineEdit;

namespace tarnwick::board {

class FilterStripView : public QWidget {
  Q_OBJECT

 public:
  explicit FilterStripView(QWidget* parent = nullptr);

  // Puts a filter into the controls. Nothing is applied by it.
  void ShowFilter(const ListFilter& filter);
  // Takes the controls into the filter. A text that is no date leaves that date as it is.
  void ReadFilter(ListFilter& filter) const;

  // What a drop-down list offers; the text that was typed stays.
  enum class Choices { kContacts, kFiles };
  void SetChoices(Choices list, const std::vector<std::string>& texts);
  // What they offer is out of date. Nobody may want to choose: choices are asked for when a box is
  // entered, until they come.
  void ForgetChoices();
  // Asks for those of the box that the focus is in.
  void AskForChoices();

  // Orders by this; by the same again turns the order round.
  void SortBy(ListSort sort);

  void FocusFirst();

  QSize minimumSizeHint() const override;

 signals:
  void FilterChanged();
  void ChoicesAskedFor(Choices list);
  // Enter in the last box: the focus goes on to the list.
  void LastBoxLeft();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct DateBox {
    QLineEdit* edit = nullptr;
    DateTime date;
    QString shown;            // the text that stands for date
    bool grows = false;       // nobody has typed here
    bool isOwn = false;       // the program chose it
    bool grewBefore = false;  // when it was entered
    bool wasOwn = false;
  };
  void BuildBoxes(QGridLayout* grid);
  QGroupBox* BuildGroup(const char* name, const QString& title, QButtonGroup*& buttons,
                        const std::vector<std::tuple<const char*, QString, int>>& choices,
                        int columns);
  void PlaceGroups();
  int GroupsWidth() const;
  QComboBox* MakeCombo(const char* name);
  QLineEdit* MakeEdit(const char* name);

  void AskFor(QComboBox* combo);
  bool KeyPressed(QWidget* box, int key);
  void Remember(QWidget* box);
  void Apply(QWidget* box);
  void MoveOn(QWidget* box);
  DateBox* DateBoxOf(QWidget* box);
  static bool HoldsDate(const DateBox& box);
  static DateTime DateOf(const DateBox& box);
  static void ShowDate(DateBox& box, DateTime date, bool grows);
  void Complain(QWidget* box);
  void Leave(QWidget* box);

  DateBox dateFrom_;
  DateBox dateTo_;
  QComboBox* fromTo_ = nullptr;
  QLineEdit* subject_ = nullptr;
  QComboBox* file_ = nullptr;
  QLineEdit* mailText_ = nullptr;
  QCheckBox* active_ = nullptr;
  QCheckBox* attached_ = nullptr;
  QButtonGroup* direction_ = nullptr;
  QButtonGroup* sort_ = nullptr;
  QButtonGroup* order_ = nullptr;

  std::vector<QGroupBox*> groups_;
  int firstGroupColumn_ = 0;
  int wholeWidth_ = 0;                  // of the strip in two rows
  bool isFolded_ = false;               // the groups stand in a third one
  std::vector<QWidget*> boxes_;         // in the order in which Enter goes through them
  std::set<QWidget*> outdated_;         // boxes whose choices are
  std::map<QWidget*, QString> before_;  // the text that a box had when it was entered
  bool complaining_ = false;
};

}  // namespace tarnwick::board
