// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "desktop_keyring.h"

#include "support/testing.h"

namespace tarnwick::app {
namespace {

TEST(DesktopKeyring, APasswordIsKeptFoundReplacedAndForgotten) {
  const std::string name = "a test's own";
  DesktopKeyring keyring;
  keyring.Remove(name);
  ASSERT_EQ(keyring.WhyNot(), "");
  EXPECT_FALSE(keyring.Find(name));
  for (std::string_view password : {std::string_view("p\0w\xC3\xA4", 5), std::string_view("two")}) {
    EXPECT_EQ(keyring.Keep(name, platform::Secret(password)), "");
    auto found = DesktopKeyring().Find(name);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->Bytes(), password);
  }
  EXPECT_FALSE(keyring.Find(name + "s"));
  keyring.Remove(name);
  EXPECT_FALSE(keyring.Find(name));
}

}  // namespace
}  // namespace tarnwick::app
