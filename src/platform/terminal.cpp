// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/terminal.h"

#include <cstdio>

#include "platform/error.h"
#include "platform/hidden_terminal.h"
#include "platform/system_files.h"

namespace tarnwick::platform {

namespace {

constexpr size_t kLongest = 1000;

// Takes the last character, of one or more bytes, away.
size_t WithoutLast(Secret& line, size_t length) {
  while (length > 0) {
    auto byte = static_cast<unsigned char>(line.Data()[--length]);
    if ((byte & 0xC0) != 0x80) break;
  }
  return length;
}

}  // namespace

std::optional<Secret> ReadHidden(const std::string& prompt) {
  constexpr int kInterrupt = 3;
  constexpr int kEndOfInput = 4;
  constexpr int kBackspace = 8;
  constexpr int kEraseLine = 21;
  constexpr int kDelete = 127;
  HiddenTerminal terminal;
  if (!terminal.IsThere()) return std::nullopt;
  terminal.Show(prompt);
  Secret line(kLongest);
  size_t length = 0;
  int byte = 0;
  while ((byte = terminal.Next()) != '\n' && byte != '\r') {
    if (byte == HiddenTerminal::kEnd || byte == kInterrupt || byte == kEndOfInput) {
      terminal.Show("\n");
      return std::nullopt;
    }
    if (byte == kBackspace || byte == kDelete) {
      length = WithoutLast(line, length);
    } else if (byte == kEraseLine) {
      length = 0;
    } else if (length < kLongest) {
      line.Data()[length++] = static_cast<char>(byte);
    }
  }
  terminal.Show("\n");
  line.Cut(length);
  return line;
}

Secret ReadSecretLine(const std::string& path) {
  // Without a buffer, which would be let go with the password in it.
  std::FILE* file = system::OpenStream(path);
  if (file == nullptr) throw Error(ErrorNumber::kFileNotFound, "File not found: " + path);
  std::setvbuf(file, nullptr, _IONBF, 0);
  Secret line(kLongest + 1);
  size_t length = 0;
  int byte = 0;
  while (length <= kLongest && (byte = std::fgetc(file)) != EOF && byte != '\n') {
    line.Data()[length++] = static_cast<char>(byte);
  }
  std::fclose(file);
  if (length > kLongest) {
    throw Error(ErrorNumber::kPathAccess, "The first line of " + path + " is too long");
  }
  if (length > 0 && line.Data()[length - 1] == '\r') --length;
  line.Cut(length);
  return line;
}

}  // namespace tarnwick::platform
