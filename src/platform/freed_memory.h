// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#pragma once

namespace tarnwick::platform {

// While it lives, memory that was freed stays with the program, up to 16 MB at the end of it: what a
// long run takes and frees for each message would else be given back, asked for and cleared by the
// system each time. At its end what is left goes back. One at a time.
class FreedMemoryKept {
 public:
  FreedMemoryKept();
  ~FreedMemoryKept();
  FreedMemoryKept(const FreedMemoryKept&) = delete;
  FreedMemoryKept& operator=(const FreedMemoryKept&) = delete;
};

}  // namespace tarnwick::platform
