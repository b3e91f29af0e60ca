// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/file_uri.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "database/engine/engine.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::jet {

namespace {

// A path in the form that lets options follow it, whatever characters it holds.
std::string UriOf(const std::string& path, std::string_view options) {
  constexpr char kHexDigits[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (char character : platform::SystemPath(path)) {
    auto byte = static_cast<unsigned char>(character);
    if (std::isalnum(byte) != 0 ||
        std::string_view("/-._~").find(character) != std::string_view::npos) {
      uri += character;
    } else {
      uri += {'%', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
    }
  }
  return uri.append(options);
}

// The options that keep a file, and the folder it lies in, as they are.
std::string_view ForReading(const std::string& path) {
  constexpr size_t kWriteVersion = 18;
  constexpr char kLogged = 2;
  if (Database::HasLog(path)) {
    throw Error(ErrorNumber::kPathAccess,
                "The file " + path + " is in use, or was not closed: its log lies beside it");
  }
  // A file that was copied while it was open wants a log made beside it, unless it is said to be on
  // a medium that nothing is written to.
  char head[kWriteVersion + 1] = {};
  std::string place = platform::SystemPath(path);
  std::ifstream file(std::filesystem::path(std::u8string(place.begin(), place.end())),
                     std::ios::binary);
  file.read(head, sizeof(head));
  return head[kWriteVersion] == kLogged ? "?mode=ro&immutable=1" : "?mode=ro";
}

}  // namespace

std::string FileUri(const std::string& path, bool forReading) {
  return UriOf(path, forReading ? ForReading(path) : "");
}

}  // namespace tarnwick::jet
