// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the parser of header dates.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/run_state.h"
#include "intake/date_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarnwick;
  core::State().LogEvents = false;
  core::State().LocalZoneHours = 3;
  DateTime date;
  std::string time;
  std::string zone;
  intake::twParseDate(date, time, zone, std::string(reinterpret_cast<const char*>(data), size),
                      true);
  int year = date.ToCivil().year;
  // A shift may leave the first and last representable year by some hours.
  if (year < 99 || year > 10000) std::abort();
  return 0;
}
