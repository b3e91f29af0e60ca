// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What would be told (a box, an entry of the log, an error), kept as data. Whoever reads for the
// program in another process has nobody to tell; it hands its tellings over with what it has read,
// and they are told in their turn, as if the program had come across them itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick::core {

struct Telling {
  enum class Kind : uint8_t {
    kBox,         // ShowRepeatedMessage: what is its kind
    kEntry,       // WriteLog
    kProgress,    // LogProgress
    kError,       // ReportCurrentException of an Error: what is the routine
    kFile,        // a file that stood in a message and is left behind: what is its name
    kPlace,       // why messages of a place are not come to
    kUnknownFile  // ReportUnknownFormat of the file that is read
  };
  Kind kind = Kind::kEntry;
  std::string what = {};
  std::string text = {};
  int32_t number = 0;       // of an error
  bool isBox = false;       // an error that is shown, not only logged
  std::string detail = {};  // of an error
};
inline constexpr uint8_t kTellingKinds = 7;

// While it lives, what messages.h would tell or log is kept here; what it would ask is answered
// with no. One at a time.
class TellingsKept {
 public:
  TellingsKept();
  ~TellingsKept();
  TellingsKept(const TellingsKept&) = delete;
  TellingsKept& operator=(const TellingsKept&) = delete;

  std::vector<Telling> Take() { return std::move(kept_); }

  // Keeps it; false where nothing is being kept, and whoever asks tells it.
  static bool Keep(Telling telling);
  static bool IsOn();

 private:
  std::vector<Telling> kept_;
};

// Tells what another process came across; only kinds of messages.h.
void Tell(const Telling& telling);

}  // namespace tarnwick::core
