// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/terminal.h"

#include <cstdio>

#ifdef _WIN32
#include <conio.h>
#else
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#endif

#include "platform/error.h"

namespace tarnwick::platform {

namespace {

constexpr size_t kLongest = 1000;
constexpr int kEnd = -1;

// The terminal, byte by byte, with nothing shown.
#ifdef _WIN32

class HiddenTerminal {
 public:
  bool IsThere() const { return true; }
  void Show(const std::string& text) { std::fputs(text.c_str(), stderr); }
  int Next() { return _getch(); }
};

#else

class HiddenTerminal {
 public:
  HiddenTerminal() : handle_(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
    if (handle_ < 0 || tcgetattr(handle_, &former_) != 0) return;
    termios hidden = former_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
    isHidden_ = tcsetattr(handle_, TCSAFLUSH, &hidden) == 0;
  }
  ~HiddenTerminal() {
    if (isHidden_) tcsetattr(handle_, TCSAFLUSH, &former_);
    if (handle_ >= 0) close(handle_);
  }
  HiddenTerminal(const HiddenTerminal&) = delete;
  HiddenTerminal& operator=(const HiddenTerminal&) = delete;

  bool IsThere() const { return isHidden_; }
  void Show(const std::string& text) {
    [[maybe_unused]] ssize_t written = write(handle_, text.data(), text.size());
  }
  int Next() {
    unsigned char byte = 0;
    return read(handle_, &byte, 1) == 1 ? byte : kEnd;
  }

 private:
  int handle_;
  termios former_ = {};
  bool isHidden_ = false;
};

#endif

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
    if (byte == kEnd || byte == kInterrupt || byte == kEndOfInput) {
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
  std::FILE* file = std::fopen(path.c_str(), "rb");
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
