// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/password_dialog.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "options/options.h"
#include "options/options_window.h"
#include "options/password_strength.h"
#include "support/program_fixture.h"
#include "support/window_checks.h"

namespace tarnwick::options {
namespace {

using platform::Secret;

void Type(QDialog& dialog, const char* field, const QString& text) {
  dialog.findChild<QLineEdit*>(field)->setText(text);
}

TEST(ProtectDialog, TakesTheSamePasswordTwiceAndChangesItOnlyForWhoKnowsThePresentOne) {
  ProtectDialog first({});
  testing::CheckControls(first);
  auto* set = first.findChild<QPushButton*>("SetPassword");
  EXPECT_FALSE(set->isEnabled());
  Type(first, "NewPassword", "Grün ist gut");
  EXPECT_FALSE(set->isEnabled());
  Type(first, "NewPasswordAgain", "Grün ist  gut");
  EXPECT_FALSE(set->isEnabled());
  Type(first, "NewPasswordAgain", "Grün ist gut");
  set->click();
  EXPECT_EQ(first.Chosen(), ProtectDialog::Choice::kSet);
  EXPECT_EQ(first.NewPassword().Bytes(), "Grün ist gut");

  ProtectDialog change([](const Secret& password) { return password.Bytes() == "old"; });
  testing::CheckControls(change);
  for (const char* present : {"", "new", "old"}) {
    Type(change, "PresentPassword", present);
    EXPECT_EQ(change.Chosen(), ProtectDialog::Choice::kNone);
    change.findChild<QPushButton*>("TakeOff")->click();
  }
  EXPECT_EQ(change.Chosen(), ProtectDialog::Choice::kTakeOff);
}

TEST(PasswordDialog, APasswordIsRememberedOnlyWhereThatIsTickedAndCanBe) {
  EXPECT_EQ(PasswordDialog("a.twr", false, {}).findChild<QCheckBox*>("Remember"), nullptr);
  for (std::string why : {"", "No keyring is running."}) {
    PasswordDialog dialog("a.twr", false, [&] { return why; });
    testing::CheckControls(dialog);
    auto* box = dialog.findChild<QCheckBox*>("Remember");
    EXPECT_FALSE(dialog.IsToBeRemembered());
    box->click();
    EXPECT_EQ(dialog.IsToBeRemembered(), why.empty());
    EXPECT_EQ(box->isEnabled(), why.empty());
    auto* reason = dialog.findChild<QLabel*>("WhyNotRemembered");
    EXPECT_EQ(reason->isVisibleTo(&dialog), !why.empty());
    EXPECT_THAT(reason->text().toStdString(), HasSubstr(why));
  }
}

TEST(PasswordStrength, CommonWordsAndPatternsCountForLittle) {
  int before = -1;
  for (const char* password :
       {"", "password1", "Summer2004!", "tulip garden budget 2004", "vq8#Lw2!xR0@pZ6^mT4&kY"}) {
    PasswordStrength strength = EstimateStrength(password);
    EXPECT_GT(strength.percent, before) << password;
    before = strength.percent;
  }
  EXPECT_THAT(EstimateStrength("password1").text, StartsWith("Weak"));
  EXPECT_EQ(EstimateStrength(std::string(1'000'000, 'x')).text.substr(0, 4), "Weak");
}

class LockOption : public testing::ProgramFixture {};

TEST_F(LockOption, TheMinutesAreKeptAndWhatIsNoNumberOfThemIsNotTaken) {
  EXPECT_EQ(LockMinutes(), 15);
  frmOptions window(nullptr);
  testing::CheckControls(window);
  window.findChild<QSpinBox*>("LockMinutes")->setValue(0);
  EXPECT_EQ(LockMinutes(), 0);
  repository::ParameterDb().Execute(
      "UPDATE Parameter SET ParameterAmount = -7 WHERE ParameterGroup = 'LockAfter'");
  EXPECT_EQ(LockMinutes(), 0);
}

}  // namespace
}  // namespace tarnwick::options
