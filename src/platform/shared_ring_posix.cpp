// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shared_ring_posix.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace tarnwick::platform {

namespace {

// A writer that waits goes on once so much is free, and not for each byte.
constexpr uint64_t kRoomToGoOn = SharedRing::kCapacity / 4;

void* Map(int descriptor, size_t size) {
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

// Between a place and the end of the memory, or all of it, whichever is shorter.
size_t Stretch(uint64_t place, uint64_t count) {
  return static_cast<size_t>(
      std::min(count, SharedRing::kCapacity - place % SharedRing::kCapacity));
}

}  // namespace

std::optional<SharedRing> SharedRing::Make() {
  int lowest = memfd_create("tarnwick", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (lowest < 0) return std::nullopt;
  // Above the numbers that a helper has its descriptors under.
  constexpr int kLeast = 16;
  int descriptor = fcntl(lowest, F_DUPFD_CLOEXEC, kLeast);
  close(lowest);
  if (descriptor < 0) return std::nullopt;
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;
  void* memory = nullptr;
  if (ftruncate(descriptor, kSize) == 0 && fcntl(descriptor, F_ADD_SEALS, kSeals) == 0) {
    memory = Map(descriptor, kSize);
  }
  if (memory == nullptr) {
    close(descriptor);
    return std::nullopt;
  }
  return SharedRing(descriptor, memory);
}

std::optional<SharedRing> SharedRing::Handed(int descriptor) {
  bool isSealed = fcntl(descriptor, F_GET_SEALS) > 0;
  void* memory = isSealed ? Map(descriptor, kSize) : nullptr;
  close(descriptor);
  if (memory == nullptr) return std::nullopt;
  return SharedRing(-1, memory);
}

SharedRing::SharedRing(SharedRing&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      memory_(std::exchange(other.memory_, nullptr)),
      place_(other.place_) {}

SharedRing::~SharedRing() {
  CloseDescriptor();
  if (memory_ != nullptr) munmap(memory_, kSize);
}

void SharedRing::CloseDescriptor() {
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
}

uint64_t SharedRing::Waiting() const {
  uint64_t waiting = Shared().written.load() - place_;
  return waiting <= kCapacity ? waiting : 0;
}

bool SharedRing::IsBroken() const {
  return Shared().written.load() - place_ > kCapacity;
}

size_t SharedRing::Read(void* buffer, size_t count) {
  size_t size = Stretch(place_, std::min<uint64_t>(count, Waiting()));
  if (size == 0) return 0;
  std::memcpy(buffer, Bytes() + place_ % kCapacity, size);
  place_ += size;
  State& shared = Shared();
  shared.taken.store(place_);
  bool isRoom = kCapacity - Waiting() >= kRoomToGoOn;
  if (isRoom && shared.writerWaits.load() != 0 && shared.writerWaits.exchange(0) != 0) {
    syscall(SYS_futex, &shared.writerWaits, FUTEX_WAKE, 1, nullptr, nullptr, 0);
  }
  return size;
}

std::string_view SharedRing::Write(std::string_view bytes) {
  State& shared = Shared();
  auto room = [&] { return kCapacity - (place_ - shared.taken.load()); };
  while (room() == 0) {
    shared.writerWaits.store(1);
    if (room() > 0) break;
    syscall(SYS_futex, &shared.writerWaits, FUTEX_WAIT, 1, nullptr, nullptr, 0);
  }
  size_t size = Stretch(place_, std::min<uint64_t>(bytes.size(), room()));
  std::memcpy(Bytes() + place_ % kCapacity, bytes.data(), size);
  place_ += size;
  shared.written.store(place_);
  return bytes.substr(size);
}

}  // namespace tarnwick::platform
