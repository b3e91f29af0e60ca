// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/child_process.h"

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

constexpr int kChannel = 0;

// Standard input is the channel, output and errors go nowhere.
int Spawn(const std::string& program, const InputFile* file, int childEnd, pid_t& id) {
  std::string name = program;
  char* argv[] = {name.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, childEnd, kChannel);
  if (file != nullptr) {
    posix_spawn_file_actions_adddup2(&actions, file->Descriptor(), kHandedFile);
  } else {
    posix_spawn_file_actions_addopen(&actions, kHandedFile, "/dev/null", O_RDONLY, 0);
  }
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  int result = posix_spawn(&id, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  return result;
}

}  // namespace

struct ChildProcess::Machinery {
  Machinery(int ourEnd, pid_t child) : channel(ourEnd), id(child) {}
  ~Machinery() {
    close(channel);
    kill(id, SIGKILL);
    while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  Machinery(const Machinery&) = delete;
  Machinery& operator=(const Machinery&) = delete;

  bool WaitFor(short events, int64_t deadline) const {
    while (true) {
      int64_t left = deadline - TickMilliseconds();
      if (left < 0) return false;
      pollfd entry{channel, events, 0};
      int result = poll(&entry, 1, static_cast<int>(std::min<int64_t>(left, 1'000'000)));
      if (result > 0) return true;
      if (result < 0 && errno != EINTR) return false;
    }
  }

  int channel;
  pid_t id;
};

ChildProcess::ChildProcess(const std::string& program, const InputFile* file) {
  if (!FileExists(program)) {
    throw Error(ErrorNumber::kFileNotFound, "File not found: " + program);
  }
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw Error(ErrorNumber::kPathAccess, "No channel to a helper program");
  }
  pid_t id = 0;
  int result = Spawn(program, file, ends[1], id);
  close(ends[1]);
  if (result != 0) {
    close(ends[0]);
    throw Error(ErrorNumber::kPathAccess, "Helper program can't be started: " + program);
  }
  machinery_ = std::make_unique<Machinery>(ends[0], id);
  id_ = id;
}

ChildProcess::~ChildProcess() = default;

void ChildProcess::Kill() {
  machinery_.reset();
  id_ = 0;
}

bool ChildProcess::Write(std::string_view bytes, int64_t timeoutMilliseconds) {
  int64_t deadline = TickMilliseconds() + timeoutMilliseconds;
  while (!bytes.empty()) {
    if (!machinery_ || !machinery_->WaitFor(POLLOUT, deadline)) return false;
    ssize_t count =
        send(machinery_->channel, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
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
  while (machinery_ && machinery_->WaitFor(POLLIN, deadline)) {
    ssize_t got = recv(machinery_->channel, buffer, count, MSG_DONTWAIT);
    if (got > 0) return static_cast<size_t>(got);
    hasEnded_ = got == 0 || (errno != EINTR && errno != EAGAIN);
    if (hasEnded_) return 0;
  }
  hasEnded_ = !machinery_;
  return 0;
}

size_t ReadFromParent(void* buffer, size_t count) {
  ssize_t got = 0;
  do {
    got = read(kChannel, buffer, count);
  } while (got < 0 && errno == EINTR);
  return got < 0 ? 0 : static_cast<size_t>(got);
}

bool WriteToParent(std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t count = write(kChannel, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

}  // namespace tarnwick::platform
