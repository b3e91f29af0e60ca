// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/discovery.h"

#include "intake/reader_link.h"
#include "oe_fixture.h"

namespace tarnwick::oe {
namespace {

using samples::FolderForm;
using samples::FolderListBuilder;
using samples::ProfileBuilder;
using samples::StandardFolders;
using samples::StoredFolder;

class Discovery : public OeFixture {
 protected:
  Discovery() : profile_(folder_.File("Ann/")) {}

  bool Discover() {
    profile_.WriteHive();
    UseProfile(profile_.Folder());
    return DiscoverOutlookExpress();
  }

  static std::vector<std::string> FullNames(size_t list) {
    std::vector<std::string> names;
    for (const FolderRow& row : State().Folders[list]) {
      names.push_back(row.fullName.empty() ? "/" + row.displayName : row.fullName);
    }
    return names;
  }

  ProfileBuilder profile_;
};

TEST_F(Discovery, FillsTheTables) {
  std::string store = profile_.AddIdentity("Main Identity");
  std::vector<StoredFolder> folders = StandardFolders(StoreOf({"a"}), StoreOf({"b"}));
  folders.push_back({{4, 2, "Garten & Hof", "garden.dbx"}, StoreOf({"c"})});
  folders.push_back({{5, 4, "O'Neil", "oneil.dbx"}, StoreOf({})});
  folders.push_back({{6, 1, "Never opened", ""}, ""});
  folders.push_back({{7, 1, "Lost", "lost.dbx"}, ""});
  folders.push_back({{8, 0, "Hotmail", "hotmail.dbx"}, ""});
  ProfileBuilder::WriteStore(store, folders);
  platform::RenameFile(store + "garden.dbx", store + "moved");  // which is another name everywhere
  platform::RenameFile(store + "moved", store + "Garden.DBX");
  ASSERT_TRUE(Discover());

  EXPECT_EQ(State().Identities.size(), 1U);
  ASSERT_EQ(State().FolderFiles.size(), 1U);
  const auto& file = State().FolderFiles[0];
  EXPECT_EQ(file.path, store + "Folders.dbx");
  EXPECT_EQ(file.userName + " " + file.storeFolder, "ann " + store);  // for "Main Identity"
  EXPECT_THAT(FullNames(0),
              ElementsAre("/Local Folders", "Local Folders.Inbox", "Local Folders.Sent Items",
                          "Local Folders.Inbox.Garten & Hof",
                          "Local Folders.Inbox.Garten & Hof.O'Neil", "/Hotmail"));
  const FolderRow& garden = State().Folders[0][3];
  EXPECT_TRUE(garden.fileName == "garden.dbx" && garden.number == 4 && garden.parent == 2);
  EXPECT_EQ(Query("SELECT User FROM UserList").AsText(), "ann");
  EXPECT_THAT(Log(),
              AllOf(HasSubstr("Folders = Parent = 2 Local Folders.Inbox.Garten & Hof\r\n"
                              "Me = 4 Garten & Hof\r\ngarden.dbx"),
                    HasSubstr("FolderFile = Folders.dbx"), HasSubstr("EmailFile = Garden.DBX")));

  // A second run finds the same, and no second user.
  ASSERT_TRUE(DiscoverOutlookExpress());
  EXPECT_EQ(State().Folders[0].size(), 6U);
  EXPECT_EQ(CountRows("UserList"), 1);
}

TEST_F(Discovery, FoldersThatAreEachOthersParentsGetANameAllTheSame) {
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(
      store, {{{1, 2, "A", "a.dbx"}, StoreOf({})}, {{2, 1, "B", "b.dbx"}, StoreOf({})}});
  ASSERT_TRUE(Discover());
  EXPECT_THAT(FullNames(0), ElementsAre("B.A", "A.B"));
}

TEST_F(Discovery, IdentitiesKeepTheirNamesAndStores) {
  std::string first = profile_.AddIdentity("Ann O'Neil");
  std::string second = profile_.AddIdentity("Анна");
  ProfileBuilder::WriteStore(first, StandardFolders(StoreOf({"a"}), ""));
  ProfileBuilder::WriteStore(second, StandardFolders(StoreOf({"b"}), ""));
  ASSERT_TRUE(Discover());
  ASSERT_EQ(State().FolderFiles.size(), 2U);
  EXPECT_EQ(State().FolderFiles[0].userName, "Ann O'Neil");
  EXPECT_EQ(State().FolderFiles[1].userName, "Анна");
  EXPECT_EQ(State().FolderFiles[1].storeFolder, second);
  EXPECT_EQ(CountRows("UserList"), 2);
}

TEST_F(Discovery, TwentyIdentitiesAreReadAndOneMoreStopsTheRun) {
  for (int i = 0; i < 20; ++i) profile_.AddIdentity("user " + std::to_string(i));
  EXPECT_TRUE(Discover());
  EXPECT_EQ(State().Identities.size(), 20U);
  profile_.AddIdentity("one more");
  EXPECT_FALSE(Discover());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("Identtities are great than 20 .Program takes only ."));
  EXPECT_THAT(State().FolderFiles, IsEmpty());
}

TEST_F(Discovery, TheHundredAndFirstFolderListStopsTheListing) {
  std::string store = profile_.AddIdentity("Ann");
  FolderListBuilder list;
  list.Finish();
  for (int i = 0; i < 101; ++i) {
    platform::WriteFile(store + "list" + std::to_string(1000 + i) + ".dbx", list.Bytes());
  }
  EXPECT_TRUE(Discover());
  EXPECT_EQ(State().FolderFiles.size(), 100U);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("Folders are great than 20 .Program takes only ."));
}

TEST_F(Discovery, OnlyTheRepositorysUserIsRead) {
  profile_.AddIdentity("Ann");
  platform::ClockOverride clock;
  clock.logonName = "bob";
  platform::SetClockOverride(clock);
  EXPECT_FALSE(Discover());
  EXPECT_THAT(ui_.shown, IsEmpty());
}

TEST_F(Discovery, RegistryFailuresEndTheRun) {
  UseProfile(profile_.Folder());
  EXPECT_FALSE(ProfileKnown());
  EXPECT_FALSE(oeInitialize());
  EXPECT_THAT(ui_.shown, IsEmpty());

  platform::WriteFile(profile_.Folder() + "NTUSER.DAT", "no hive");
  EXPECT_TRUE(ProfileKnown());
  EXPECT_FALSE(oeInitialize());
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre("Error: Could not open Registry Key. RegQueryInfoKey"));
  ui_.shown.clear();

  platform::WriteFile(profile_.Folder() + "NTUSER.DAT", samples::HiveBuilder().Build());
  EXPECT_FALSE(oeInitialize());
  EXPECT_THAT(ui_.Shown("error"), ElementsAre("Error: Could not open Registry Key. RegOpenKeyEx"));
  ui_.shown.clear();

  // Outlook Express was never started: a missing key is reported, a missing value is not.
  profile_.Hive().AddText("Identities\\{9}", "Username", "Bob");
  EXPECT_FALSE(Discover());
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre("Error: Could not open Registry Key. GetKeyValue Identities\\{9}"
                          "\\Software\\Microsoft\\Outlook Express\\5.0 Store Root"));
  ui_.shown.clear();
  profile_.Hive().AddNumber("Identities\\{9}\\Software\\Microsoft\\Outlook Express\\5.0",
                            "VerStamp", 0x1AB);
  EXPECT_FALSE(Discover());
  EXPECT_THAT(ui_.shown, IsEmpty());
  EXPECT_EQ(GetKeyValue(Hive::kCurrentUser,
                        "Identities\\{9}\\Software\\Microsoft\\Outlook Express\\5.0", "VerStamp"),
            "&h1AB");
}

TEST_F(Discovery, AStoreRootIsAPrefix) {
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(store, StandardFolders(StoreOf({"a"}), ""));
  std::string withoutSeparator = store.substr(0, store.size() - 1);
  CollectStoreFiles(withoutSeparator, "Ann");
  EXPECT_THAT(State().FolderFiles, IsEmpty());
  CollectStoreFiles(store, "Ann");
  EXPECT_EQ(State().FolderFiles.size(), 1U);
  platform::MakeFolder(store + "below");
  platform::WriteFile(store + "below/Inbox.dbx", "");
  for (const char* name : {"../Folders.dbx", "below/Inbox.dbx"}) {
    EXPECT_FALSE(FindStoreFile(store, name)) << name;
  }
  EXPECT_FALSE(FindStoreFile(store, ""));
}

TEST_F(Discovery, FolderObjectsInEachForm) {
  const struct {
    const char* what;
    FolderForm form;
    bool isFolder;
  } rows[] = {{"the name as fifth entry", FolderForm::kNameIsFifth, true},
              {"the name among later entries", FolderForm::kNameFollows, true},
              {"the name with one more word", FolderForm::kNameThenOne, true},
              {"a folder never opened", FolderForm::kNoFile, false},
              {"the list's own object", FolderForm::kMark, false}};
  for (const auto& row : rows) {
    ResetState();
    FolderListBuilder list;
    list.Add({9, 0, "Family", "Family.dbx"}, row.form);
    list.Finish();
    State().FolderFiles = {{WriteTemp("Folders.dbx", list.Bytes()), "ann", folder_.Path()}};
    ReadFolderTree(0);
    ASSERT_EQ(State().Folders[0].size(), row.isFolder ? 1U : 0U) << row.what;
    if (!row.isFolder) continue;
    EXPECT_EQ(State().Folders[0][0].displayName, "Family") << row.what;
    EXPECT_EQ(State().Folders[0][0].fileName, "Family.dbx") << row.what;
  }
}

// Damaged here and there, with more folders than designed reading has, or no list at all.
TEST_F(Discovery, TheReaderSaysOfAFolderListWhatTheProgramFindsInIt) {
  FolderListBuilder list;
  for (uint32_t i = 1; i <= 20; ++i) {
    list.Add({i, i / 3, "Näme " + std::to_string(i), std::to_string(i) + ".dbx"});
  }
  list.Finish();
  const std::string whole = list.Bytes();
  for (size_t damaged = 0; damaged <= whole.size(); damaged += whole.size() / 12) {
    std::string bytes = whole;
    for (size_t at = damaged; at != 0 && at < bytes.size(); at += 600) bytes[at] ^= '\x55';
    if (damaged > whole.size() / 2) bytes.resize(damaged);
    const std::string path = WriteTemp("Folders.dbx", bytes);
    for (const auto* rules : {&intake::kDesigned, &intake::kComplete}) {
      std::string told[2];
      for (int second : {0, 1}) {
        ResetState();
        ui_.shown.clear();
        State().FolderFiles = {{path, "ann", folder_.Path()}};
        intake::SetReader(second == 1 ? TARNWICK_READER : "");
        ReadFolderTree(0, *rules);
        intake::SetReader("");
        told[second] = State().IsListDamaged ? "damaged" : "sound";
        for (const auto& [kind, text] : ui_.shown) told[second] += "\n" + kind + text;
        for (const FolderRow& row : State().Folders[0]) {
          told[second] += "\n" + row.displayName + row.fileName + std::to_string(row.number) + "<" +
                          std::to_string(row.parent) + row.userName;
        }
      }
      EXPECT_EQ(told[0], told[1]) << damaged;
    }
  }
}

TEST_F(Discovery, ADamagedFolderListGivesTheFoldersThatCanBeRead) {
  FolderListBuilder list;
  list.Add({1, 0, "One", "One.dbx"});
  uint32_t second = list.Image().Size();
  list.Add({2, 0, "Two", "Two.dbx"});
  list.Add({3, 3, "Circle", "Two.dbx"});
  list.Finish();
  list.Image().Put32(second, 1);
  platform::WriteFile(folder_.File("Two.dbx"), StoreOf({}));
  platform::MakeFolder(folder_.File("Mail"));
  EXPECT_FALSE(FindStoreFile(folder_.Path() + "Mail/", "../Two.dbx"));
  State().FolderFiles = {{WriteTemp("Folders.dbx", list.Bytes()), "ann", folder_.Path()}};
  ReadFolderTree(0);
  EXPECT_EQ(State().Folders[0].size(), 2U);
  EXPECT_EQ(ui_.Shown("error").size(), 1U);

  uint32_t root = list.Image().Get32(0x30);
  list.Image().Put32(root, 0);
  WriteTemp("Folders.dbx", list.Bytes());
  State().Folders[0].clear();
  ReadFolderTree(0);
  EXPECT_THAT(State().Folders[0], IsEmpty());
  const std::string whole = list.Bytes();
  for (size_t size = 0; size < whole.size(); size += 97) {
    WriteTemp("Folders.dbx", whole.substr(0, size));
    ReadFolderTree(0);
  }
}

TEST_F(Discovery, CopiedFilesWithoutAListAreFoldersOfTheirNames) {
  std::string folder = folder_.File("Ann's old mail/");
  platform::MakeFolder(folder);
  platform::WriteFile(folder + "Inbox.dbx", StoreOf({"a"}));
  platform::WriteFile(folder + "Sent Items.DBX", StoreOf({"b"}));
  std::string other = StoreOf({});
  other[4] = '\xC8';
  platform::WriteFile(folder + "Offline.dbx", other);
  UseProfile(folder);
  ASSERT_TRUE(oeInitialize());
  ASSERT_EQ(State().FolderFiles.size(), 1U);
  EXPECT_EQ(State().FolderFiles[0].userName, "Ann's old mail");
  EXPECT_THAT(FullNames(0), ElementsAre("/Inbox", "/Sent Items"));
}

TEST_F(Discovery, NamesAStoreOnADriveThatIsNotThere) {
  profile_.Hive().AddText("Identities\\{1}", "Username", "Ann");
  profile_.Hive().AddText("Identities\\{1}\\Software\\Microsoft\\Outlook Express\\5.0",
                          "Store Root", "D:\\Mail\\");
  EXPECT_TRUE(Discover());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("Ann: D:\\Mail\\\r\n")));
  EXPECT_THAT(Log(), HasSubstr("Mail store of Ann not found: D:\\Mail\\"));
}

TEST_F(Discovery, WhatMayNotBeReadIsNotCalledMissing) {
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(store, StandardFolders(StoreOf({"a"}), StoreOf({"b"})));
  std::string forbidden = store + "Inbox.dbx";
  platform::SetFileFault([&](platform::FileOperation, const std::string& path) {
    if (path == forbidden) {
      throw Error(ErrorNumber::kPermissionDenied, "Permission denied: " + path);
    }
  });
  EXPECT_TRUE(Discover());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("These may not be read:\r\n" + forbidden));
  EXPECT_THAT(State().Forbidden, ElementsAre(forbidden));
  State().CanRead = true;
  ReadAll();
  EXPECT_EQ(core::State().Counts.stored, 1);
  EXPECT_THAT(ui_.Shown("error"), IsEmpty());

  ui_.shown.clear();
  forbidden = store;
  EXPECT_TRUE(Discover());
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("These may not be read:\r\n" + forbidden));
}

TEST_F(Discovery, StoresBelowAHiveThatLeadsNowhereAreOffered) {
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(store, StandardFolders(StoreOf({"a"}), StoreOf({"b"})));
  samples::HiveBuilder withoutIdentities;
  withoutIdentities.AddKey("Identities");
  samples::HiveBuilder withoutStores;
  withoutStores.AddText("Identities\\{1}\\Software\\Microsoft\\Outlook Express\\5.0", "x", "y");
  UseProfile(profile_.Folder());
  for (const std::string& hive :
       {std::string("no hive"), samples::HiveBuilder().Build(), withoutIdentities.Build(),
        withoutStores.Build(), std::string()}) {
    platform::WriteFile(profile_.Folder() + "NTUSER.DAT", hive);
    ui_.shown.clear();
    ui_.yesNo = {true};
    EXPECT_TRUE(DiscoverOutlookExpress());
    EXPECT_THAT(ui_.Shown("error"), IsEmpty());
    EXPECT_THAT(FullNames(0), Contains("Local Folders.Inbox"));
    ui_.yesNo = {false};
    DiscoverOutlookExpress();
    EXPECT_EQ(State().MessageFiles.size(), 2U);
    EXPECT_THAT(State().End.reason, ::testing::AnyOf(HasSubstr("NTUSER.DAT "), HasSubstr("{1}")));
  }
}

// However the list was damaged, the sound files beside it are not lost with it.
TEST_F(Discovery, FilesOfADamagedFolderListAreOffered) {
  std::string store = profile_.AddIdentity("Ann");
  profile_.WriteHive();
  UseProfile(profile_.Folder());
  ProfileBuilder::WriteStore(store, StandardFolders(StoreOf({"a"}), StoreOf({"b"})));
  const std::string sound = platform::ReadFile(store + "Folders.dbx");
  auto numberAt = [&](size_t at) {
    return static_cast<unsigned char>(sound[at]) | static_cast<unsigned char>(sound[at + 1]) << 8;
  };
  size_t root = static_cast<size_t>(numberAt(0x30));
  size_t inbox = static_cast<size_t>(numberAt(root + 24 + size_t{2} * 12));
  const struct {
    const char* what;
    size_t place;
    int32_t value;  // -1: the file is gone
  } kRows[] = {
      {"its mark", 4, 0xC2},     {"its root", 0x31, 0x70},    {"a node's own place", root, 1},
      {"a count", root + 17, 2}, {"no folder", root + 17, 0}, {"a folder's own place", inbox, 1},
      {"all of it", 0, -1}};
  for (const auto& row : kRows) {
    std::string damaged = sound;
    if (row.value >= 0) damaged[row.place] = static_cast<char>(row.value);
    platform::WriteFile(store + "Folders.dbx", damaged);
    if (row.value < 0) platform::RemoveFile(store + "Folders.dbx");
    for (bool yes : {false, true}) {
      core::State().Counts = {};
      repository::RepositoryDb().Execute("DELETE * FROM Email");
      ui_.yesNo = {yes};
      ASSERT_TRUE(oeInitialize()) << row.what;
      ReadAll();
      EXPECT_EQ(core::State().Counts.found, 2) << row.what;
      EXPECT_EQ(core::State().Counts.stored == 2, yes) << row.what;
      EXPECT_THAT(ui_.yesNo, IsEmpty()) << row.what;
      ui_.yesNo.clear();
    }
  }
}

}  // namespace
}  // namespace tarnwick::oe
