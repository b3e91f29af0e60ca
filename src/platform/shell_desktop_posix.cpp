// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shell_desktop.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <future>
#include <memory>
#include <thread>

#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// xdg-open refuses within a second or two. Where it stays longer it has become, or waits for, the
// program that shows the file.
constexpr std::chrono::milliseconds kLongestRefusal{4000};
constexpr std::chrono::milliseconds kTurn{10};

// posix_spawn's settings: a session of its own, so that a Ctrl-C on our terminal or our end does
// not take the mail program along; usual signals; nothing read from or printed on our terminal.
class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    short flags = POSIX_SPAWN_SETSIGMASK;
#ifdef POSIX_SPAWN_SETSID
    flags |= POSIX_SPAWN_SETSID;
#endif
    posix_spawnattr_setflags(&attributes_, flags);
    posix_spawn_file_actions_init(&files_);
    posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&files_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const posix_spawnattr_t* Attributes() const {
    return &attributes_;
  }
  const posix_spawn_file_actions_t* Files() const {
    return &files_;
  }

 private:
  posix_spawnattr_t attributes_;
  posix_spawn_file_actions_t files_;
};

// The exit status of a child, once there is one: 0 only for a good end. A thread collects it
// however long the child stays, so that none is left behind as a zombie.
std::future<int> CollectStatus(pid_t child) {
  std::promise<int> promise;
  std::future<int> status = promise.get_future();
  std::thread([child, ended = std::move(promise)]() mutable {
    int raw = 0;
    while (waitpid(child, &raw, 0) < 0 && errno == EINTR) {
    }
    ended.set_value(WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw));
  }).detach();
  return status;
}

}  // namespace

ShellResult OpenOnDesktop(const std::string& path, const std::function<void()>& whileWaiting) {
  SpawnSettings settings;
  std::string program = "xdg-open";
  std::string argument = AbsolutePath(path);  // begins with "/", so it is never taken for an option
  std::array<char*, 3> words = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  int failure = posix_spawnp(&child, program.c_str(), settings.Files(), settings.Attributes(),
                             words.data(), environ);
  if (failure == ENOENT) return ShellResult::kNoHandler;
  if (failure != 0) {
    throw Error(ErrorNumber::kPathAccess,
                "xdg-open can't be started: " + std::string(std::strerror(failure)));
  }
  std::future<int> status = CollectStatus(child);
  for (auto waited = kTurn; waited < kLongestRefusal; waited += kTurn) {
    if (status.wait_for(kTurn) == std::future_status::ready) {
      return status.get() == 0 ? ShellResult::kOpened : ShellResult::kNoHandler;
    }
    if (whileWaiting) whileWaiting();
  }
  return ShellResult::kOpened;
}

bool HasDesktopProgramFor(const std::string& /*extension*/) {
  return false;
}

}  // namespace tarnwick::platform
