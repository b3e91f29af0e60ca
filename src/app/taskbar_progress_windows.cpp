// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "taskbar_progress.h"

#include <windows.h>

#include <shobjidl.h>

#include <memory>

#include "board/main_board_window.h"

namespace tarnwick::app {

namespace {

using Taskbar = std::shared_ptr<ITaskbarList3>;

// nullptr where there is none.
Taskbar TheTaskbar() {
  ITaskbarList3* list = nullptr;
  if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                              reinterpret_cast<void**>(&list)))) {
    return nullptr;
  }
  Taskbar taskbar(list, [](ITaskbarList3* held) { held->Release(); });
  return SUCCEEDED(taskbar->HrInit()) ? taskbar : nullptr;
}

}  // namespace

void FollowProgress(board::MainBoard& window) {
  Taskbar taskbar = TheTaskbar();
  if (taskbar == nullptr) return;
  auto button = [&window] { return reinterpret_cast<HWND>(window.winId()); };
  using board::StatusPanelsView;
  QObject::connect(&window.Status(), &StatusPanelsView::Progressed, &window,
                   [taskbar, button](qint64 done, qint64 total) {
                     if (total > 0) {
                       taskbar->SetProgressValue(button(), static_cast<ULONGLONG>(done),
                                                 static_cast<ULONGLONG>(total));
                     } else {
                       taskbar->SetProgressState(button(), TBPF_INDETERMINATE);
                     }
                   });
  QObject::connect(&window.Status(), &StatusPanelsView::ProgressEnded, &window,
                   [taskbar, button] { taskbar->SetProgressState(button(), TBPF_NOPROGRESS); });
}

}  // namespace tarnwick::app
