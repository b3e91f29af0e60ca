// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/profile_builder.h"

#include <algorithm>
#include <cstdio>

#include "platform/files.h"

namespace tarnwick::samples {

ProfileBuilder::ProfileBuilder(std::string folder) : folder_(std::move(folder)) {
  platform::MakeFolder(folder_);
  hive_.AddKey("Identities");
  hive_.AddText("Environment", "TEMP", "%USERPROFILE%\\Local Settings\\Temp", true);
}

std::string ProfileBuilder::AddIdentity(const std::string& userName) {
  char key[64];
  std::snprintf(key, sizeof key, "{5A7E0000-11D3-4B0C-9D21-0000000000%02d}", ++identities_);
  std::string path = std::string("Identities\\") + key;
  std::string relative = "\\Local Settings\\Application Data\\Identities\\" + std::string(key) +
                         "\\Microsoft\\Outlook Express\\";
  hive_.AddText(path, "Username", userName);
  hive_.AddNumber(path, "Directory Name", static_cast<uint32_t>(identities_));
  hive_.AddText(path + "\\Software\\Microsoft\\Outlook Express\\5.0", "Store Root",
                "%UserProfile%" + relative, true);
  std::replace(relative.begin(), relative.end(), '\\', platform::kSeparator);
  std::string store = folder_ + relative.substr(1);
  platform::MakeFolder(store);
  return store;
}

void ProfileBuilder::WriteStore(const std::string& storeFolder,
                                const std::vector<StoredFolder>& folders,
                                const std::string& listName) {
  FolderListBuilder list;
  list.Add({0, 0, "Outlook Express", ""}, FolderForm::kMark);
  for (const StoredFolder& folder : folders) {
    list.Add(folder.listed,
             folder.listed.file.empty() ? FolderForm::kNoFile : FolderForm::kNameFollows);
    if (!folder.bytes.empty()) platform::WriteFile(storeFolder + folder.listed.file, folder.bytes);
  }
  list.Finish();
  if (!listName.empty()) platform::WriteFile(storeFolder + listName, list.Bytes());
}

void ProfileBuilder::WriteHive() const {
  platform::WriteFile(folder_ + "NTUSER.DAT", hive_.Build());
}

std::vector<StoredFolder> StandardFolders(const std::string& inbox, const std::string& sentItems) {
  return {{{1, 0, "Local Folders", "LocalStore"}, ""},
          {{2, 1, "Inbox", "Inbox.dbx"}, inbox},
          {{3, 1, "Sent Items", "Sent Items.dbx"}, sentItems}};
}

}  // namespace tarnwick::samples
