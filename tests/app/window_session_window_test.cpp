// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "window_session.h"

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
#include "support/program_fixture.h"
#include "support/repository_content.h"
#include "support/window_checks.h"

namespace tarnwick::app {
namespace {

class Session : public testing::ProgramFixture {
 protected:
  Session() {
    repository::SetKeyCostOverride({{.passes = 1, .memoryPower = 13}});
    testing::StoreVariedMessages(3);
  }
  ~Session() override {
    session_.reset();
    board::ResetBoard();
    repository::SetKeyCostOverride({});
  }

  void Start(const std::string& password) {
    if (!password.empty()) {
      ASSERT_EQ(maintenance::ProtectRepository(platform::Secret(password)),
                maintenance::Result::kDone);
    }
    session_.emplace(qt_);
    ASSERT_TRUE(session_->Open());
    QApplication::processEvents();
  }
  board::MainBoard* Board() { return qobject_cast<board::MainBoard*>(&session_->Window()); }

  QtUserInterface qt_;
  std::optional<WindowSession> session_;
};

TEST_F(Session, LockedNothingOfTheMailIsLeftUntilThePasswordIsGiven) {
  Start("own");
  ASSERT_EQ(Board()->Grid().model()->rowCount(), 3);
  QPointer<QDialog> letter = new QDialog(Board());
  letter->open();
  session_->Lock();  // what is open over the window goes first
  EXPECT_FALSE(letter->isVisible() || session_->IsLocked());
  Board()->Actions().lock->trigger();
  QApplication::processEvents();
  ASSERT_TRUE(session_->IsLocked());
  EXPECT_FALSE(RepositoryDb().IsOpen());
  EXPECT_EQ(letter, nullptr);
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    EXPECT_TRUE(widget == &session_->Window() || !widget->isVisible());
    EXPECT_EQ(widget->findChild<board::EmailGridView*>(), nullptr);
  }
  testing::CheckControls(session_->Window());

  ui_.passwords = {"wrong", ""};
  session_->Unlock();
  EXPECT_TRUE(session_->IsLocked());
  ui_.passwords = {"own"};
  session_->Unlock();
  ASSERT_FALSE(session_->IsLocked());
  EXPECT_EQ(Board()->Grid().model()->rowCount(), 3);
}

TEST_F(Session, OnlyAProtectedRepositoryIsLockedAndOnlyAfterTheMinutesOfTheOptions) {
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  constexpr qint64 kMinute = 60'000;
  Start("");
  session_->LockIfIdle(now + 1000 * kMinute);
  Board()->Actions().lock->trigger();
  QApplication::processEvents();
  EXPECT_FALSE(session_->IsLocked());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("File, Protect")));
  session_.reset();
  board::ResetBoard();

  Start("own");
  session_->LockIfIdle(now + 10 * kMinute);
  EXPECT_FALSE(session_->IsLocked());
  options::SetLockMinutes(0);
  session_->LockIfIdle(now + 1000 * kMinute);
  EXPECT_FALSE(session_->IsLocked());
  options::SetLockMinutes(15);
  session_->LockIfIdle(now + 17 * kMinute);
  EXPECT_TRUE(session_->IsLocked());
}

}  // namespace
}  // namespace tarnwick::app
