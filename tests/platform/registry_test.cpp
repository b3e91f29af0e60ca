// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/registry.h"

#include "samples/dbx_builder.h"
#include "samples/hive_builder.h"
#include "samples/profile_builder.h"
#include "support/machine.h"
#include "support/real_data.h"
#include "support/testing.h"

namespace tarnwick::platform {
namespace {

using samples::DbxImage;
using samples::HiveBuilder;
using testing::OneSpelling;
using testing::TempFolder;

constexpr const char* kStore = "Local Settings/Application Data/Identities/{A}/Microsoft/";

std::string MakeIn(const TempFolder& home, const std::string& folder) {
  MakeFolder(home.File(folder));
  return home.File(folder);
}

std::string TextOf(Registry& registry, const std::string& key, const std::string& name) {
  auto value = registry.Value(key, name);
  return value ? value->text : "(none)";
}

std::string EmptyStore(DbxImage::Kind kind) {
  return DbxImage(kind).Bytes();
}

TEST(Hive, FindsKeysAndValuesWithoutRegardToCase) {
  HiveBuilder hive;
  hive.AddText("Identities\\{B}", "Username", "Zoë");
  hive.AddText("Identities\\{A}\\Software", "Store Root", "%UserProfile%\\Mail\\", true);
  hive.AddNumber("Identities", "Identity Ordinal", 0xFFFFFFFE);
  hive.AddRaw("Identities", "Password", 3, std::string("\x01\x00\x02", 3));
  hive.AddText("Identities\\Анна", "Имя", "Анна");
  TempFolder home;
  WriteFile(home.File("ntuser.dat"), hive.Build());
  ASSERT_EQ(DetectProfile(home.Path()), ProfileKind::kHive);
  auto registry = OpenProfile(home.Path());

  auto keys = registry->SubKeys("IDENTITIES");
  ASSERT_TRUE(keys);
  EXPECT_THAT(*keys, UnorderedElementsAre("{A}", "{B}", "Анна"));
  EXPECT_FALSE(registry->SubKeys("Identities\\{C}"));
  EXPECT_EQ(TextOf(*registry, "identities\\{b}", "UserName"), "Zoë");
  EXPECT_EQ(TextOf(*registry, "Identities\\Анна", "Имя"), "Анна");
  EXPECT_EQ(TextOf(*registry, "Identities", "Password"), std::string("\x01\x00\x02", 3));
  EXPECT_EQ(registry->Value("Identities\\{A}\\Software", "store root").value().type,
            RegistryValue::Type::kExpandableText);
  RegistryValue number = registry->Value("Identities", "Identity Ordinal").value();
  EXPECT_EQ(number.type, RegistryValue::Type::kNumber);
  EXPECT_EQ(number.number, 0xFFFFFFFE);

  bool keyExists = false;
  EXPECT_FALSE(registry->Value("Identities\\{B}", "Store Root", &keyExists));
  EXPECT_TRUE(keyExists);
  EXPECT_FALSE(registry->Value("Identities\\{C}", "Username", &keyExists));
  EXPECT_FALSE(keyExists);
}

TEST(Hive, MapsWindowsPathsBelowTheProfile) {
  TempFolder home;
  std::string profile = MakeIn(home, "Ann/");
  MakeFolder(profile + "Local Settings/Application Data/Mail/");
  HiveBuilder hive;
  hive.AddText("Volatile Environment", "MAILROOT",
               "C:\\Documents and Settings\\Ann\\Local Settings");
  WriteFile(profile + "NTUSER.DAT", hive.Build());
  auto registry = OpenProfile(profile);
  std::string mail = profile + "Local Settings/Application Data/Mail/";
  const Case kRows[] = {
      {"the profile's variable", "%UserProfile%\\Local Settings\\Application Data\\Mail\\", mail},
      {"case is ignored", "%USERPROFILE%\\LOCAL SETTINGS\\application data\\MAIL\\", mail},
      {"another owner's name",
       "C:\\Documents and Settings\\Old Ann\\Local Settings\\Application Data\\Mail\\", mail},
      {"a variable of the registry", "%mailroot%\\Application Data\\Mail\\", mail},
      {"%LocalAppData%", "%LocalAppData%\\Mail\\", mail},
      {"no separator at the end", "%LocalAppData%\\Mail", mail.substr(0, mail.size() - 1)},
      {"a way up finds nothing above", "C:\\..\\..\\Local Settings\\", profile + "Local Settings/"},
      {"nowhere", "D:\\Elsewhere\\Mail\\", "D:/Elsewhere/Mail/"},
      {"an unknown variable stays", "%Nobody%\\Mail\\", "%Nobody%/Mail/"},
  };
  for (const Case& row : kRows) {
    EXPECT_EQ(OneSpelling(registry->MapPath(row.given)), OneSpelling(row.expected)) << row.what;
  }
}

TEST(Hive, OnAWholeDiskMapsPathsOutsideTheProfile) {
  TempFolder home;
  std::string profile = MakeIn(home, "disk/Documents and Settings/Ann/");
  MakeIn(home, "disk/windows/");
  std::string mail = MakeIn(home, "disk/Mail/OE/");
  WriteFile(profile + "NTUSER.DAT", HiveBuilder().Build());
  EXPECT_EQ(OneSpelling(OpenProfile(profile)->MapPath("D:\\mail\\oe\\")), OneSpelling(mail));
}

// Reads all of a registry that opens.
void Walk(Registry& registry, const std::string& path, int depth) {
  auto keys = registry.SubKeys(path);
  registry.Value(path, "Username");
  if (!keys || depth == 0) return;
  for (const std::string& key : *keys) {
    std::string below = path;
    if (!below.empty()) below += '\\';
    Walk(registry, below.append(key), depth - 1);
  }
}

TEST(Hive, ReadsLongListsAndLongValues) {
  HiveBuilder hive;
  std::vector<std::string> names;
  for (int i = 100; i < 1000; ++i) names.push_back("Key" + std::to_string(i));
  for (const std::string& name : names) hive.AddText("Many\\" + name, "Name", name);
  std::string bytes;
  for (int i = 0; bytes.size() < 50'000; ++i) bytes += std::to_string(i) + ",";
  hive.AddRaw("Many", "Long", 3, bytes);
  hive.AddRaw("Many", "Short", 3, "abc");
  TempFolder home;
  WriteFile(home.File("NTUSER.DAT"), hive.Build());
  auto registry = OpenProfile(home.Path());
  EXPECT_EQ(registry->SubKeys("many"), names);
  EXPECT_EQ(TextOf(*registry, "Many\\KEY999", "name"), "Key999");
  EXPECT_TRUE(registry->Value("Many", "Long")->text == bytes);
  EXPECT_EQ(registry->Value("Many", "Short")->text, "abc");
}

TEST(Hive, ListsOfKeysEnd) {
  HiveBuilder hive;
  for (int i = 0; i < 300; ++i) hive.AddKey("Many\\" + std::to_string(i));
  std::string bytes = hive.Build();
  // A list of lists that names itself, and a key that has fewer keys than its lists name.
  size_t lists = bytes.find("ri");
  auto place = static_cast<uint32_t>(lists - 4 - 4096);
  for (size_t i = 0; i < 4; ++i) bytes[lists + 4 + i] = static_cast<char>(place >> (8 * i));
  bytes[bytes.find("Many") - 76 + 20] = '\x96';
  bytes[bytes.find("Many") - 76 + 21] = '\0';
  TempFolder home;
  WriteFile(home.File("NTUSER.DAT"), bytes);
  auto keys = OpenProfile(home.Path())->SubKeys("Many");
  ASSERT_TRUE(keys);
  EXPECT_EQ(keys->size(), 150U);
}

TEST(Hive, DamageEndsInError75OrLeavesTheRest) {
  HiveBuilder hive;
  hive.AddText("Identities\\{A}\\Software\\Microsoft", "Store Root", "C:\\Mail\\");
  hive.AddText("Identities\\{A}", "Username", "Ann");
  const std::string sound = hive.Build();
  TempFolder home;
  auto tryIt = [&](const std::string& bytes, const std::string& what) {
    WriteFile(home.File("NTUSER.DAT"), bytes);
    try {
      Walk(*OpenProfile(home.Path()), "", 6);
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), ErrorNumber::kPathAccess) << what;
    }
  };
  for (size_t size : {0, 3, 512, 4096, 4200}) {
    WriteFile(home.File("NTUSER.DAT"), sound.substr(0, size));
    EXPECT_THROW(Walk(*OpenProfile(home.Path()), "", 6), Error) << size;
  }
  WriteFile(home.File("NTUSER.DAT"), "MZ" + sound.substr(2));
  EXPECT_THROW(OpenProfile(home.Path()), Error);
  std::string broken = sound;
  broken[broken.find("Microsoft") - 76] = 'x';
  WriteFile(home.File("NTUSER.DAT"), broken);
  EXPECT_EQ(TextOf(*OpenProfile(home.Path()), "Identities\\{A}\\Software\\Microsoft", "Store Root"),
            "(none)");
  EXPECT_EQ(TextOf(*OpenProfile(home.Path()), "Identities\\{A}", "Username"), "Ann");
  for (size_t place = 4096; place < 4096 + 1024; ++place) {
    std::string bytes = sound;
    bytes[place] = "\0\x7F\xFF"[place % 3];
    tryIt(bytes, "byte " + std::to_string(place));
  }
}

TEST(Wine, ReadsTheTextsOfUserReg) {
  TempFolder home;
  WriteFile(home.File("user.reg"),
            "WINE REGISTRY Version 2\n"
            ";; All keys relative to \\\\User\\\\S-1-5-21\n\n"
            "#arch=win32\n\n"
            "[Identities] 1123456789\n"
            "#time=1c5a2b3\n"
            "\"Identity Ordinal\"=dword:0000001f\n"
            "@=\"the default\"\n\n"
            "[Identities\\\\{A}] 1123456789\n"
            "\"Username\"=\"Zo\\x00eb \\\"Z\\\" \\\\ \\x0410\\x043d\\xd83d\\xde00.\"\n"
            "\"Expand\"=str(2):\"%UserProfile%\\\\Mail\\\\\"\n"
            "\"Hex\"=hex(2):43,00,3a,00,\\\n  5c,00,4d,00,00,00\n"
            "\"Binary\"=hex:01,00,ff\n"
            "\"Octal\"=\"a\\0011b\\351c\\12\"\n"
            "\"Zero\"=\"kept\\0 and \\x0000lost\"\n"
            "\"Broken\"=\"no end\n"
            "no value at all\n"
            "[Identities\\\\{B}\n");
  ASSERT_EQ(DetectProfile(home.Path()), ProfileKind::kWine);
  auto registry = OpenProfile(home.Path());
  auto keys = registry->SubKeys("identities");
  ASSERT_TRUE(keys);
  EXPECT_THAT(*keys, ElementsAre("{A}"));
  EXPECT_EQ(registry->Value("Identities", "identity ordinal")->number, 0x1FU);
  EXPECT_EQ(TextOf(*registry, "Identities", ""), "the default");
  EXPECT_EQ(registry->Value("Identities\\{A}", "Expand")->type,
            RegistryValue::Type::kExpandableText);
  const std::pair<const char*, std::string> kTexts[] = {{"USERNAME", "Zoë \"Z\" \\ Ан😀."},
                                                        {"Expand", "%UserProfile%\\Mail\\"},
                                                        {"Hex", "C:\\M"},
                                                        {"Binary", std::string("\x01\x00\xFF", 3)},
                                                        {"Octal", "a\x01\x31\x62\u00E9c\n"},
                                                        {"Zero", "kept"},
                                                        {"Broken", "(none)"}};
  for (const auto& [name, text] : kTexts) {
    EXPECT_EQ(TextOf(*registry, "Identities\\{A}", name), text) << name;
  }
}

TEST(Wine, MapsDrivesOfThePrefix) {
  TempFolder home;
  std::string mail = MakeIn(home, "drive_c/users/ann/Mail/");
  MakeIn(home, "drive_c/users/Public/");
  std::string disk = MakeIn(home, "disk/Post/");
  MakeIn(home, "dosdevices/");
  testing::MakeLink(home.File("disk"), home.File("dosdevices/d:"));
  WriteFile(home.File("user.reg"), "WINE REGISTRY Version 2\n");
  auto registry = OpenProfile(home.Path());
  EXPECT_EQ(OneSpelling(registry->MapPath("C:\\Users\\Ann\\mail\\")), OneSpelling(mail));
  EXPECT_EQ(OneSpelling(registry->MapPath("%UserProfile%\\Mail\\")), OneSpelling(mail));
  EXPECT_EQ(OneSpelling(registry->MapPath("D:\\post\\")),
            OneSpelling(home.File("dosdevices/d:/Post/")));
  EXPECT_EQ(OneSpelling(registry->MapPath("E:\\none\\")), OneSpelling("E:/none/"));
}

TEST(DbxFolder, WithAListIsOneIdentityNamedAfterTheFolder) {
  TempFolder home;
  std::string folder = MakeIn(home, "Ann's mail/");
  std::string store = MakeIn(home, std::string("Ann's mail/") + kStore);
  WriteFile(store + "Folders.dbx", EmptyStore(DbxImage::Kind::kFolderList));
  ASSERT_EQ(DetectProfile(folder), ProfileKind::kDbxWithFolderList);
  auto registry = OpenProfile(folder);
  EXPECT_THAT(*registry->SubKeys("Identities"), ElementsAre("Ann's mail"));
  EXPECT_EQ(TextOf(*registry, "Identities\\Ann's mail", "UserName"), "Ann's mail");
  std::string root = TextOf(
      *registry, "Identities\\Ann's mail\\Software\\Microsoft\\Outlook Express\\5.0", "Store Root");
  EXPECT_EQ(OneSpelling(registry->MapPath(root)), OneSpelling(store));
}

TEST(DbxFolder, WithoutAListIsOneIdentityForEachFolderOfFiles) {
  TempFolder home;
  std::string one = MakeIn(home, "one/");
  WriteFile(one + "Inbox.dbx", EmptyStore(DbxImage::Kind::kMessages));
  EXPECT_EQ(DetectProfile(one), ProfileKind::kDbxFiles);
  EXPECT_THAT(*OpenProfile(one)->SubKeys("Identities"), ElementsAre("one"));

  std::string two = MakeIn(home, "two/Ann/");
  for (const std::string& file : {two + "Inbox.dbx", MakeIn(home, "two/Bob/1/") + "a.DBX",
                                  MakeIn(home, "two/Bob/2/") + "b.dbx"}) {
    WriteFile(file, EmptyStore(DbxImage::Kind::kMessages));
  }
  EXPECT_THAT(*OpenProfile(home.File("two"))->SubKeys("Identities"),
              ElementsAre("Ann", "Bob", "Bob 2"));

  EXPECT_EQ(DetectProfile(MakeIn(home, "empty/")), ProfileKind::kNone);
  EXPECT_EQ(DetectProfile(home.File("missing/")), ProfileKind::kNone);
  EXPECT_EQ(DetectProfile(""), ProfileKind::kNone);
  EXPECT_THROW(OpenProfile(home.File("missing/")), Error);
}

TEST(RealHives, AreRead) {
  std::string data = testing::RealData("reg/");
  if (data.empty()) GTEST_SKIP() << "no real data here";
  TempFolder home;
  for (const char* name : {"NTUSER.DAT", "NTUSER-french.DAT"}) {
    CopyFile(data + name, home.File("NTUSER.DAT"));
    auto registry = OpenProfile(home.Path());
    auto keys = registry->SubKeys("Identities");
    ASSERT_TRUE(keys);
    ASSERT_EQ(keys->size(), 1U);
    std::string user = TextOf(*registry, "Identities\\" + keys->front(), "UserName");
    EXPECT_EQ(user, name[6] == '.' ? "Main Identity" : "Identité principale");
  }
}

}  // namespace
}  // namespace tarnwick::platform
