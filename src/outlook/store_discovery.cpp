// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/store_discovery.h"

#include <algorithm>

#include "core/messages.h"
#include "core/text.h"
#include "outlook/mapi_text.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/folder_search.h"
#include "platform/registry.h"

namespace tarnwick::outlook {

namespace {

// Outlook's own files, and the copies of a server's mailbox, which are built alike.
constexpr std::string_view kStoreExtensions[] = {".pst", ".ost"};
constexpr size_t kMaxRegistryKeys = 10'000;

// Below the profile folder, newest Outlook last.
constexpr std::string_view kUsualPlaces[] = {"",
                                             "Local Settings/Application Data/Microsoft/Outlook",
                                             "Application Data/Microsoft/Outlook",
                                             "AppData/Local/Microsoft/Outlook",
                                             "AppData/Roaming/Microsoft/Outlook",
                                             "My Documents",
                                             "My Documents/Outlook Files",
                                             "Documents",
                                             "Documents/Outlook Files"};

// Folders that have names of their own in translated Windows, by their registry values.
constexpr std::string_view kShellFolders =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
struct ShellPlace {
  std::string_view value;
  std::string_view below;
};
constexpr ShellPlace kShellPlaces[] = {{"Personal", ""},
                                       {"Personal", "Outlook Files"},
                                       {"Local AppData", "Microsoft/Outlook"},
                                       {"AppData", "Microsoft/Outlook"}};

// Keys below which each subkey is a mail profile, with a subkey for each of its services.
constexpr std::string_view kProfileKeys[] = {
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles",
    "Software\\Microsoft\\Windows Messaging Subsystem\\Profiles"};
constexpr std::string_view kOfficeKey = "Software\\Microsoft\\Office";
// A service's value that holds the path of its store, by MAPI number and type.
constexpr std::string_view kStorePathValues[] = {"001f6700", "001e6700"};

class Finder {
 public:
  explicit Finder(std::string profile) : profile_(std::move(profile)) {}

  std::vector<std::string> Run() {
    for (std::string_view place : kUsualPlaces) ListBelow(profile_, place);
    bool hasRegistry = platform::DetectProfile(profile_) != platform::ProfileKind::kNone;
    if (hasRegistry) {
      try {
        registry_ = platform::OpenProfile(profile_);
        ReadRegistry();
      } catch (const Error& error) {
        core::WriteLog("Outlook's registry keys can't be read: " + error.Description());
      }
    }
    platform::FolderSearch search = platform::FindFolders(profile_);
    for (const std::string& folder : search.folders) ListIn(folder);
    for (const std::string& folder : search.forbidden) {
      core::WriteLog("Folder may not be read: " + core::OneLogLine(folder));
    }
    return std::move(files_);
  }

 private:
  void Add(const std::string& path) {
    std::string absolute = platform::AbsolutePath(path);
    bool isKnown = std::any_of(files_.begin(), files_.end(), [&](const std::string& file) {
      return platform::EqualIgnoringCase(platform::EnsureUtf8(file),
                                         platform::EnsureUtf8(absolute));
    });
    if (!isKnown && platform::FileExists(absolute)) files_.push_back(absolute);
  }

  void ListBelow(const std::string& folder, std::string_view relative) {
    std::string found = folder;
    if (!relative.empty()) {
      auto below = platform::FindIgnoringCase(folder, relative);
      if (!below) return;
      found = platform::WithSeparator(*below);
    }
    ListIn(found);
  }

  void ListIn(const std::string& folder) {
    for (std::string_view extension : kStoreExtensions) {
      for (const std::string& name : platform::ListFiles(folder, extension)) Add(folder + name);
    }
  }

  std::vector<std::string> SubKeys(const std::string& key) {
    if (++keysRead_ > kMaxRegistryKeys) return {};
    return registry_->SubKeys(key).value_or(std::vector<std::string>());
  }

  void ReadRegistry() {
    for (const ShellPlace& place : kShellPlaces) {
      auto value = registry_->Value(kShellFolders, place.value);
      if (!value || value->text.empty()) continue;
      ListBelow(platform::WithSeparator(registry_->MapPath(value->text)), place.below);
    }
    for (std::string_view key : kProfileKeys) ReadProfiles(std::string(key));
    std::string office(kOfficeKey);
    for (const std::string& version : SubKeys(office)) {
      std::string outlook = office + "\\" + version + "\\Outlook";
      ReadProfiles(outlook + "\\Profiles");
      auto forced = registry_->Value(outlook, "ForcePSTPath");
      if (forced && !forced->text.empty()) {
        ListBelow(platform::WithSeparator(registry_->MapPath(forced->text)), "");
      }
    }
  }

  void ReadProfiles(const std::string& key) {
    for (const std::string& profile : SubKeys(key)) {
      std::string profileKey = key + "\\" + profile;
      for (const std::string& service : SubKeys(profileKey))
        ReadService(profileKey + "\\" + service);
    }
  }

  void ReadService(const std::string& key) {
    for (std::string_view name : kStorePathValues) {
      auto value = registry_->Value(key, name);
      if (!value || value->text.empty()) continue;
      bool isWide = value->type == platform::RegistryValue::Type::kBinary && name == "001f6700";
      std::string path = isWide ? TextFromUtf16(value->text) : TextFromBytes(value->text, "");
      path = registry_->MapPath(path);
      std::string lower = platform::AsciiLower(path);
      bool isStore =
          std::any_of(std::begin(kStoreExtensions), std::end(kStoreExtensions),
                      [&](std::string_view extension) { return lower.ends_with(extension); });
      if (isStore) Add(path);
    }
  }

  std::string profile_;
  std::unique_ptr<platform::Registry> registry_;
  size_t keysRead_ = 0;
  std::vector<std::string> files_;
};

// Outlook up to 2007, then from 2010 on.
constexpr std::string_view kDefaultNames[] = {"Personal Folders",
                                              "Outlook Data File",
                                              "Persönliche Ordner",
                                              "Outlook-Datendatei",
                                              "Dossiers personnels",
                                              "Fichier de données Outlook",
                                              "Carpetas personales",
                                              "Archivo de datos de Outlook",
                                              "Cartelle personali",
                                              "File di dati di Outlook",
                                              "Persoonlijke mappen",
                                              "Outlook-gegevensbestand",
                                              "Pastas particulares",
                                              "Pastas pessoais",
                                              "Arquivo de Dados do Outlook",
                                              "Ficheiro de Dados do Outlook",
                                              "Личные папки",
                                              "Файл данных Outlook",
                                              "Особисті папки",
                                              "Файл даних Outlook",
                                              "Лични папки",
                                              "Foldery osobiste",
                                              "Plik danych programu Outlook",
                                              "Osobní složky",
                                              "Datový soubor aplikace Outlook",
                                              "Osobné priečinky",
                                              "Személyes mappák",
                                              "Outlook-adatfájl",
                                              "Personliga mappar",
                                              "Outlook-datafil",
                                              "Personlige mapper",
                                              "Henkilökohtaiset kansiot",
                                              "Outlook-datatiedosto",
                                              "Kişisel Klasörler",
                                              "Outlook Veri Dosyası",
                                              "Προσωπικοί φάκελοι",
                                              "Αρχείο δεδομένων του Outlook",
                                              "個人用フォルダ",
                                              "個人用フォルダー",
                                              "Outlook データ ファイル",
                                              "个人文件夹",
                                              "Outlook 数据文件",
                                              "個人資料夾",
                                              "Outlook 資料檔",
                                              "개인 폴더",
                                              "Outlook 데이터 파일"};

}  // namespace

std::vector<std::string> FindStores(const std::string& profileFolder) {
  if (profileFolder.empty() || !platform::FolderExists(profileFolder)) return {};
  return Finder(platform::WithSeparator(platform::AbsolutePath(profileFolder))).Run();
}

bool IsDefaultStoreName(std::string_view displayName) {
  return std::any_of(
      std::begin(kDefaultNames), std::end(kDefaultNames),
      [&](std::string_view name) { return platform::EqualIgnoringCase(displayName, name); });
}

}  // namespace tarnwick::outlook
