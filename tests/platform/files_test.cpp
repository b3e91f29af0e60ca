// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/files.h"

#include "platform/charset.h"
#include "platform/staged_file.h"
#include "support/machine.h"
#include "support/testing.h"

namespace tarnwick::platform {
namespace {

using testing::TempFolder;

int NumberOf(const std::function<void()>& action) {
  try {
    action();
    return 0;
  } catch (const Error& error) {
    return error.Number();
  }
}

TEST(SafeFileName, NeverLeavesItsFolderNorMisleads) {
  const Case kRows[] = {
      {"ordinary", "report 2004.doc", "report 2004.doc"},
      {"path up", "../../etc/passwd", "_.._etc_passwd"},
      {"windows path", "C:\\Windows\\system.ini", "C__Windows_system.ini"},
      {"only dots", "...", ""},
      {"hidden", ".bashrc", "bashrc"},
      {"trailing dots and blanks", "a.txt. . ", "a.txt"},
      {"device", "con.txt", "_con.txt"},
      {"device with number", "LPT1", "_LPT1"},
      {"no device", "console.txt", "console.txt"},
      {"control characters", "a\tb\nc\x7F.txt", "a_b_c_.txt"},
      {"NUL inside", std::string("a\0b.exe", 7), "a_b.exe"},
      {"reversed text", "photo\u202Egpj.exe", "photo_gpj.exe"},
      {"a hidden mark of direction", "a\u061Cb", "a_b"},
      {"cyrillic", "Привет.txt", "Привет.txt"},
      {"an option to commands", "-rf", "_-rf"},
      {"an option behind dots", ". --help.txt", "_--help.txt"},
      {"broken UTF-8", "a\xFFz\xC3.txt", "a_z_.txt"},
  };
  for (const Case& row : kRows) EXPECT_EQ(SafeFileName(row.given), row.expected) << row.what;
}

TEST(SafeFileName, LongNamesKeepTheirExtensionAndFitAFileSystem) {
  std::string name = SafeFileName(std::string(5000, 'x') + ".jpeg", 60);
  EXPECT_EQ(name.size(), 60U);
  EXPECT_EQ(name.substr(55), ".jpeg");
  std::string wide;
  for (int i = 0; i < 500; ++i) wide += "\u65E5";
  EXPECT_LE(SafeFileName(wide, 255).size(), 200U);
  EXPECT_TRUE(IsValidUtf8(SafeFileName(wide, 255)));
}

TEST(Files, FailuresCarryTheirNumbers) {
  TempFolder folder;
  WriteFile(folder.File("big"), std::string(100, 'x'));
  const std::pair<std::function<void()>, int> kActions[] = {
      {[&] { InputFile file(folder.File("missing")); }, ErrorNumber::kFileNotFound},
      {[&] { InputFile file(folder.Path()); }, ErrorNumber::kPathAccess},
      {[&] { OutputFile file(folder.File("no/such/folder")); }, ErrorNumber::kFileNotFound},
      {[&] { RemoveFile(folder.File("missing")); }, 0},
      {[&] { ReadFile(folder.File("big"), 99); }, ErrorNumber::kPathAccess},
      {[&] { RequireSpace(folder.File("to/be/made/"), 1); }, 0},  // of the nearest folder there
      {[&] { RequireSpace(folder.File("to/be/made"), UINT64_MAX / 2); }, ErrorNumber::kDiskFull}};
  for (size_t i = 0; i < std::size(kActions); ++i) {
    EXPECT_EQ(NumberOf(kActions[i].first), kActions[i].second) << i;
  }
  SetFileFault([](FileOperation operation, const std::string& path) {
    if (operation == FileOperation::kWrite)
      throw Error(ErrorNumber::kDiskFull, "Disk full: " + path);
  });
  EXPECT_EQ(NumberOf([&] { WriteFile(folder.File("full"), "x"); }), ErrorNumber::kDiskFull);
  SetFileFault(nullptr);
}

// What a stop at any step leaves: the older file as it was, and nothing beside it.
TEST(StagedFile, IsThereWholeOrNotAtAll) {
  TempFolder folder;
  std::string place = folder.File("letter");
  auto replace = [&] {
    StagedFile file(place + std::string(kUnfinished));
    WriteFile(file.Path(), "new");
    file.Replace(place);
    EXPECT_TRUE(file.IsInPlace());
  };
  WriteFile(place, "old");
  WriteFile(place + std::string(kUnfinished), "of a run that was killed");
  for (FileOperation failing :
       {FileOperation::kOpen, FileOperation::kWrite, FileOperation::kRename}) {
    SetFileFault([&](FileOperation operation, const std::string& path) {
      if (operation == failing) throw Error(ErrorNumber::kDiskFull, path);
    });
    EXPECT_EQ(NumberOf(replace), ErrorNumber::kDiskFull);
    SetFileFault(nullptr);
    EXPECT_EQ(ReadFile(place), "old");
    EXPECT_THAT(ListFiles(folder.Path()), ElementsAre("letter"));
  }
  replace();
  EXPECT_EQ(ReadFile(place), "new");
  {
    StagedFile file(folder.File("other"));
    WriteFile(file.Path(), "other");
    EXPECT_FALSE(file.TakeName(place)) << "something has the name";
    EXPECT_TRUE(file.TakeName(folder.File("free")));
  }
  EXPECT_EQ(ReadFile(place), "new");
  EXPECT_THAT(ListFiles(folder.Path()), ElementsAre("free", "letter"));
}

TEST(Files, WhatIsMadeIsTheOwnersOnly) {
  TempFolder folder;
  MakeFolder(folder.File("a/b/"));
  MakeFolder(folder.File("a/b/"));
  WriteFile(folder.File("a/b/c"), "text");
  CopyFile(folder.File("a/b/c"), folder.File("a/copy"));
  EXPECT_EQ(ReadFile(folder.File("a/copy")), "text");
  EXPECT_TRUE(AppendToFile(folder.File("a/log"), "text"));
  for (const char* name : {"a", "a/b", "a/b/c", "a/copy", "a/log"}) {
    EXPECT_FALSE(testing::IsOpenToOthers(folder.File(name))) << name;
  }
}

TEST(Files, ACopyOfManyPiecesIsWholeOrEndsWhereItIsTold) {
  TempFolder folder;
  std::string bytes(40 * 1024 * 1024 + 12345, '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 + (i >> 12));
  WriteFile(folder.File("long"), bytes);
  EXPECT_TRUE(CopyFile(folder.File("long"), folder.File("whole")));
  EXPECT_TRUE(ReadFile(folder.File("whole")) == bytes);
  // /dev/shm is another file system, where the kernel may have to be helped.
  if (IsFolderWritable("/dev/shm/")) {
    std::string there = UniquePath("/dev/shm/", "tarnwick-copy-test");
    int asked = 0;
    EXPECT_TRUE(CopyFile(folder.File("long"), there, [&] { return ++asked > 0; }));
    EXPECT_GE(asked, 3);
    EXPECT_TRUE(ReadFile(there) == bytes);
    asked = 0;
    EXPECT_FALSE(CopyFile(folder.File("long"), there, [&] { return ++asked < 2; }));
    RemoveFile(there);
  }
  EXPECT_EQ(NumberOf([&] { CopyFile(folder.File("long"), folder.File("./long")); }),
            ErrorNumber::kPathAccess);
  EXPECT_TRUE(ReadFile(folder.File("long")) == bytes);
}

TEST(Files, NamesAreFoundAndListedWithoutRegardToCase) {
  TempFolder folder;
  std::string mail = folder.File("Local Settings/Mail/");
  MakeFolder(mail);
  for (const char* name : {"INBOX.DBX", "drafts.dbx", "notes.txt"}) WriteFile(mail + name, "");
  auto found = FindIgnoringCase(folder.Path(), "local settings/MAIL/inbox.dbx");
  EXPECT_EQ(testing::OneSpelling(found.value_or("")), testing::OneSpelling(mail + "INBOX.DBX"));
  EXPECT_FALSE(FindIgnoringCase(folder.Path(), "Local Settings/../Local Settings"));
  EXPECT_FALSE(FindIgnoringCase(folder.Path(), "elsewhere"));
  EXPECT_THAT(ListFiles(mail, ".dbx"), ElementsAre("drafts.dbx", "INBOX.DBX"));
  EXPECT_TRUE(ListFiles(folder.File("none/")).empty());
  EXPECT_EQ(UniquePath(mail, "notes.txt"), mail + "notes (2).txt");
}

TEST(OutputFile, CompletedInPlaceHoldsTheLastTextAlone) {
  TempFolder folder;
  WriteFile(folder.File("scratch"), std::string(100, 'o'));
  OutputFile file(folder.File("scratch"), OutputFile::Replace::kInPlace);
  for (size_t length : {size_t{40}, size_t{300'000}, size_t{7}, size_t{7}, size_t{0}, size_t{9}}) {
    std::string text(length, static_cast<char>('a' + length % 26));
    file.Write(text);
    file.Complete();
    EXPECT_EQ(ReadFile(folder.File("scratch")).substr(0, length), text);
  }
  file.Close();
  EXPECT_EQ(ReadFile(folder.File("scratch")), std::string(9, 'a' + 9));
}

TEST(LineReader, TakesEveryKindOfLineEndAndKeepsEveryByte) {
  TempFolder folder;
  std::string longLine(300000, 'y');
  const std::string text = std::string("first\r\nsecond\n\r\n\nlone\rCR\n") +
                           std::string("n\0l\n", 4) + longLine + "\r\nlast";
  WriteFile(folder.File("lines"), text);
  LineReader ofFile(folder.File("lines"));
  LineReader ofBytes = LineReader::OfBytes(text);
  for (LineReader* reader : {&ofFile, &ofBytes}) {
    Texts lines;
    for (std::string line; reader->Next(line);) lines.push_back(line);
    EXPECT_THAT(lines, ElementsAre("first", "second", "", "", "lone\rCR", std::string("n\0l", 3),
                                   longLine, "last"));
    EXPECT_TRUE(reader->AtEnd());
  }
  WriteFile(folder.File("empty"), "");
  LineReader empty(folder.File("empty"));
  EXPECT_TRUE(empty.AtEnd());
}

}  // namespace
}  // namespace tarnwick::platform
