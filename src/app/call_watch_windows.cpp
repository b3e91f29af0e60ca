// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "call_watch.h"

#include <QWinEventNotifier>

namespace tarnwick::app {

std::unique_ptr<QObject> WatchCalls(const platform::RaiseSocket& calls,
                                    std::function<void()> heard) {
  if (calls.Handle() == -1) return nullptr;
  auto watch = std::make_unique<QWinEventNotifier>(reinterpret_cast<void*>(calls.Handle()));
  QObject::connect(watch.get(), &QWinEventNotifier::activated, watch.get(),
                   [&calls, heard = std::move(heard)] {
                     if (calls.TakeCalls()) heard();
                   });
  return watch;
}

}  // namespace tarnwick::app
