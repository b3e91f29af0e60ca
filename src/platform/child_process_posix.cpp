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
#include <optional>
#include <utility>

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/shared_ring_posix.h"

namespace tarnwick::platform {

namespace {

constexpr int kChannel = 0;
constexpr int kRing = kHandedFile + 1;

// Standard input is the channel, output and errors go nowhere. What the child writes comes through
// the ring, and through the channel a byte where we wait for it; all of it through the channel
// where there is no ring.
int Spawn(const std::string& program, const InputFile* file, int childEnd, int ring, pid_t& id) {
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
  if (ring >= 0) {
    posix_spawn_file_actions_adddup2(&actions, ring, kRing);
  } else {
    posix_spawn_file_actions_addopen(&actions, kRing, "/dev/null", O_RDONLY, 0);
  }
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  int result = posix_spawn(&id, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  return result;
}

// The child's.
std::optional<SharedRing>& Ring() {
  static std::optional<SharedRing> ring = SharedRing::Handed(kRing);
  return ring;
}

bool Send(std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t count = write(kChannel, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

}  // namespace

struct ChildProcess::Machinery {
  Machinery(int ourEnd, std::optional<SharedRing> shared, pid_t child)
      : channel(ourEnd), ring(std::move(shared)), id(child) {}
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

  // What has come through the channel; 0 when nothing did within the time, or the child is gone.
  size_t Receive(void* buffer, size_t count, int64_t deadline) {
    do {
      ssize_t got = recv(channel, buffer, count, MSG_DONTWAIT);
      if (got > 0) return static_cast<size_t>(got);
      isGone = got == 0 || (errno != EINTR && errno != EAGAIN);
      if (isGone) break;
    } while (WaitFor(POLLIN, deadline));
    return 0;
  }

  // The same through the ring.
  size_t Take(void* buffer, size_t count, int64_t deadline) {
    size_t got = ring->Read(buffer, count);
    for (bool isWoken = true; got == 0 && isWoken;) {
      char wakings[64];
      ring->AnnounceWait();
      got = ring->Read(buffer, count);
      isWoken = got == 0 && Receive(wakings, sizeof wakings, deadline) > 0;
      ring->EndWait();
      // What a child wrote before it ended is there still.
      if (got == 0) got = ring->Read(buffer, count);
      isGone = isGone || ring->IsBroken();
    }
    return got;
  }

  int channel;
  std::optional<SharedRing> ring;
  pid_t id;
  bool isGone = false;  // as the last of these found it
};

ChildProcess::ChildProcess(const std::string& program, const InputFile* file) {
  if (!FileExists(program)) {
    throw Error(ErrorNumber::kFileNotFound, "File not found: " + program);
  }
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw Error(ErrorNumber::kPathAccess, "No channel to a helper program");
  }
  std::optional<SharedRing> ring = SharedRing::Make();
  pid_t id = 0;
  int result = Spawn(program, file, ends[1], ring ? ring->Descriptor() : -1, id);
  close(ends[1]);
  if (ring) ring->CloseDescriptor();
  if (result != 0) {
    close(ends[0]);
    throw Error(ErrorNumber::kPathAccess, "Helper program can't be started: " + program);
  }
  machinery_ = std::make_unique<Machinery>(ends[0], std::move(ring), id);
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
  hasEnded_ = !machinery_;
  if (hasEnded_) return 0;
  int64_t deadline = TickMilliseconds() + timeoutMilliseconds;
  size_t got = machinery_->ring ? machinery_->Take(buffer, count, deadline)
                                : machinery_->Receive(buffer, count, deadline);
  hasEnded_ = got == 0 && machinery_->isGone;
  return got;
}

size_t ReadFromParent(void* buffer, size_t count) {
  Ring();  // is taken over before the process shuts itself in
  ssize_t got = 0;
  do {
    got = read(kChannel, buffer, count);
  } while (got < 0 && errno == EINTR);
  return got < 0 ? 0 : static_cast<size_t>(got);
}

bool WriteToParent(std::string_view bytes) {
  std::optional<SharedRing>& ring = Ring();
  if (!ring) return Send(bytes);
  while (!bytes.empty()) {
    bytes = ring->Write(bytes);
    if (ring->MustWake() && !Send(".")) return false;
  }
  return true;
}

bool IsParentFaster() {
  return Ring() && Ring()->Unread() < SharedRing::kCapacity / 8;
}

}  // namespace tarnwick::platform
