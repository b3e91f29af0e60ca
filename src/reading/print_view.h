// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Letters on paper: each begins a page, with the lines over it and its text, formatted where it is
// so.
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

class QPagedPaintDevice;

namespace tarnwick::reading {

// False when the person stopped it or nothing could be written; errors are reported.
bool PrintLetters(const std::vector<int64_t>& ids, QPagedPaintDevice& paper);
// A4 pages. The file is replaced when it is there.
bool SaveAsPdf(const std::vector<int64_t>& ids, const QString& path);

}  // namespace tarnwick::reading
