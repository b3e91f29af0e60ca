// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "lockable_window.h"

#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include "board/list_query.h"
#include "maintenance/protect.h"
#include "options/options.h"
#include "repository/file_key.h"
#include "repository/keyring.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"
#include "support/window_checks.h"

namespace tarnwick::app {
namespace {

class LockableWindowTest : public testing::ProgramFixture {
 protected:
  LockableWindowTest() {
    repository::SetKeyCostOverride({{.passes = 1, .memoryPower = 13}});
    testing::StoreVariedMessages(3);
  }
  ~LockableWindowTest() override {
    lockable_.reset();
    board::ResetBoard();
    repository::SetKeyCostOverride({});
  }

  void Start(const std::string& password) {
    if (!password.empty()) {
      ASSERT_EQ(maintenance::ProtectRepository(platform::Secret(password)),
                maintenance::Result::kDone);
    }
    lockable_.emplace(qt_);
    ASSERT_TRUE(lockable_->Open());
    QApplication::processEvents();
  }
  board::MainBoard* Board() { return qobject_cast<board::MainBoard*>(&lockable_->Window()); }

  QtUserInterface qt_;
  std::optional<LockableWindow> lockable_;
};

TEST_F(LockableWindowTest, LockedNothingOfTheMailIsLeftUntilThePasswordIsGiven) {
  Start("own");
  ASSERT_EQ(Board()->Grid().model()->rowCount(), 3);
  QPointer<QDialog> letter = new QDialog(Board());
  letter->open();
  lockable_->Lock();  // what is open over the window goes first
  EXPECT_FALSE(letter->isVisible() || lockable_->IsLocked());
  Board()->Actions().lock->trigger();
  QApplication::processEvents();
  ASSERT_TRUE(lockable_->IsLocked());
  EXPECT_FALSE(RepositoryDb().IsOpen());
  EXPECT_EQ(letter, nullptr);
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    EXPECT_TRUE(widget == &lockable_->Window() || !widget->isVisible());
    EXPECT_EQ(widget->findChild<board::EmailGridView*>(), nullptr);
  }
  testing::CheckControls(lockable_->Window());

  ui_.passwords = {"wrong", ""};
  lockable_->Unlock();
  EXPECT_TRUE(lockable_->IsLocked());
  ui_.passwords = {"own"};
  lockable_->Unlock();
  ASSERT_FALSE(lockable_->IsLocked());
  EXPECT_EQ(Board()->Grid().model()->rowCount(), 3);
}

TEST_F(LockableWindowTest, OnlyAProtectedRepositoryIsLockedAndOnlyAfterTheMinutesOfTheOptions) {
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  constexpr qint64 kMinute = 60'000;
  Start("");
  lockable_->LockIfIdle(now + 1000 * kMinute);
  Board()->Actions().lock->trigger();
  QApplication::processEvents();
  EXPECT_FALSE(lockable_->IsLocked());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("File, Protect")));
  lockable_.reset();
  board::ResetBoard();

  Start("own");
  lockable_->LockIfIdle(now + 10 * kMinute);
  EXPECT_FALSE(lockable_->IsLocked());
  options::SetLockMinutes(0);
  lockable_->LockIfIdle(now + 1000 * kMinute);
  EXPECT_FALSE(lockable_->IsLocked());
  options::SetLockMinutes(15);
  lockable_->LockIfIdle(now + 17 * kMinute);
  EXPECT_TRUE(lockable_->IsLocked());
}

// As a desktop's keyring, of this test alone.
struct FakeKeyring : repository::Keyring {
  std::string WhyNot() override { return fault; }
  std::optional<platform::Secret> Find(const std::string& name) override {
    ++asked;
    auto found = kept.find(name);
    if (found == kept.end()) return std::nullopt;
    return platform::Secret(found->second);
  }
  std::string Keep(const std::string& name, const platform::Secret& password) override {
    if (fault.empty()) kept[name] = password.Bytes();
    return fault;
  }
  void Remove(const std::string& name) override { kept.erase(name); }
  std::map<std::string, std::string> kept;
  std::string fault;
  int asked = 0;
};

TEST_F(LockableWindowTest, TheKeyringKnowsThePasswordThatIsWantedAndRightUntilItIsAnother) {
  FakeKeyring keyring;
  repository::SetKeyring(&keyring);
  Start("own");
  lockable_.reset();
  // Opened with what is typed, and ticked or not.
  auto opens = [&](std::deque<std::string> typed, bool ticked) {
    repository::LockRepository();
    ui_.passwords = std::move(typed);
    keyring.isWanted = ticked;
    return repository::OpenRepository(false) && ui_.passwords.empty();
  };
  ASSERT_TRUE(opens({"wrong", "own"}, false));
  EXPECT_TRUE(keyring.kept.empty());
  EXPECT_EQ(keyring.asked, 0) << "before it was given anything";
  keyring.fault = "It is full.";
  ASSERT_TRUE(opens({"own"}, true));
  EXPECT_THAT(ui_.Shown("box").back(), HasSubstr("It is full."));
  keyring.fault.clear();
  EXPECT_FALSE(opens(
      {
          "wrong",
          "",
      },
      true));
  EXPECT_TRUE(keyring.kept.empty()) << "not that one";
  ASSERT_TRUE(opens({"wrong", "own"}, true));
  ASSERT_EQ(keyring.kept.size(), 1U);
  EXPECT_EQ(keyring.kept.begin()->second, "own");
  ASSERT_TRUE(opens({}, false));

  // A wrong one is forgotten, and there are three tries as ever.
  keyring.kept.begin()->second = "old";
  ASSERT_TRUE(opens({"wrong", "wrong", "own"}, true));
  EXPECT_EQ(keyring.kept.begin()->second, "own");
  ASSERT_EQ(maintenance::ProtectRepository(platform::Secret("other")), maintenance::Result::kDone);
  EXPECT_TRUE(keyring.kept.empty());
  ASSERT_TRUE(opens({"other"}, true));
  ASSERT_TRUE(opens({}, false));
  lockable_.emplace(qt_);
  ASSERT_TRUE(lockable_->Open());
  lockable_->Lock();
  ASSERT_TRUE(lockable_->IsLocked());
  ui_.passwords = {""};
  lockable_->Unlock();
  EXPECT_TRUE(lockable_->IsLocked()) << "somebody wanted it so";
  ui_.passwords = {"other"};
  lockable_->Unlock();
  ui_.yesNo = {true};
  ASSERT_EQ(maintenance::UnprotectRepository(), maintenance::Result::kDone);
  EXPECT_TRUE(keyring.kept.empty());
  repository::SetKeyring(nullptr);
}

}  // namespace
}  // namespace tarnwick::app
