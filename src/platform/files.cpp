// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/file_errors.h"

namespace tarnwick::platform {

namespace fs = std::filesystem;

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

fs::path ToPath(const std::string& path) {
#ifdef _WIN32
  return fs::u8path(path);
#else
  return fs::path(path);
#endif
}

std::string FromPath(const fs::path& path) {
#ifdef _WIN32
  return path.u8string();
#else
  return path.string();
#endif
}

void ThrowIf(const std::error_code& code, const std::string& path) {
  if (code) ThrowSystemError(code.default_error_condition().value(), path);
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

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Lower(x) == Lower(y); });
}

std::vector<std::string> ListEntries(
    const std::string& folder, const std::function<bool(const fs::directory_entry&)>& wanted) {
  std::vector<std::string> names;
  std::error_code code;
  fs::directory_iterator entries(ToPath(folder), code);
  for (; !code && entries != fs::directory_iterator(); entries.increment(code)) {
    if (wanted(*entries)) names.push_back(FromPath(entries->path().filename()));
  }
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
  } else if (code == ENOSPC || code == EDQUOT) {
    number = ErrorNumber::kDiskFull;
    what = "Disk full";
  }
  throw Error(number, std::string(what) + ": " + path);
}

std::string WithSeparator(std::string folder) {
  if (!folder.empty() && folder.back() != kSeparator) folder += kSeparator;
  return folder;
}

std::string FileNameOf(const std::string& path) {
  size_t slash = path.find_last_of(kSeparator == '\\' ? "\\/" : "/");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string FolderOf(const std::string& path) {
  size_t slash = path.find_last_of(kSeparator == '\\' ? "\\/" : "/");
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string ProgramPath() {
#ifdef _WIN32
  wchar_t path[32768];
  DWORD length = GetModuleFileNameW(nullptr, path, 32768);
  return FromPath(fs::path(std::wstring(path, length)));
#else
  std::error_code code;
  return FromPath(fs::read_symlink("/proc/self/exe", code));
#endif
}

std::string AbsolutePath(const std::string& path) {
  std::error_code code;
  fs::path absolute = fs::absolute(ToPath(path), code);
  return code ? path : FromPath(absolute.lexically_normal());
}

bool FileExists(const std::string& path) {
  std::error_code code;
  return fs::is_regular_file(ToPath(path), code);
}

bool FolderExists(const std::string& path) {
  std::error_code code;
  return fs::is_directory(ToPath(path), code);
}

bool MayRead(const std::string& path) {
  try {
    Pass(FileOperation::kOpen, path);
  } catch (const Error& error) {
    return error.Number() != ErrorNumber::kPermissionDenied;
  }
#ifdef _WIN32
  return ::_waccess(ToPath(path).c_str(), 4) == 0 || errno != EACCES;
#else
  // Without the right to enter a folder its files can be listed, but not read.
  int wanted = FolderExists(path) ? R_OK | X_OK : R_OK;
  return ::access(path.c_str(), wanted) == 0 || (errno != EACCES && errno != EPERM);
#endif
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

uint64_t FileSize(const std::string& path) {
  std::error_code code;
  uint64_t size = fs::file_size(ToPath(path), code);
  ThrowIf(code, path);
  return size;
}

DateTime FileModified(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) ThrowSystemError(errno, path);
  return LocalFromUnix(status.st_mtime);
}

void SetFreeSpaceOverride(std::optional<uint64_t> bytes) {
  FreeSpaceOverride() = bytes;
}

uint64_t FreeSpace(const std::string& folder) {
  if (FreeSpaceOverride()) return *FreeSpaceOverride();
  fs::path there = ToPath(AbsolutePath(folder.empty() ? "." : folder));
  std::error_code code;
  while (!fs::is_directory(there, code) && there.has_relative_path()) there = there.parent_path();
  fs::space_info space = fs::space(there, code);
  ThrowIf(code, folder);
  return space.available;
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
  fs::path path = ToPath(folder);
  if (!path.has_filename()) path = path.parent_path();
  std::error_code code;
  if (fs::is_directory(path, code)) return;
  fs::path missing;
  for (const fs::path& part : path) {
    missing /= part;
    if (fs::is_directory(missing, code)) continue;
    bool made = fs::create_directory(missing, code);
    ThrowIf(code, folder);
    if (made) fs::permissions(missing, fs::perms::owner_all, code);
  }
}

void RemoveFile(const std::string& path) {
  Pass(FileOperation::kRemove, path);
  if (::remove(path.c_str()) != 0 && errno != ENOENT) ThrowSystemError(errno, path);
}

void RenameFile(const std::string& from, const std::string& to) {
  Pass(FileOperation::kRename, from);
  std::error_code code;
  fs::rename(ToPath(from), ToPath(to), code);
  ThrowIf(code, from);
}

bool RenameNew(const std::string& from, const std::string& to) {
  Pass(FileOperation::kRename, from);
#ifdef __linux__
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  // Not every file system knows this way of renaming.
  if (errno != EINVAL && errno != ENOSYS) ThrowSystemError(errno, to);
#endif
  std::error_code code;
  if (fs::exists(fs::symlink_status(ToPath(to), code))) return false;
  fs::rename(ToPath(from), ToPath(to), code);
  ThrowIf(code, to);
  return true;
}

void CutFile(const std::string& path, uint64_t size) {
  Pass(FileOperation::kRemove, path);
  std::error_code code;
  fs::resize_file(ToPath(path), size, code);
  ThrowIf(code, path);
}

bool SetFileModified(const std::string& path, DateTime local) {
  std::error_code code;
  auto since = std::chrono::seconds(UnixFromLocal(local));
  fs::last_write_time(ToPath(path),
                      std::chrono::file_clock::from_sys(std::chrono::sys_seconds(since)), code);
  return !code;
}

std::vector<std::string> ListFiles(const std::string& folder, std::string_view extension) {
  std::vector<std::string> names = ListEntries(folder, [](const fs::directory_entry& entry) {
    std::error_code code;
    return entry.is_regular_file(code);
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
  return ListEntries(folder, [](const fs::directory_entry& entry) {
    std::error_code code;
    return entry.is_directory(code) && !entry.is_symlink(code);
  });
}

std::optional<std::string> FindIgnoringCase(const std::string& folder, std::string_view relative) {
  std::string path = folder.empty() ? std::string(".") : folder;
  while (path.size() > 1 && path.back() == kSeparator) path.pop_back();
  while (!relative.empty()) {
    size_t slash = relative.find('/');
    std::string_view part = relative.substr(0, slash);
    relative = slash == std::string_view::npos ? std::string_view() : relative.substr(slash + 1);
    if (part.empty() || part == ".") continue;
    if (part == "..") return std::nullopt;
    std::string exact = WithSeparator(path) + std::string(part);
    std::error_code code;
    if (fs::exists(ToPath(exact), code)) {
      path = exact;
      continue;
    }
    std::vector<std::string> same = ListEntries(path, [&](const fs::directory_entry& entry) {
      return SameIgnoringCase(FromPath(entry.path().filename()), part);
    });
    if (same.empty()) return std::nullopt;
    path = WithSeparator(path) + same.front();
  }
  return path;
}

}  // namespace tarnwick::platform
