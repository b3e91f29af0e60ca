// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Run by the build: makes the empty databases that lie beside the program.
#include <iostream>

#include "platform/error.h"
#include "repository/schema.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: tarnwick-make-databases FOLDER" << std::endl;
    return 2;
  }
  try {
    tarnwick::repository::CreateDatabaseFiles(argv[1]);
    return 0;
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
