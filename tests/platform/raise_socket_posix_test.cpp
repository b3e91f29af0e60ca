// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/raise_socket.h"
#include "support/temp_folder.h"

namespace tarnwick::platform {
namespace {

TEST(RaiseSocket, TakesThePlaceOfWhatAKilledProgramLeftAndOfNothingElse) {
  testing::TempFolder folder;
  {
    RaiseSocket first(folder.Path());
    RaiseSocket second(folder.Path());
    EXPECT_GE(second.Handle(), 0);
  }
  WriteFile(folder.File("Window.socket"), "mine");
  EXPECT_LT(RaiseSocket(folder.Path()).Handle(), 0);
  EXPECT_EQ(ReadFile(folder.File("Window.socket")), "mine");
  EXPECT_LT(RaiseSocket(folder.File(std::string(200, 'x'))).Handle(), 0) << "a long path";
}

}  // namespace
}  // namespace tarnwick::platform
