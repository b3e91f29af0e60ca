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
  EXPECT_FALSE(AskToRaise(folder.Path()));
  {
    RaiseSocket first(folder.Path());
    ASSERT_GE(first.Descriptor(), 0);
    EXPECT_FALSE(first.TakeCalls());
    EXPECT_TRUE(AskToRaise(folder.Path()));
    EXPECT_TRUE(first.TakeCalls());
    EXPECT_FALSE(first.TakeCalls());
    // As after a kill: another one takes the place of what was left.
    RaiseSocket second(folder.Path());
    EXPECT_GE(second.Descriptor(), 0);
  }
  EXPECT_FALSE(AskToRaise(folder.Path()));
  EXPECT_TRUE(ListFiles(folder.Path()).empty());
  // A file of that name is nobody's to remove, and a long path is no reason to fail.
  WriteFile(folder.File("Window.socket"), "mine");
  EXPECT_LT(RaiseSocket(folder.Path()).Descriptor(), 0);
  EXPECT_EQ(ReadFile(folder.File("Window.socket")), "mine");
  EXPECT_LT(RaiseSocket(folder.File(std::string(200, 'x'))).Descriptor(), 0);
}

}  // namespace
}  // namespace tarnwick::platform
