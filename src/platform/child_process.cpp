// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/child_process.h"

#ifdef _WIN32

#include "platform/error.h"

namespace tarnwick::platform {

// Where Outlook itself runs, its stores are read through it and no helper is needed.
ChildProcess::ChildProcess(const std::string& program, const InputFile&) {
  throw Error(ErrorNumber::kPathAccess, "Helper programs can't be started here: " + program);
}
ChildProcess::~ChildProcess() = default;
bool ChildProcess::Write(std::string_view, int64_t) {
  return false;
}
size_t ChildProcess::Read(void*, size_t, int64_t) {
  return 0;
}
void ChildProcess::Kill() {}

}  // namespace tarnwick::platform

#else

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// Standard input is the channel, output and errors go nowhere.
int Spawn(const std::string& program, int file, int childEnd, pid_t& id) {
  std::string name = program;
  char* argv[] = {name.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, childEnd, 0);
  posix_spawn_file_actions_adddup2(&actions, file, kHandedFile);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  int result = posix_spawn(&id, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  return result;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const InputFile& file) {
  if (!FileExists(program)) {
    throw Error(ErrorNumber::kFileNotFound, "File not found: " + program);
  }
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw Error(ErrorNumber::kPathAccess, "No channel to a helper program");
  }
  pid_t id = 0;
  int result = Spawn(program, file.Descriptor(), ends[1], id);
  close(ends[1]);
  if (result != 0) {
    close(ends[0]);
    throw Error(ErrorNumber::kPathAccess, "Helper program can't be started: " + program);
  }
  channel_ = ends[0];
  id_ = id;
}

ChildProcess::~ChildProcess() {
  Kill();
}

void ChildProcess::Kill() {
  if (channel_ >= 0) close(channel_);
  channel_ = -1;
  if (id_ == 0) return;
  kill(static_cast<pid_t>(id_), SIGKILL);
  while (waitpid(static_cast<pid_t>(id_), nullptr, 0) < 0 && errno == EINTR) {
  }
  id_ = 0;
}

bool ChildProcess::WaitFor(short events, int64_t deadline) {
  while (true) {
    int64_t left = deadline - TickMilliseconds();
    if (left < 0) return false;
    pollfd entry{channel_, events, 0};
    int result = poll(&entry, 1, static_cast<int>(std::min<int64_t>(left, 1'000'000)));
    if (result > 0) return true;
    if (result < 0 && errno != EINTR) return false;
  }
}

bool ChildProcess::Write(std::string_view bytes, int64_t timeoutMilliseconds) {
  int64_t deadline = TickMilliseconds() + timeoutMilliseconds;
  while (!bytes.empty()) {
    if (channel_ < 0 || !WaitFor(POLLOUT, deadline)) return false;
    ssize_t count = send(channel_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0) {
      bytes.remove_prefix(static_cast<size_t>(count));
    } else if (errno != EINTR && errno != EAGAIN) {
      return false;
    }
  }
  return true;
}

size_t ChildProcess::Read(void* buffer, size_t count, int64_t timeoutMilliseconds) {
  int64_t deadline = TickMilliseconds() + timeoutMilliseconds;
  while (channel_ >= 0 && WaitFor(POLLIN, deadline)) {
    ssize_t got = recv(channel_, buffer, count, MSG_DONTWAIT);
    if (got > 0) return static_cast<size_t>(got);
    hasEnded_ = got == 0 || (errno != EINTR && errno != EAGAIN);
    if (hasEnded_) return 0;
  }
  hasEnded_ = channel_ < 0;
  return 0;
}

}  // namespace tarnwick::platform

#endif
