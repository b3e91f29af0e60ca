// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Bytes from a helper program to ours, through memory that both have. It holds several megabytes,
// so that the helper works on while we are busy, and no byte passes through the kernel.
//
// The helper may be malicious and may change any of the memory at any time. Our end keeps its own
// place for itself, takes over what it finds before anybody looks at it, and believes of the
// helper's place only that there can be so much. The memory's size is sealed. It is no way to us
// but for these bytes.
//
// An end that finds nothing to do says that it waits and looks once more; the other end, having
// done something, asks whether it waits. Each sees at least what the other wrote before it asked.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick::platform {

class SharedRing {
 public:
  static constexpr uint64_t kCapacity = uint64_t{4} << 20;

  // Makes the memory; Descriptor() is handed to the helper. nullopt where the system has none.
  static std::optional<SharedRing> Make();
  // The helper's: that of a descriptor, which is closed.
  static std::optional<SharedRing> Handed(int descriptor);
  SharedRing(SharedRing&& other) noexcept;
  ~SharedRing();
  SharedRing& operator=(SharedRing&& other) = delete;

  int Descriptor() const { return descriptor_; }
  void CloseDescriptor();

  // --- Our end.

  // At most count bytes; 0 where there are none.
  size_t Read(void* buffer, size_t count);
  // The helper said what can't be.
  bool IsBroken() const;
  // Before Read looks for the last time: whoever writes from now on is to wake us.
  void AnnounceWait() { Shared().readerWaits.store(1); }
  void EndWait() { Shared().readerWaits.store(0); }

  // --- The helper's end.

  // As much of it as there is room for, if only after waiting for that; what is left.
  std::string_view Write(std::string_view bytes);
  uint64_t Unread() const { return place_ - Shared().taken.load(); }
  // Whether the reader is to be woken.
  bool MustWake() { return Shared().readerWaits.load() != 0 && Shared().readerWaits.exchange(0); }

 private:
  struct State {
    alignas(64) std::atomic<uint64_t> written;  // counted from the beginning, as taken is
    alignas(64) std::atomic<uint64_t> taken;
    alignas(64) std::atomic<uint32_t> readerWaits;
    std::atomic<uint32_t> writerWaits;  // waits on it while it is 1
  };
  static constexpr size_t kHead = 4096;
  static constexpr size_t kSize = kHead + kCapacity;
  static_assert(sizeof(State) <= kHead && std::atomic<uint64_t>::is_always_lock_free);

  SharedRing(int descriptor, void* memory) : descriptor_(descriptor), memory_(memory) {}
  uint64_t Waiting() const;  // bytes that can be read
  State& Shared() const { return *static_cast<State*>(memory_); }
  char* Bytes() const { return static_cast<char*>(memory_) + kHead; }

  int descriptor_;
  void* memory_;
  uint64_t place_ = 0;  // of this end
};

}  // namespace tarnwick::platform
