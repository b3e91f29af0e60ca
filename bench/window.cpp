// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-window HOME [LETTER...]: the main window with the reading pane below the list, over a
// home as tarnwick-make-repository makes it. Prints how long the window takes, in milliseconds, for
// each of 100 times arrow-down, then for each of the letters, which are message files that are
// taken into the home: until it stands painted in the pane. Without DISPLAY nothing is seen, and
// the time is the same.
#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "board/load_command.h"
#include "board/main_board_window.h"
#include "core/startup.h"
#include "platform/files.h"
#include "reading/letter_view.h"
#include "repository/app_folder.h"
#include "repository/repository.h"
#include "support/scripted_ui.h"

namespace tarnwick {
namespace {

constexpr int kArrows = 100;

double Milliseconds(const std::function<void()>& work) {
  auto began = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began)
      .count();
}

// Until nothing is left to be done at once.
void Settle(board::MainBoard& window) {
  QApplication::processEvents();
  window.repaint();
}

void TimeArrows(board::MainBoard& window) {
  window.Grid().selectRow(0);
  Settle(window);
  std::vector<double> times;
  for (int i = 0; i < kArrows; ++i) {
    times.push_back(Milliseconds([&] {
      QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
      QApplication::sendEvent(&window.Grid(), &down);
      Settle(window);
    }));
  }
  std::sort(times.begin(), times.end());
  std::printf("arrow-down: median %.1f, 95 of 100 within %.1f, longest %.1f\n", times[kArrows / 2],
              times[kArrows * 95 / 100 - 1], times.back());
}

void TimeLetter(board::MainBoard& window, const std::string& path) {
  if (board::TakeTextFiles({path}).stored != 1) {
    std::printf("%s: not taken\n", path.c_str());
    return;
  }
  jet::Recordset last;
  last.Open("SELECT Max(ID) AS Last FROM Email", repository::RepositoryDb());
  int64_t id = last.Field(0).AsInt();
  double time = Milliseconds([&] {
    window.Letter().Show(id);
    Settle(window);
  });
  std::printf("%s: %.1f\n", path.c_str(), time);
}

int Run(const std::string& home, const std::vector<std::string>& letters) {
  testing::ScriptedUi ui;
  std::string folder = platform::WithSeparator(home);
  repository::SeedAppFolder(folder, platform::FolderOf(platform::ProgramPath()));
  core::PrepareRun(folder);
  if (!repository::OpenRepository(false)) return 1;
  repository::ReadOptions();
  {
    board::MainBoard window;
    if (!window.Load()) return 1;
    window.resize(1200, 900);
    window.show();
    Settle(window);
    TimeArrows(window);
    for (const std::string& letter : letters) TimeLetter(window, letter);
  }
  board::ResetBoard();
  repository::DisconnectRepository();
  return 0;
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "tarnwick-window HOME [LETTER...]\n");
    return 2;
  }
  if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  return tarnwick::Run(argv[1], {argv + 2, argv + argc});
}
