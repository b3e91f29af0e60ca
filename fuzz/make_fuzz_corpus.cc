// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes what the drivers begin with, a folder each: make_fuzz_corpus DIR.
#include <cstdio>
#include <string>

#include "platform/error.h"
#include "platform/files.h"
#include "seeds.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_fuzz_corpus DIR\n");
    return 2;
  }
  try {
    std::string folder = tarnwick::platform::WithSeparator(argv[1]);
    for (const auto& [name, seeds] : tarnwick::fuzz::Seeds()) {
      tarnwick::platform::MakeFolder(folder + name);
      for (size_t i = 0; i < seeds.size(); ++i) {
        tarnwick::platform::WriteFile(folder + name + "/seed" + std::to_string(i), seeds[i]);
      }
    }
  } catch (const tarnwick::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
