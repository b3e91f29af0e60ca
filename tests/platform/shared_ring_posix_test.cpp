// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shared_ring_posix.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "support/testing.h"

namespace tarnwick::platform {
namespace {

TEST(SharedRing, PassesManyTimesItsSizeWhoeverIsTheFaster) {
  auto ours = SharedRing::Make();
  ASSERT_TRUE(ours);
  auto byteAt = [](uint64_t place) { return static_cast<char>(place * 31 + place / 4096); };
  constexpr uint64_t kAll = 5 * SharedRing::kCapacity + 12345;
  std::thread helper([&, descriptor = dup(ours->Descriptor())] {
    auto ring = SharedRing::Handed(descriptor);
    std::string piece;
    for (uint64_t place = 0; place < kAll; place += piece.size()) {
      piece.resize(std::min<uint64_t>(kAll - place, 1 + place % 300'007));
      for (size_t i = 0; i < piece.size(); ++i) piece[i] = byteAt(place + i);
      for (std::string_view left = piece; !left.empty();) left = ring->Write(left);
    }
  });
  std::string piece(size_t{1} << 20, '\0');
  uint64_t place = 0;
  bool isSame = true;
  while (place < kAll) {
    size_t got = ours->Read(piece.data(), 1 + place % piece.size());
    for (size_t i = 0; i < got; ++i) isSame = isSame && piece[i] == byteAt(place + i);
    place += got;
    // First it is the faster, then the helper, who has to wait for room.
    if (place > kAll / 2) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  helper.join();
  EXPECT_TRUE(isSame);
  EXPECT_EQ(ours->Read(piece.data(), piece.size()), 0u);
}

TEST(SharedRing, BelievesNothingOfAMaliciousHelper) {
  auto ours = SharedRing::Make();
  ASSERT_TRUE(ours);
  EXPECT_NE(ftruncate(ours->Descriptor(), 0), 0) << "made smaller, it would end who reads it";
  void* memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, ours->Descriptor(), 0);
  ASSERT_NE(memory, MAP_FAILED);
  auto& written = *static_cast<std::atomic<uint64_t>*>(memory);
  auto& taken = *reinterpret_cast<std::atomic<uint64_t>*>(static_cast<char*>(memory) + 64);
  std::string read(100, '\0');
  for (uint64_t said : {SharedRing::kCapacity + 1, uint64_t{1} << 63, UINT64_MAX}) {
    written = said;
    EXPECT_EQ(ours->Read(read.data(), read.size()), 0u) << said;
    EXPECT_TRUE(ours->IsBroken()) << said;
  }
  // Our place is not the one that lies there.
  written = 60;
  taken = 1'000'000'000;
  EXPECT_EQ(ours->Read(read.data(), read.size()), 60u);
  written = 59;
  EXPECT_TRUE(ours->IsBroken()) << "taken back";
  munmap(memory, 4096);
}

}  // namespace
}  // namespace tarnwick::platform
