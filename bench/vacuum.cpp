// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-vacuum FROM TO: copies a database file with the engine's own VACUUM INTO, the yardstick
// of maintenance.sh.
#include <iostream>

#include "database/engine/engine.h"
#include "platform/error.h"
#include "repository/repository.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: tarnwick-vacuum FROM TO" << std::endl;
    return 2;
  }
  try {
    tarnwick::jet::Database database(argv[1], tarnwick::repository::DatabasePassword(),
                                     tarnwick::jet::Database::Mode::kExisting);
    tarnwick::jet::Statement vacuum(database, "VACUUM INTO ?1");
    vacuum.BindText(1, argv[2]);
    vacuum.Run();
    return 0;
  } catch (const tarnwick::Error& error) {
    std::cerr << error.Number() << " " << error.Description() << std::endl;
    return 1;
  }
}
