// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/window_place.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>

#include "board/layout_store.h"

namespace tarnwick::board {

bool RestorePlace(QWidget& window) {
  QRect screen = QApplication::primaryScreen()->availableGeometry();
  WindowPlace place = ReadWindowPlace();
  auto stored = [](int twips, int usual, int extent) {
    int pixels = twips / kTwipsPerPixel;
    return pixels >= 300 && pixels <= extent ? pixels : usual;
  };
  int usualWidth = std::max(std::min(1180, screen.width() - 40), window.minimumSizeHint().width());
  window.resize(stored(place.width, usualWidth, screen.width()),
                stored(place.height, std::min(700, screen.height() - 80), screen.height()));
  QPoint corner = screen.center() - window.rect().center();
  auto left = FittingEdge(place.left, window.width() * kTwipsPerPixel,
                          (screen.right() + 1) * kTwipsPerPixel);
  auto top = FittingEdge(place.top, window.height() * kTwipsPerPixel,
                         (screen.bottom() + 1) * kTwipsPerPixel);
  if (left) corner.setX(*left / kTwipsPerPixel);
  if (top) corner.setY(*top / kTwipsPerPixel);
  if (!window.isVisible()) window.move(corner);
  return window.width() == place.width / kTwipsPerPixel;
}

void StorePlace(const QWidget& window) {
  QRect place = window.isMaximized() ? window.normalGeometry() : QRect(window.pos(), window.size());
  SaveWindowPlace({place.left() * kTwipsPerPixel, place.top() * kTwipsPerPixel,
                   place.width() * kTwipsPerPixel, place.height() * kTwipsPerPixel});
}

}  // namespace tarnwick::board
