// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The one exception of the program. Code inside a module throws it; every public routine of a room
// is wrapped once (core/guard.h) and turns it into a report and the routine's failure value.
//
// The number is one that a user of this kind of program can look up (ErrorNumber); an engine
// failure carries the engine's own number (26: not a database, 5: locked by another process,
// 11: damaged, 13: disk full, ...). The description is UTF-8, one line, without the number.
#pragma once

#include <exception>
#include <string>

namespace tarnwick {

namespace ErrorNumber {
inline constexpr int kSubscript = 9;      // a fixed-capacity list was exceeded
inline constexpr int kTypeMismatch = 13;  // a text that is no date or number
inline constexpr int kFileNotFound = 53;
inline constexpr int kDiskFull = 61;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathAccess = 75;      // every other failure of a file or folder
inline constexpr int kSystemCode = 200;     // a timestamp that the system refuses to convert
inline constexpr int kUnexpected = 51;      // an internal error: a bug, out of memory
inline constexpr int kObjectClosed = 3704;  // a recordset or connection used while closed
inline constexpr int kObjectOpen = 3705;    // opened while open
inline constexpr int kNewerFile = 3343;     // a database of a later version of the program
inline constexpr int kNotUpdatable = 3251;  // a change where rows can only be read
inline constexpr int kNoCurrentRow = 3021;  // a row was asked for at the end or the beginning
inline constexpr int kNoSuchItem = 3265;    // a field name that the recordset does not have
// A protected database, without its password.
inline constexpr int kWrongPassword = 3031;
}  // namespace ErrorNumber

class Error : public std::exception {
 public:
  Error(int number, std::string description)
      : number_(number), description_(std::move(description)) {}

  int Number() const { return number_; }
  const std::string& Description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  int number_;
  std::string description_;
};

}  // namespace tarnwick
