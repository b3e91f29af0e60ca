// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Old disks as people have them: whatever holds a store comes in whole.

#include <algorithm>

#include "oe_fixture.h"
#include "platform/charset.h"
#include "samples/hive_builder.h"

namespace tarnwick::oe {
namespace {

using samples::HiveBuilder;

constexpr const char* kOfIdentity = "Application Data/Identities/{1}/Microsoft/Outlook Express/";

// A disk while it is being made; paths are below its root.
class Disk {
 public:
  explicit Disk(std::string root) : root_(std::move(root)) { platform::MakeFolder(root_); }

  void File(const std::string& path, const std::string& bytes) {
    platform::MakeFolder(platform::FolderOf(root_ + path));
    platform::WriteFile(root_ + path, bytes);
  }
  // A message file of one letter that is named after it.
  void Letters(const std::string& path, const std::string& name) {
    samples::MessageStoreBuilder store;
    samples::IndexedMessage letter;
    letter.subject = name;
    letter.text = "From: bob@example.org\r\nSubject: " + name + "\r\n\r\n";
    store.AddMessage(letter);
    store.Finish();
    File(path, store.Bytes());
  }
  // A store: a folder list, an Inbox with the letter "name in", a subfolder with "name sub".
  void Store(const std::string& folder, const std::string& name) {
    File(folder + "Folders.dbx", ListBytes());
    Letters(folder + "Inbox.dbx", name + " in");
    Letters(folder + "Family.dbx", name + " sub");
  }
  static std::string ListBytes() {
    samples::FolderListBuilder list;
    list.Add({1, 0, "Local Folders", "LocalStore"});
    list.Add({2, 1, "Inbox", "Inbox.dbx"});
    list.Add({3, 2, "Family", "Family.dbx"});
    list.Finish();
    return list.Bytes();
  }
  void Hive(const std::string& folder,
            const std::vector<std::pair<std::string, std::string>>& identitiesAndRoots,
            bool expandable = true) {
    HiveBuilder hive;
    hive.AddKey("Identities");
    int number = 0;
    for (const auto& [name, root] : identitiesAndRoots) {
      std::string key = "Identities\\{" + std::to_string(++number) + "}";
      hive.AddText(key, "Username", name);
      key += "\\Software\\Microsoft\\Outlook Express\\5.0";
      if (!root.empty()) hive.AddText(key, "Store Root", root, expandable);
    }
    File(folder + "NTUSER.DAT", hive.Build());
  }
  void Wine(const std::string& folder, const std::string& root) {
    File(folder + "user.reg",
         "WINE REGISTRY Version 2\n\n[Identities\\\\{1}] 1\n\"Username\"=\"Ann\"\n\n[Identities\\\\"
         "{1}\\\\Software\\\\Microsoft\\\\Outlook Express\\\\5.0] 1\n\"Store Root\"=\"" +
             root + "\"\n");
  }

 private:
  std::string root_;
};

struct Layout {
  const char* what;
  void (*make)(Disk&);
  const char* chosen;    // the folder that the person chooses
  const char* subjects;  // of all mail
};

const std::string kLocal = std::string("Local Settings/") + kOfIdentity;
const std::string kVista = "AppData/Local/Identities/{1}/Microsoft/Outlook Express/";
const std::string kOfXp = "Documents and Settings/Ann/";
constexpr const char* kXpRoot =
    "%UserProfile%\\Local Settings\\Application Data\\Identities\\{1}\\Microsoft\\Outlook "
    "Express\\";
constexpr const char* kVistaRoot = "%LocalAppData%\\Identities\\{1}\\Microsoft\\Outlook Express\\";
constexpr const char* kMail = "a in|a sub";

const Layout kLayouts[] = {
    {"a profile of XP",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", kXpRoot}});
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"a root without its last separator",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", std::string(kXpRoot, std::string_view(kXpRoot).size() - 1)}});
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"%LocalAppData% of XP",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", kVistaRoot}});
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"%LocalAppData% of Vista",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", kVistaRoot}});
       disk.Store("Ann/" + kVista, "a");
     },
     "Ann", kMail},
    {"an unknown variable",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "%MailDrive%\\Post\\"}});
       disk.Store("Ann/Post/", "a");
     },
     "Ann", kMail},
    {"an identity without a store root before one with it",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Empty", ""}, {"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
     },
     "Ann", kMail},
    {"the only identity without a store root",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", ""}});
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"twenty-one identities",
     [](Disk& disk) {
       std::vector<std::pair<std::string, std::string>> many(20, {"x", "C:\\none\\"});
       many.emplace_back("Ann", "C:\\Mail\\");
       disk.Hive("Ann/", many);
       disk.Store("Ann/Mail/", "a");
     },
     "Ann", kMail},
    {"two identities, one store each",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\A\\"}, {"Bob", "C:\\B\\"}});
       disk.Store("Ann/A/", "a");
       disk.Store("Ann/B/", "b");
     },
     "Ann", "a in|a sub|b in|b sub"},
    {"two identities with one store",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\A\\"}, {"Bob", "C:\\A"}});
       disk.Store("Ann/A/", "a");
     },
     "Ann", kMail},
    {"D beside C",
     [](Disk& disk) {
       disk.Hive("C/" + kOfXp, {{"Ann", "D:\\Mail\\"}});
       disk.Store("D/Mail/", "a");
     },
     "C/Documents and Settings/Ann", kMail},
    {"d beside c, in other letters, without a separator",
     [](Disk& disk) {
       disk.Hive("c/" + kOfXp, {{"Ann", "D:\\MAIL"}}, false);
       disk.Store("d/mail/", "a");
     },
     "c/Documents and Settings/Ann", kMail},
    {"drives called with their colons",
     [](Disk& disk) {
       disk.Hive("C:/" + kOfXp, {{"Ann", "E:\\Post\\Mail\\"}});
       disk.Store("E:/Post/Mail/", "a");
     },
     "C:/Documents and Settings/Ann", kMail},
    {"a drive's root",
     [](Disk& disk) {
       disk.Hive("C/" + kOfXp, {{"Ann", "D:\\"}});
       disk.Store("D/", "a");
     },
     "C/Documents and Settings/Ann", kMail},
    {"another drive, where the store has moved",
     [](Disk& disk) {
       disk.Hive("C/" + kOfXp, {{"Ann", "F:\\Mail\\"}});
       disk.Store("D/old/Mail/", "a");
     },
     "C/Documents and Settings/Ann", kMail},
    {"another drive, and the registry is damaged",
     [](Disk& disk) {
       disk.File("C/" + kOfXp + "NTUSER.DAT", "regf and no more");
       disk.Store("D/Mail/", "a");
     },
     "C/Documents and Settings/Ann", kMail},
    {"beside the users' folders, without Windows' own",
     [](Disk& disk) {
       disk.Hive(kOfXp, {{"Ann", "C:\\Mail\\"}});
       disk.Store("Mail/", "a");
     },
     "Documents and Settings/Ann", kMail},
    {"in the profile's own folder",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "D:\\far\\away\\Mail\\"}});
       disk.Store("Ann/", "a");
     },
     "Ann", kMail},
    {"of NT 4",
     [](Disk& disk) {
       disk.Hive("WINNT/Profiles/Ann/", {{"Ann", "C:\\Mail\\OE\\"}});
       disk.Store("Mail/OE/", "a");
     },
     "WINNT/Profiles/Ann", kMail},
    {"a hive that is no hive",
     [](Disk& disk) {
       disk.File("Ann/NTUSER.DAT", "no hive");
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"an empty hive file",
     [](Disk& disk) {
       disk.File("Ann/NTUSER.DAT", "");
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"a hive cut in two",
     [](Disk& disk) {
       HiveBuilder hive;
       for (int i = 0; i < 400; ++i) hive.AddText("Software", "v" + std::to_string(i), "x");
       hive.AddText("Identities\\{1}", "Username", "Ann");
       std::string bytes = hive.Build();
       disk.File("Ann/NTUSER.DAT", bytes.substr(0, bytes.size() / 2));
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"a hive that knows no identity",
     [](Disk& disk) {
       disk.Hive("Ann/", {});
       disk.Store("Ann/" + kLocal, "a");
     },
     "Ann", kMail},
    {"a store of an identity that is no longer known",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.Store("Ann/Local Settings/Application Data/Identities/{9}/Microsoft/Outlook Express/",
                  "old");
     },
     "Ann", "a in|a sub|old in|old sub"},
    {"a backup of the store beside it",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.Letters("Ann/My Documents/backup of mail/Inbox.dbx", "copy");
     },
     "Ann", "a in|a sub|copy"},
    {"several folder lists in one store",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.File("Ann/Mail/Folders (old).dbx", Disk::ListBytes());
     },
     "Ann", kMail},
    {"files that no folder list names",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.Letters("Ann/Mail/Inbox (1).dbx", "more");
     },
     "Ann", "a in|a sub|more"},
    {"a damaged folder list",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.File("Ann/Mail/Folders.dbx", Disk::ListBytes().substr(0, 9000));
     },
     "Ann", kMail},
    {"a folder list of zeros",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Store("Ann/Mail/", "a");
       disk.File("Ann/Mail/Folders.dbx", std::string(20'000, '\0'));
     },
     "Ann", kMail},
    {"no folder list",
     [](Disk& disk) {
       disk.Hive("Ann/", {{"Ann", "C:\\Mail\\"}});
       disk.Letters("Ann/Mail/Inbox.dbx", "a in");
       disk.Letters("Ann/Mail/x.dbx", "a sub");
     },
     "Ann", kMail},
    {"copied files alone", [](Disk& disk) { disk.Letters("mail/Inbox.dbx", "a in"); }, "mail",
     "a in"},
    {"a whole disk of several users",
     [](Disk& disk) {
       for (const char* user : {"Ann", "Bob"}) {
         std::string home = "copies/2009/C/Documents and Settings/" + std::string(user) + "/";
         disk.Hive(home, {{user, kXpRoot}});
         disk.Store(home + kLocal, user);
       }
     },
     "copies", "Ann in|Ann sub|Bob in|Bob sub"},
    {"the users' folder",
     [](Disk& disk) {
       disk.Hive("Users/Ann/", {{"Ann", kVistaRoot}});
       disk.Store("Users/Ann/" + kVista, "a");
       disk.Store("Users/Bob/Mail/", "b");
     },
     "Users", "a in|a sub|b in|b sub"},
    {"a Wine prefix",
     [](Disk& disk) {
       disk.Wine("prefix/", "C:\\\\users\\\\ann\\\\Mail");
       disk.Store("prefix/drive_c/users/ann/Mail/", "a");
     },
     "prefix", kMail},
    {"a Wine prefix that names a drive that is not there",
     [](Disk& disk) {
       disk.Wine("prefix/", "E:\\\\Mail\\\\");
       disk.Store("prefix/drive_c/Mail/", "a");
     },
     "prefix", kMail},
};

class OldDisks : public OeFixture {
 protected:
  std::string Load(const std::string& profile, const intake::ReadingRules& rules) {
    ResetState();
    core::State().Counts = {};
    repository::RepositoryDb().Execute("DELETE * FROM Email");
    UseProfile(profile);
    oeInitialize(rules);
    intake::Account().Open();
    AnnounceMessages(rules);
    ImportOutlookExpress(rules);
    intake::Account().Close();
    jet::Recordset rows;
    rows.Open("SELECT Subject FROM Email", repository::RepositoryDb());
    std::vector<std::string> subjects;
    for (; !rows.Eof(); rows.MoveNext()) subjects.push_back(rows.Field(0).AsText());
    std::sort(subjects.begin(), subjects.end());
    std::string text;
    for (const std::string& each : subjects) text += (text.empty() ? "" : "|") + each;
    return text;
  }
};

TEST_F(OldDisks, WhateverHoldsAStoreComesInWhole) {
  int number = 0;
  for (const Layout& layout : kLayouts) {
    bool isNoName =
        platform::kSeparator == '\\' && std::string_view(layout.chosen).starts_with("C:");
    if (isNoName) continue;  // no folder can be called so there
    std::string root = folder_.File("disk " + std::to_string(++number) + "/");
    Disk disk(root);
    layout.make(disk);
    ui_.shown.clear();
    EXPECT_EQ(Load(root + layout.chosen, intake::kComplete), layout.subjects) << layout.what;
    EXPECT_EQ(core::State().Counts.found, core::State().Counts.stored) << layout.what;
    EXPECT_THAT(ui_.Shown("error"), IsEmpty()) << layout.what;
  }
}

TEST_F(OldDisks, WhatIsMissingIsToldAndFoldersAreLabelledByTheirOwners) {
  Disk disk(folder_.File("disk/"));
  disk.Hive("Ann/", {{"Empty", ""}, {"Ann", "C:\\Mail\\"}, {"Far", "F:\\Post\\"}});
  disk.Store("Ann/Mail/", "a");
  disk.File("Ann/Mail/Folders.dbx", Disk::ListBytes().substr(0, 9000));
  Load(folder_.File("disk/Ann"), intake::kComplete);
  EXPECT_THAT(intake::Account().Text(), HasSubstr("no mail store known for identity Empty"));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("mail store not found of Far: F:\\Post\\"));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("the folder list is damaged: "));
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("Far: F:\\Post\\\r\n")));
  EXPECT_EQ(Query("SELECT Folder FROM Email WHERE Subject = 'a in'").AsText(), "Ann_Inbox");
}

TEST_F(OldDisks, FoldersThatAreLeftOutAreReadWhereTheyAreTicked) {
  struct Language {
    std::string drafts, deleted, old, outbox;
    std::array<uint32_t, 3> purposes;
  };
  for (const Language& names :
       {Language{"Drafts", "Deleted Items", "Old Drafts", "Outbox", {1, 1, 1}},
        Language{"Brouillons", "Corbeille", "Vieux brouillons", "A envoyer", {5, 4, 2}}}) {
    Disk disk(folder_.File(names.outbox + "/"));
    samples::FolderListBuilder list;
    list.Add({1, 0, "Local Folders", "LocalStore"});
    list.Add({2, 1, names.drafts, "Drafts.dbx", names.purposes[0]});
    list.Add({3, 1, names.deleted, "Deleted.dbx", names.purposes[1]});
    list.Add({4, 3, names.old, "Old.dbx", 0});
    list.Add({5, 1, names.outbox, "Outbox.dbx", names.purposes[2]});
    list.Finish();
    disk.File("Ann/Folders.dbx", list.Bytes());
    for (const char* name : {"Drafts", "Deleted", "Old", "Outbox"}) {
      disk.Letters("Ann/" + std::string(name) + ".dbx", name);
    }
    const std::string profile = folder_.File(names.outbox + "/Ann");
    EXPECT_EQ(Load(profile, intake::kComplete), "");
    EXPECT_EQ(core::State().Counts.notReached, 4);
    intake::ReadingRules rules = intake::kComplete;
    rules.drafts = true;
    EXPECT_EQ(Load(profile, rules), "Drafts");
    rules.deletedItems = true;
    EXPECT_EQ(Load(profile, rules), "Deleted|Drafts|Old");
    EXPECT_EQ(Query("SELECT Folder FROM Email WHERE Subject = 'Old'").AsText(), names.old);
    rules.outbox = true;
    EXPECT_EQ(Load(profile, rules), "Deleted|Drafts|Old|Outbox");
  }
}

}  // namespace
}  // namespace tarnwick::oe
