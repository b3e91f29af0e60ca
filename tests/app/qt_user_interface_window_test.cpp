// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "qt_user_interface.h"

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "support/run_program.h"
#include "support/testing.h"

namespace tarnwick::app {
namespace {

// Does something with the box that comes up next.
void WithNextBox(const std::function<void(QMessageBox&)>& action) {
  QTimer::singleShot(0, [action] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    action(*box);
  });
}

TEST(QtUserInterface, BoxesShowPlainTextAndOfferSilenceOnlyWhenAsked) {
  QtUserInterface ui;
  WithNextBox([](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), "Tarnwick");
    EXPECT_EQ(box.text(), "a\n<b>b</b>");
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    EXPECT_EQ(box.icon(), QMessageBox::Information);
    EXPECT_EQ(box.checkBox(), nullptr);
    box.button(QMessageBox::Ok)->click();
  });
  EXPECT_FALSE(ui.ShowBox(core::BoxIcon::kInformation, "a\r\n<b>b</b>", false));
  WithNextBox([](QMessageBox& box) {
    ASSERT_NE(box.checkBox(), nullptr);
    EXPECT_EQ(box.checkBox()->text().remove('&'), "Do not show again during this load");
    EXPECT_EQ(box.icon(), QMessageBox::Critical);
    box.checkBox()->setChecked(true);
    box.button(QMessageBox::Ok)->click();
  });
  EXPECT_TRUE(ui.ShowBox(core::BoxIcon::kCritical, "again", true));
}

TEST(QtUserInterface, OnlyYesIsYes) {
  QtUserInterface ui;
  for (auto button : {QMessageBox::Yes, QMessageBox::No, QMessageBox::NoButton}) {
    WithNextBox([button](QMessageBox& box) {
      button == QMessageBox::NoButton ? void(box.close()) : box.button(button)->click();
    });
    EXPECT_EQ(ui.AskYesNo("?"), button == QMessageBox::Yes);
  }
}

TEST(QtUserInterface, ATurnOfTheEventsIsNotEnteredAgainFromWithin) {
  QtUserInterface ui;
  int inside = 0;
  int deepest = 0;
  for (int i = 0; i < 3; ++i) {
    QTimer::singleShot(0, [&] {
      deepest = std::max(deepest, ++inside);
      ui.YieldEvents();
      --inside;
    });
  }
  ui.YieldEvents();
  EXPECT_EQ(deepest, 1);
}

class Program : public ::testing::Test {
 protected:
  testing::ProgramRun Run() {
    qputenv("TARNWICK_PICTURE", folder_.File("window.png").c_str());
    auto run = testing::RunProgram(
        {std::string(TARNWICK_BIN) + "/tarnwick", "--home", folder_.File("home")});
    qunsetenv("TARNWICK_PICTURE");
    return run;
  }
  testing::TempFolder folder_;
};

TEST_F(Program, AFirstStartMakesItsHomeAndShowsTheWindow) {
  testing::ProgramRun run = Run();
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_TRUE(platform::FileExists(folder_.File("home/Tarnwick.twr")));
  QImage picture(QString::fromStdString(folder_.File("window.png")));
  EXPECT_GT(picture.width(), 500);
}

TEST_F(Program, ARepositoryThatIsNoneEndsItWithTheReason) {
  Run();
  platform::WriteFile(folder_.File("home/Tarnwick.twr"), std::string(8192, 'x'));
  testing::ProgramRun run = Run();
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("26 "), std::string::npos) << run.errors;
}

}  // namespace
}  // namespace tarnwick::app
