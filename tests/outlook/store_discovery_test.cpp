// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/store_discovery.h"
#include "support/testing.h"

namespace tarnwick::outlook {
namespace {

class StoreDiscovery : public ::testing::Test {
 protected:
  std::string Put(const std::string& relative, const std::string& bytes = "x") {
    std::string path = folder_.File(relative);
    platform::MakeFolder(platform::FolderOf(path));
    platform::WriteFile(path, bytes);
    return path;
  }
  testing::TempFolder folder_;
};

TEST_F(StoreDiscovery, LooksInTheUsualPlacesWithoutRegardToCase) {
  std::string xp = Put("Local Settings/application data/MICROSOFT/Outlook/Outlook.PST");
  std::string seven = Put("Documents/Outlook Files/me@firm.test.pst");
  std::string copied = Put("old mail.pst");
  Put("Documents/letter.doc");
  std::string server = Put("AppData/Local/Microsoft/Outlook/me.ost");
  std::string elsewhere = Put("Desktop/old disk/2003/archive.pst");
  Put("1/2/3/4/5/6/7/8/9/10/11/12/13/too deep.pst");
  EXPECT_THAT(FindStores(folder_.Path()), ElementsAre(copied, xp, server, seven, elsewhere));
}

TEST_F(StoreDiscovery, FollowsTheRegistry) {
  // C:\Mail\work.pst, as a service of a mail profile names it: UTF-16 bytes.
  std::string path = "C:\\Mail\\work.pst";
  std::string hex;
  constexpr char kDigits[] = "0123456789abcdef";
  for (char c : path + '\0') {
    hex += hex.empty() ? "" : ",";
    hex += {kDigits[c >> 4], kDigits[c & 15]};
    hex += ",00";
  }
  Put("user.reg",
      "WINE REGISTRY Version 2\n\n[Software\\\\Microsoft\\\\Windows "
      "NT\\\\CurrentVersion\\\\Windows "
      "Messaging Subsystem\\\\Profiles\\\\Outlook\\\\0a0d02]\n\"001f6700\"=hex:" +
          hex + "\n\"001e6700\"=\"C:\\\\Mail\\\\none.doc\"\n");
  std::string named = Put("drive_c/Mail/work.pst");
  EXPECT_THAT(FindStores(folder_.Path()), ElementsAre(named));
}

TEST_F(StoreDiscovery, GivesNothingWhereNothingIs) {
  EXPECT_THAT(FindStores(""), IsEmpty());
  EXPECT_THAT(FindStores(folder_.File("missing")), IsEmpty());
  EXPECT_THAT(FindStores(folder_.Path()), IsEmpty());
}

TEST(DefaultStoreName, KnowsItInOtherOutlooks) {
  for (const char* name : {"Personal Folders", "outlook data file", "ЛИЧНЫЕ ПАПКИ"}) {
    EXPECT_TRUE(IsDefaultStoreName(name)) << name;
  }
  EXPECT_FALSE(IsDefaultStoreName("Archive Folders"));
  EXPECT_FALSE(IsDefaultStoreName(""));
}

}  // namespace
}  // namespace tarnwick::outlook
