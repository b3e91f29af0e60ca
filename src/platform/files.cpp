// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/files.h"

#include <algorithm>
#include <cerrno>

#include "platform/error.h"
#include "platform/file_errors.h"
#include "platform/system_files.h"

namespace tarnwick::platform {

namespace {

FileFault& Fault() {
  static FileFault fault;
  return fault;
}

std::optional<uint64_t>& FreeSpaceOverride() {
  static std::optional<uint64_t> bytes;
  return bytes;
}

void Pass(FileOperation operation, const std::string& path) {
  PassFileFault(operation, path);
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool LessIgnoringCase(const std::string& a, const std::string& b) {
  bool less = std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                           [](char x, char y) { return Lower(x) < Lower(y); });
  if (less) return true;
  bool greater = std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(),
                                              [](char x, char y) { return Lower(x) < Lower(y); });
  return !greater && a < b;
}

bool IsSeparator(char c) {
  return system::kSeparators.find(c) != std::string_view::npos;
}

// "" of the root.
std::string WithoutSeparator(std::string folder) {
  while (!folder.empty() && IsSeparator(folder.back())) folder.pop_back();
  return folder;
}

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Lower(x) == Lower(y); });
}

std::vector<std::string> ListEntries(
    const std::string& folder,
    const std::function<bool(const std::string& name, system::Kind kind)>& wanted) {
  std::vector<std::string> names;
  system::ListEntries(folder, [&](const std::string& name, system::Kind kind) {
    if (wanted(name, kind)) names.push_back(name);
  });
  std::sort(names.begin(), names.end(), LessIgnoringCase);
  return names;
}

}  // namespace

void SetFileFault(FileFault fault) {
  Fault() = std::move(fault);
}

void PassFileFault(FileOperation operation, const std::string& path) {
  if (Fault()) Fault()(operation, path);
}

void ThrowSystemError(int code, const std::string& path) {
  int number = ErrorNumber::kPathAccess;
  const char* what = "Path/File access error";
  if (code == ENOENT || code == ENOTDIR) {
    number = ErrorNumber::kFileNotFound;
    what = "File not found";
  } else if (code == EACCES || code == EPERM || code == EROFS) {
    number = ErrorNumber::kPermissionDenied;
    what = "Permission denied";
  } else if (system::MeansFull(code)) {
    number = ErrorNumber::kDiskFull;
    what = "Disk full";
  }
  throw Error(number, std::string(what) + ": " + path);
}

std::string WithSeparator(std::string folder) {
  if (!folder.empty() && !IsSeparator(folder.back())) folder += kSeparator;
  return folder;
}

std::string FileNameOf(const std::string& path) {
  size_t slash = path.find_last_of(system::kSeparators);
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FolderOf(const std::string& path) {
  size_t slash = path.find_last_of(system::kSeparators);
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

bool FileExists(const std::string& path) {
  return system::KindOfTarget(path) == system::Kind::kFile;
}

bool FolderExists(const std::string& path) {
  return system::KindOfTarget(path) == system::Kind::kFolder;
}

bool MayRead(const std::string& path) {
  try {
    Pass(FileOperation::kOpen, path);
  } catch (const Error& error) {
    return error.Number() != ErrorNumber::kPermissionDenied;
  }
  return system::MayRead(path);
}

bool IsFolderWritable(const std::string& folder) {
  try {
    std::string probe = UniquePath(WithSeparator(folder), ".tarnwick-probe");
    OutputFile file(probe);
    file.Close();
    RemoveFile(probe);
    return true;
  } catch (const Error&) {
    return false;
  }
}

void SetFreeSpaceOverride(std::optional<uint64_t> bytes) {
  FreeSpaceOverride() = bytes;
}

uint64_t FreeSpace(const std::string& folder) {
  if (FreeSpaceOverride()) return *FreeSpaceOverride();
  std::string there = AbsolutePath(folder.empty() ? "." : folder);
  while (!FolderExists(there)) {
    there = FolderOf(WithoutSeparator(there));
    if (there.empty()) break;
  }
  std::optional<uint64_t> space = system::FreeSpaceIn(there);
  if (!space) ThrowSystemError(errno, folder);
  return *space;
}

void RequireSpace(const std::string& folder, uint64_t bytes) {
  constexpr uint64_t kMegabyte = 1'000'000;
  uint64_t available = FreeSpace(folder);
  if (available >= bytes) return;
  throw Error(ErrorNumber::kDiskFull, "There is not enough free space in " + folder + ": " +
                                          std::to_string((bytes + kMegabyte - 1) / kMegabyte) +
                                          " MB are needed, " +
                                          std::to_string(available / kMegabyte) + " MB are free");
}

void MakeFolder(const std::string& folder) {
  Pass(FileOperation::kMakeFolder, folder);
  // From the nearest one that is there downwards.
  std::vector<std::string> missing;
  std::string path = WithoutSeparator(folder);
  while (!path.empty() && !FolderExists(path)) {
    missing.push_back(path);
    path = WithoutSeparator(FolderOf(path));
  }
  for (auto part = missing.rbegin(); part != missing.rend(); ++part) {
    if (system::MakeFolder(*part)) continue;
    int code = errno;
    if (!FolderExists(*part)) ThrowSystemError(code, folder);
  }
}

void RemoveFile(const std::string& path) {
  Pass(FileOperation::kRemove, path);
  if (!system::Remove(path) && errno != ENOENT) ThrowSystemError(errno, path);
}

bool TryToRemove(const std::string& path) {
  return system::Remove(path);
}

void RenameFile(const std::string& from, const std::string& to) {
  Pass(FileOperation::kRename, from);
  if (!system::Rename(from, to)) ThrowSystemError(errno, from);
}

bool RenameNew(const std::string& from, const std::string& to) {
  Pass(FileOperation::kRename, from);
  if (system::RenameNew(from, to)) return true;
  if (errno != EEXIST) ThrowSystemError(errno, to);
  return false;
}

void CutFile(const std::string& path, uint64_t size) {
  Pass(FileOperation::kRemove, path);
  if (!system::CutFile(path, size)) ThrowSystemError(errno, path);
}

std::vector<std::string> ListFiles(const std::string& folder, std::string_view extension) {
  std::vector<std::string> names = ListEntries(folder, [&](const auto& name, system::Kind kind) {
    return kind == system::Kind::kFile ||
           (kind == system::Kind::kLink && FileExists(WithSeparator(folder) + name));
  });
  if (!extension.empty()) {
    std::erase_if(names, [&](const std::string& name) {
      return name.size() < extension.size() ||
             !SameIgnoringCase(std::string_view(name).substr(name.size() - extension.size()),
                               extension);
    });
  }
  return names;
}

std::vector<std::string> ListFolders(const std::string& folder) {
  return ListEntries(
      folder, [](const std::string&, system::Kind kind) { return kind == system::Kind::kFolder; });
}

std::optional<std::string> FindIgnoringCase(const std::string& folder, std::string_view relative) {
  std::string path = folder.empty() ? std::string(".") : folder;
  while (path.size() > 1 && IsSeparator(path.back())) path.pop_back();
  while (!relative.empty()) {
    size_t slash = relative.find_first_of(system::kSeparators);
    std::string_view part = relative.substr(0, slash);
    relative = slash == std::string_view::npos ? std::string_view() : relative.substr(slash + 1);
    if (part.empty() || part == ".") continue;
    if (part == "..") return std::nullopt;
    if (auto listed = system::ListedName(path, std::string(part))) {
      path = WithSeparator(path) + *listed;
      continue;
    }
    std::vector<std::string> same = ListEntries(
        path, [&](const std::string& name, system::Kind) { return SameIgnoringCase(name, part); });
    if (same.empty()) return std::nullopt;
    path = WithSeparator(path) + same.front();
  }
  return path;
}

}  // namespace tarnwick::platform
