// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include "platform/environment.h"
#include "platform/registry.h"
#include "platform/windows_text.h"
#include "support/testing.h"

namespace tarnwick::platform {
namespace {

using testing::TempFolder;

TEST(WindowsText, NamesComeBackAsTheyAre) {
  std::wstring units;
  for (unsigned unit = 1; unit < 0x10000; ++unit) units += static_cast<wchar_t>(unit);
  units += L"\U0001F600\xDC00\xD800";
  EXPECT_TRUE(Wide(Utf8(units)) == units) << "halves of pairs as well";
  EXPECT_EQ(Wide("a\xFF\xC3"
                 "b\xF8\x88\x80\x80\x80"),
            L"a\xFFFD\xFFFD"
            L"b\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(Wide("\xC0\xAF\xE0\x80\xAF"), L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD")
      << "longer than need be";
}

TEST(WindowsPath, IsAbsoluteAndNeverLeavesItsRoot) {
  const Case kRows[] = {
      {"drive", "C:\\a\\b", "\\\\?\\C:\\a\\b"},
      {"other separators", "C:/a//b/", "\\\\?\\C:\\a\\b"},
      {"dots", "C:\\a\\.\\..\\..\\..\\b", "\\\\?\\C:\\b"},
      {"root", "C:\\", "\\\\?\\C:\\"},
      {"share", "\\\\server\\share\\..\\a", "\\\\?\\UNC\\server\\share\\a"},
      {"refused names", "C:\\con\\a. ", "\\\\?\\C:\\con\\a. "},
      {"a part of a file", "C:\\a:b\\c", ""},
      {"as the system has it", "\\\\?\\C:\\a", "\\\\?\\C:\\a"},
  };
  for (const Case& row : kRows) EXPECT_EQ(Utf8(WidePath(row.given)), row.expected) << row.what;
  EXPECT_EQ(AbsolutePath("C:/a/../b/"), "C:\\b\\");
  EXPECT_THAT(AbsolutePath("a"), EndsWith("\\a"));
}

TEST(WindowsFiles, LongAndRefusedNamesAreFiles) {
  TempFolder temp;
  std::string folder = temp.Path();
  for (int i = 0; i < 8; ++i) folder += std::string(60, static_cast<char>('a' + i)) + "\\";
  MakeFolder(folder);
  const Texts names = {"con", "nul.txt", "ends with a dot.", "Grüße 日本 😀"};
  for (const std::string& name : names) {
    WriteFile(folder + name, name);
    EXPECT_EQ(ReadFile(folder + name), name);
  }
  RenameFile(folder + "con", folder + "aux");
  EXPECT_THAT(ListFiles(folder), UnorderedElementsAre("aux", names[1], names[2], names[3]));
  std::string found =
      FindIgnoringCase(temp.Path(), std::string(60, 'A') + "/" + std::string(60, 'B')).value_or("");
  EXPECT_THAT(found, EndsWith("\\" + std::string(60, 'b'))) << "as it is listed";
  EXPECT_FALSE(FindIgnoringCase(temp.Path(), "a*"));
  for (const std::string& name : ListFiles(folder)) RemoveFile(folder + name);
  EXPECT_TRUE(FreeSpace(folder) > 0);
  WriteFile(temp.File("whole"), "x");
  EXPECT_THROW(WriteFile(temp.File("whole:part"), "x"), Error);
  EXPECT_FALSE(FileExists(temp.File("whole:part")));
}

TEST(WindowsFiles, AnOpenFileIsRenamedAndCut) {
  TempFolder folder;
  WriteFile(folder.File("place"), "newer");
  InputFile open(folder.File("place"));
  CutFile(folder.File("place"), 3);
  WriteFile(folder.File("taken"), "");
  EXPECT_FALSE(RenameNew(folder.File("place"), folder.File("taken")));
  EXPECT_TRUE(RenameNew(folder.File("place"), folder.File("other")));
  EXPECT_EQ(ReadFile(folder.File("other")), "new");
}

TEST(WindowsFiles, AnOpenFileIsReplacedAndRemoved) {
  TempFolder folder;
  WriteFile(folder.File("place"), "old");
  InputFile open(folder.File("place"));
  WriteFile(folder.File("new"), "new");
  RenameFile(folder.File("new"), folder.File("place"));
  EXPECT_EQ(ReadFile(folder.File("place")), "new");
  InputFile again(folder.File("place"));
  RemoveFile(folder.File("place"));
  EXPECT_FALSE(FileExists(folder.File("place")));
}

TEST(OwnRegistry, IsAskedOfTheSystem) {
  constexpr const wchar_t* kKey = L"Software\\Tarnwick test\\Größe";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                            nullptr),
            ERROR_SUCCESS);
  auto put = [&](const wchar_t* name, DWORD type, const void* bytes, size_t size) {
    RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(bytes), static_cast<DWORD>(size));
  };
  std::wstring path = L"%UserProfile%\\Mail\\";
  put(L"Store Root", REG_EXPAND_SZ, path.c_str(), (path.size() + 1) * sizeof(wchar_t));
  put(L"Имя", REG_SZ, L"Анна", 5 * sizeof(wchar_t));
  DWORD number = 0xFFFFFFFE;
  put(L"Ordinal", REG_DWORD, &number, sizeof number);
  put(L"Raw", REG_BINARY, "\x01\x00\x02", 3);
  put(L"", REG_SZ, L"", 0);

  ASSERT_EQ(DetectProfile(OwnProfileFolder()), ProfileKind::kOwn);
  auto registry = OpenProfile(OwnProfileFolder());
  const std::string kPath = "software/Tarnwick TEST\\größe";
  EXPECT_THAT(registry->SubKeys("Software\\Tarnwick test").value(), ElementsAre("Größe"));
  EXPECT_FALSE(registry->SubKeys(kPath + "\\none"));
  RegistryValue root = registry->Value(kPath, "store root").value();
  EXPECT_EQ(root.type, RegistryValue::Type::kExpandableText);
  EXPECT_EQ(registry->Expand(root.text), OwnProfileFolder() + "Mail\\");
  EXPECT_EQ(registry->MapPath("%NOBODYS%\\x\\"), "%NOBODYS%\\x\\");
  EXPECT_EQ(registry->Value(kPath, "Имя").value().text, "Анна");
  EXPECT_EQ(registry->Value(kPath, "Ordinal").value().number, number);
  EXPECT_EQ(registry->Value(kPath, "Raw").value().text, std::string("\x01\x00\x02", 3));
  EXPECT_EQ(registry->Value(kPath, "").value().text, "");
  bool keyExists = false;
  EXPECT_FALSE(registry->Value(kPath, "none", &keyExists));
  EXPECT_TRUE(keyExists);
  RegCloseKey(key);
  RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tarnwick test");
}

}  // namespace
}  // namespace tarnwick::platform
