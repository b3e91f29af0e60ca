// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/environment.h"

#include <malloc.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "platform/clock.h"
#include "platform/clock_override.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int /*signal*/) {
  interrupted = 1;
}

}  // namespace

std::optional<std::string> EnvironmentText(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

void SetEnvironmentText(const char* name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

std::string HomeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
  if (CurrentClockOverride().passwordHome) return *CurrentClockOverride().passwordHome;
  const passwd* entry = getpwuid(geteuid());
  bool isFolder = entry != nullptr && entry->pw_dir != nullptr && entry->pw_dir[0] == '/';
  return isFolder ? entry->pw_dir : "";
}

std::string DataFolder() {
  if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && data[0] == '/') {
    return WithSeparator(data);
  }
  std::string home = HomeFolder();
  if (home.empty()) {
    throw Error(
        ErrorNumber::kPathAccess,
        "There is no home folder to keep the mail in: HOME is not set, and the system knows "
        "none for this user. Set HOME, or name a folder in TARNWICK_HOME.");
  }
  return WithSeparator(home) + ".local/share/";
}

std::string LogonName() {
  if (CurrentClockOverride().logonName) return *CurrentClockOverride().logonName;
  if (const passwd* entry = getpwuid(geteuid()); entry != nullptr && entry->pw_name[0] != '\0') {
    return entry->pw_name;
  }
  if (const char* name = std::getenv("USER"); name != nullptr && name[0] != '\0') return name;
  return "user";
}

void KeepFreedMemory() {
  constexpr int kKept = 16 << 20;
  mallopt(M_MMAP_THRESHOLD, kKept);
  mallopt(M_TRIM_THRESHOLD, kKept);
}

std::vector<std::string> PrepareConsole(int argc, char** argv) {
  return std::vector<std::string>(argv + 1, argv + argc);
}

bool IsConsole(int stream) {
  return isatty(stream) != 0;
}

void CatchInterrupts() {
  std::signal(SIGINT, OnInterrupt);
}

bool WasInterrupted() {
  if (interrupted == 0) return false;
  interrupted = 0;
  return true;
}

}  // namespace tarnwick::platform
