// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contacts_window.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "contacts/contact_dialog.h"
#include "intake/store_message.h"
#include "platform/shell.h"
#include "support/program_fixture.h"
#include "support/window_checks.h"

namespace tarnwick::contacts {
namespace {

template <typename Widget>
Widget* Child(const QWidget& window, const char* name) {
  auto* widget = window.findChild<Widget*>(name);
  EXPECT_NE(widget, nullptr) << name;
  return widget;
}

void Click(const QWidget& window, const char* name) {
  QTest::mouseClick(Child<QPushButton>(window, name), Qt::LeftButton);
}

class ContactsWindowTest : public testing::ProgramFixture {
 protected:
  static void AddContacts(std::initializer_list<const char*> names) {
    for (const char* name : names) intake::GetContactId(name, "a@b.c");
  }
  static QStringList Listed(frmContacts& window) {
    QStringList names;
    const ContactListModel& model = window.Grid().Model();
    for (int row = 0; row < model.rowCount(); ++row)
      names << model.index(row, kName).data().toString();
    return names;
  }
  // Runs once the editor that a command opens is shown.
  static void InEditor(const std::function<void(frmContact&)>& steps) {
    QTimer::singleShot(0, qApp, [steps] {
      auto* editor = qobject_cast<frmContact*>(QApplication::activeModalWidget());
      ASSERT_NE(editor, nullptr);
      steps(*editor);
    });
  }
};

TEST_F(ContactsWindowTest, TypingNarrowsTheList) {
  AddContacts({"Zoe", "ann", "Hannah"});
  frmContacts window;
  QAbstractItemModelTester tester(&window.Grid().Model());
  EXPECT_EQ(Listed(window), (QStringList{"ann", "Hannah", "Zoe"}));

  auto* box = Child<QLineEdit>(window, "mctName");
  QTest::keyClicks(box, "ANN");
  EXPECT_EQ(Listed(window).size(), 3) << "while one types nothing runs";
  EXPECT_TRUE(QTest::qWaitFor([&] { return Listed(window).size() == 2; }, 60000));
  QTest::keyClicks(box, "q");
  QTest::keyClick(box, Qt::Key_Return);  // Enter does not wait
  EXPECT_THAT(Listed(window), IsEmpty());
  QTest::keyClick(box, Qt::Key_Escape);
  EXPECT_EQ(Listed(window).size(), 3);
}

TEST_F(ContactsWindowTest, DeletingMovesToTheNextAndTellsTheBoard) {
  AddContacts({"Ann", "Bob", "Cid"});
  frmContacts window;
  QSignalSpy changed(&window, &frmContacts::Changed);
  Click(window, "mctSelect");
  Click(window, "ctDelete");
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre("There isn't selected row.", "There isn't selected row."));
  window.Grid().SelectRow(1);
  ui_.yesNo = {false, true};
  Click(window, "ctDelete");
  EXPECT_EQ(Listed(window).size(), 3);
  EXPECT_EQ(changed.size(), 0);
  Click(window, "ctDelete");
  EXPECT_EQ(Listed(window), (QStringList{"Ann", "Cid"}));
  EXPECT_EQ(changed.size(), 1);
  EXPECT_EQ(window.Grid().currentIndex().data().toString(), "Cid");
}

TEST_F(ContactsWindowTest, ARenamedContactStaysSelected) {
  AddContacts({"Ann", "Bob", "Cid"});
  frmContacts window;
  QSignalSpy changed(&window, &frmContacts::Changed);
  window.Grid().SelectRow(0);
  int64_t ann = window.Grid().SelectedId();
  ui_.yesNo = {true};
  InEditor([](frmContact& editor) {
    Child<QLineEdit>(editor, "Name")->setText("Zelda");
    Click(editor, "mctQuite");
  });
  Click(window, "mctSelect");
  EXPECT_EQ(Listed(window), (QStringList{"Bob", "Cid", "Zelda"}));
  EXPECT_EQ(window.Grid().SelectedId(), ann);
  EXPECT_EQ(changed.size(), 1);
}

TEST_F(ContactsWindowTest, TypingInTheGridGoesToTheName) {
  AddContacts({"Ann", "Bob", "Boris", "Cid"});
  frmContacts window;
  QTest::keyClicks(&window.Grid(), "bor");
  EXPECT_EQ(window.Grid().currentIndex().data().toString(), "Boris");
  window.Grid().CopySelected();
  EXPECT_EQ(QApplication::clipboard()->text(), "Boris\t\t\t\t\t\n");
}

TEST_F(ContactsWindowTest, WidthsAndPlaceAreKeptAndControlsNamed) {
  {
    frmContacts window;
    testing::CheckControls(window);
    testing::CheckControls(frmContact(intake::GetContactId("Ann", "a@b.c")));
    window.Grid().setColumnWidth(kHome, 123);
    window.move(40, 30);
    window.resize(700, 420);
    window.show();
    Click(window, "mctQuite");
  }
  frmContacts again;
  EXPECT_EQ(again.Grid().columnWidth(kHome), 123);
  EXPECT_EQ(again.size(), QSize(700, 420));
}

class ContactEditorTest : public ContactsWindowTest {
 protected:
  ContactEditorTest() : ann_(intake::GetContactId("Ann", "ann@example.org")) {}
  std::vector<std::string> Addresses() const {
    std::vector<std::string> texts;
    for (const ContactAddress& address : ReadAddresses(ann_)) texts.push_back(address.Address);
    return texts;
  }
  int64_t ann_;
};

TEST_F(ContactEditorTest, UntouchedFieldsAreNotAskedAbout) {
  // Line ends that the boxes show otherwise than they are stored.
  Run("UPDATE MeContact SET Remark = 'a\r\nb', PhoneHome = '1\n2'");
  Contact before = *ReadContact(ann_);
  {
    frmContact editor(ann_);
    editor.reject();
  }
  EXPECT_THAT(ui_.shown, IsEmpty());
  ui_.yesNo = {true};
  frmContact editor(ann_);
  Child<QPlainTextEdit>(editor, "PostAddress")->setPlainText("Elm Street\nTown");
  editor.reject();
  EXPECT_TRUE(editor.WasSaved());
  before.PostAddress = "Elm Street\nTown";
  EXPECT_EQ(*ReadContact(ann_), before) << "fields that were not touched stay byte for byte";
}

TEST_F(ContactEditorTest, WhatCannotBeSavedStaysOpen) {
  frmContact editor(ann_);
  editor.show();
  Child<QLineEdit>(editor, "Name")->setText("Anna");
  Run("DELETE * FROM MeContact");
  ui_.yesNo = {true, false};
  editor.close();
  EXPECT_TRUE(editor.isVisible());
  editor.close();
  EXPECT_FALSE(editor.isVisible());
}

TEST_F(ContactEditorTest, AddressesAreAskedFor) {
  frmContact editor(ann_);
  std::vector<std::optional<std::string>> answers = {std::nullopt, "", "nowhere", "ann@home.org"};
  size_t asked = 0;
  editor.SetAddressQuestion([&](QWidget*) { return answers.at(asked++); });
  for (size_t i = 0; i < answers.size(); ++i) Click(editor, "mctEmaiAddress");
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("Invalid email address"));
  EXPECT_THAT(Addresses(), ElementsAre("ann@example.org", "ann@home.org"));

  // The new one is selected.
  ui_.yesNo = {true, true};
  Click(editor, "mctDeleteAddress");
  EXPECT_THAT(Addresses(), ElementsAre("ann@example.org"));
  Click(editor, "mctDeleteAddress");
  EXPECT_THAT(Addresses(), IsEmpty());
  for (const char* command : {"mctDeleteAddress", "mctSendToOne"}) {
    Click(editor, command);
    EXPECT_EQ(ui_.shown.back().second, "There isn't selected row.") << command;
  }
  EXPECT_FALSE(Child<QPushButton>(editor, "mctSendToAll")->isEnabled());
}

TEST_F(ContactEditorTest, OneMessageIsBegunAtATime) {
  frmContact editor(ann_);
  editor.show();
  int opened = 0;
  platform::SetShellHook([&](const std::string&) {
    ++opened;
    // What a person may do while the desktop thinks.
    Click(editor, "mctSendToAll");
    editor.close();
    EXPECT_TRUE(editor.isVisible());
    return platform::ShellResult::kOpened;
  });
  Click(editor, "mctSendToOne");
  platform::SetShellHook({});
  EXPECT_EQ(opened, 1);
  EXPECT_TRUE(Child<QPushButton>(editor, "mctSendToAll")->isEnabled());
  editor.close();
  EXPECT_FALSE(editor.isVisible());
}

}  // namespace
}  // namespace tarnwick::contacts
