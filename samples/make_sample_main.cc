// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-make-sample FOLDER: writes the sample mail profile.
#include <cstdio>

#include "platform/error.h"
#include "platform/files.h"
#include "samples/sample_profile.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: tarnwick-make-sample FOLDER\n", stderr);
    return 2;
  }
  try {
    tarnwick::samples::WriteSampleProfile(tarnwick::platform::WithSeparator(argv[1]));
  } catch (const tarnwick::Error& error) {
    std::fprintf(stderr, "tarnwick-make-sample: %s\n", error.what());
    return 1;
  }
  return 0;
}
