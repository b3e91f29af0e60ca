// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a desktop reads of the program has to fit together: the validators look at one file each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packaging/read_file.h"

namespace tarnwick::packaging {
namespace {

using ::testing::HasSubstr;

const std::string kFolder = std::string(TARNWICK_SOURCE) + "/packaging/";
const std::string kId = "org.tarnwick.Tarnwick";

TEST(Desktop, OneNameServesMenuCatalogueAndIcons) {
  EXPECT_THAT(ReadFile(kFolder + kId + ".desktop"), HasSubstr("\nIcon=" + kId + "\n"));
  std::string metainfo = ReadFile(TARNWICK_METAINFO);
  EXPECT_THAT(metainfo, HasSubstr("<id>" + kId + "</id>"));
  EXPECT_THAT(metainfo, HasSubstr(">" + kId + ".desktop</launchable>"));
  EXPECT_THAT(metainfo, HasSubstr("<icon type=\"stock\">" + kId + "</icon>"));
}

uint32_t BigEndian(const std::string& bytes, size_t at) {
  uint32_t number = 0;
  for (size_t i = at; i < at + 4; ++i) number = number << 8 | static_cast<uint8_t>(bytes[i]);
  return number;
}

// A panel that asks for 22 pixels and gets 24 shows a blur.
TEST(Desktop, EachPngHasTheSizeOfItsName) {
  for (uint32_t size : {16, 22, 24, 32, 48, 64, 128, 256}) {
    std::string png = ReadFile(kFolder + "icons/" + kId + "-" + std::to_string(size) + ".png");
    ASSERT_GT(png.size(), 24U) << size;
    EXPECT_EQ(png.substr(1, 3), "PNG") << size;
    EXPECT_EQ(BigEndian(png, 16), size);
    EXPECT_EQ(BigEndian(png, 20), size);
  }
}

}  // namespace
}  // namespace tarnwick::packaging
