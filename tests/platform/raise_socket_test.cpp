// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/raise_socket.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "support/temp_folder.h"

namespace tarnwick::platform {
namespace {

TEST(RaiseSocket, ASecondStartIsHeardOnlyWhileTheFirstListens) {
  testing::TempFolder folder;
  testing::TempFolder other;
  EXPECT_FALSE(AskToRaise(folder.Path()));
  {
    RaiseSocket first(folder.Path());
    ASSERT_NE(first.Handle(), -1);
    EXPECT_FALSE(AskToRaise(other.Path()));
    EXPECT_FALSE(first.TakeCalls());
    EXPECT_TRUE(AskToRaise(folder.Path()));
    EXPECT_TRUE(first.TakeCalls());
    EXPECT_FALSE(first.TakeCalls());
  }
  EXPECT_FALSE(AskToRaise(folder.Path()));
  EXPECT_TRUE(ListFiles(folder.Path()).empty());
  EXPECT_EQ(RaiseSocket(folder.File("missing")).Handle(), -1);
}

}  // namespace
}  // namespace tarnwick::platform
