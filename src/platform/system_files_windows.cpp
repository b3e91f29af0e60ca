// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The numbers of open files are the C library's, so that they look as elsewhere; what is done with
// them goes to the system itself, which knows 64 bits and no text mode.
#include "platform/system_files.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>

#include "platform/clock.h"
#include "platform/file_errors.h"
#include "platform/files.h"
#include "platform/owner_only_windows.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

const char kSeparator = '\\';
const std::string_view kProgramEnding = ".exe";

namespace {

// Other programs, and we ourselves, go on as if the file were not open.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr size_t kMostAtOnce = size_t{1} << 30;
constexpr int64_t kUnitsASecond = 10'000'000;       // of a file's times
constexpr int64_t kSecondsTo1970 = 11'644'473'600;  // from where they are counted

struct CloseIt {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseIt>;

bool Fail() {
  errno = ErrnoOf(GetLastError());
  return false;
}

bool Done(BOOL result) {
  return result != 0 || Fail();
}

HANDLE HandleOf(int handle) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(handle));
}

// Empty, and the reason in errno, where it can't be opened.
Handle OpenExisting(const std::string& path, DWORD access, DWORD flags = 0) {
  HANDLE handle = CreateFileW(WidePath(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr);
  if (handle != INVALID_HANDLE_VALUE) return Handle(handle);
  Fail();
  return nullptr;
}

// What is told of a file or folder, links followed; no right to read it is needed.
std::optional<BY_HANDLE_FILE_INFORMATION> InformationOf(const std::string& path) {
  Handle handle = OpenExisting(path, FILE_READ_ATTRIBUTES);
  BY_HANDLE_FILE_INFORMATION information{};
  if (!handle || !Done(GetFileInformationByHandle(handle.get(), &information))) return std::nullopt;
  return information;
}

int64_t Joined(DWORD high, DWORD low) {
  return static_cast<int64_t>(uint64_t{high} << 32 | low);
}

system::Kind KindOfAttributes(DWORD attributes, DWORD reparseTag) {
  bool isLink =
      (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(reparseTag);
  if (isLink) return system::Kind::kLink;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return system::Kind::kFolder;
  return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? system::Kind::kOther : system::Kind::kFile;
}

bool IsFolder(const std::wstring& path) {
  DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// In place of a file that is open somewhere, as elsewhere; not every file system knows this way.
bool ReplaceOpen(const std::string& from, const std::wstring& to) {
  constexpr DWORD kReplaceIfExists = 1;
  constexpr DWORD kPosixSemantics = 2;
  constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
  Handle handle = OpenExisting(from, DELETE | SYNCHRONIZE);
  if (!handle) return false;
  size_t size = sizeof(FILE_RENAME_INFO) + to.size() * sizeof(wchar_t);
  auto memory = std::make_unique<std::byte[]>(size);
  auto* rename = reinterpret_cast<FILE_RENAME_INFO*>(memory.get());
  // The flags stand where the older form of the request has a truth value.
  *reinterpret_cast<DWORD*>(rename) = kReplaceIfExists | kPosixSemantics;
  rename->FileNameLength = static_cast<DWORD>(to.size() * sizeof(wchar_t));
  std::copy(to.begin(), to.end(), rename->FileName);
  return SetFileInformationByHandle(handle.get(), kRenameInfoEx, rename,
                                    static_cast<DWORD>(size)) != 0;
}

}  // namespace

namespace system {

const std::string_view kSeparators = "\\/";

bool MeansFull(int code) {
  return code == ENOSPC;
}

int Open(const std::string& path, Use use) {
  DWORD access = use == Use::kRead     ? GENERIC_READ
                 : use == Use::kAppend ? FILE_APPEND_DATA | SYNCHRONIZE
                                       : GENERIC_WRITE;
  DWORD disposition = use == Use::kRead ? OPEN_EXISTING : OPEN_ALWAYS;
  std::wstring wide = WidePath(path);
  if (wide.empty() && use != Use::kRead) {
    errno = EINVAL;
    return -1;
  }
  HANDLE handle = CreateFileW(wide.c_str(), access, kShareAll, OwnerOnly(), disposition,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    Fail();
    if (errno == EACCES && IsFolder(wide)) errno = EISDIR;
    return -1;
  }
  // An older file keeps its access list and its other attributes, as elsewhere.
  if (use == Use::kWriteAnew && SetEndOfFile(handle) == 0) {
    Fail();
    CloseHandle(handle);
    return -1;
  }
  int number = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY | _O_NOINHERIT);
  if (number < 0) CloseHandle(handle);
  return number;
}

int Close(int handle) {
  return _close(handle);
}

std::FILE* OpenStream(const std::string& path) {
  return _wfopen(WidePath(path).c_str(), L"rbN");
}

int HandedFile() {
  return _open_osfhandle(reinterpret_cast<intptr_t>(GetStdHandle(STD_OUTPUT_HANDLE)),
                         _O_BINARY | _O_NOINHERIT);
}

int64_t SizeOf(int handle) {
  HANDLE file = HandleOf(handle);
  LARGE_INTEGER size{};
  bool isPlain = file != INVALID_HANDLE_VALUE && GetFileType(file) == FILE_TYPE_DISK;
  return isPlain && GetFileSizeEx(file, &size) != 0 ? size.QuadPart : -1;
}

int64_t ReadAt(int handle, uint64_t offset, void* buffer, size_t count) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD got = 0;
  auto wanted = static_cast<DWORD>(std::min(count, kMostAtOnce));
  if (::ReadFile(HandleOf(handle), buffer, wanted, &got, &place) != 0) return got;
  if (GetLastError() == ERROR_HANDLE_EOF) return 0;
  Fail();
  return -1;
}

int64_t Write(int handle, const void* bytes, size_t count) {
  DWORD done = 0;
  auto wanted = static_cast<DWORD>(std::min(count, kMostAtOnce));
  return Done(::WriteFile(HandleOf(handle), bytes, wanted, &done, nullptr)) ? int64_t{done} : -1;
}

bool Rewind(int handle) {
  return Done(SetFilePointerEx(HandleOf(handle), LARGE_INTEGER{}, nullptr, FILE_BEGIN));
}

bool Cut(int handle, uint64_t size) {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<int64_t>(size);
  return Done(SetFilePointerEx(HandleOf(handle), end, nullptr, FILE_BEGIN)) &&
         Done(SetEndOfFile(HandleOf(handle)));
}

bool ShareBlocks(int, int) {
  return false;
}

std::optional<int64_t> CopyPiece(int, int, size_t) {
  return std::nullopt;
}

Kind KindOf(const std::string& path) {
  std::wstring wide = WidePath(path);
  DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Kind::kNone;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return KindOfAttributes(attributes, 0);
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileW(wide.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return KindOfAttributes(attributes, 0);
  FindClose(search);
  return KindOfAttributes(found.dwFileAttributes, found.dwReserved0);
}

Kind KindOfTarget(const std::string& path) {
  DWORD attributes = GetFileAttributesW(WidePath(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Kind::kNone;
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return KindOfAttributes(attributes, 0);
  auto information = InformationOf(path);
  return information ? KindOfAttributes(information->dwFileAttributes, 0) : Kind::kNone;
}

std::optional<std::pair<uint64_t, uint64_t>> IdentityOf(const std::string& path) {
  auto information = InformationOf(path);
  if (!information) return std::nullopt;
  return std::pair<uint64_t, uint64_t>(
      information->dwVolumeSerialNumber,
      Joined(information->nFileIndexHigh, information->nFileIndexLow));
}

bool ListEntries(const std::string& folder,
                 const std::function<void(const std::string& name, Kind kind)>& take) {
  std::wstring pattern = WidePath(folder);
  if (pattern.empty()) {
    errno = ENOENT;
    return false;
  }
  if (!pattern.ends_with(L'\\')) pattern += L'\\';
  pattern += L'*';
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                   nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_NOT_FOUND || Fail();
  do {
    std::wstring_view name = found.cFileName;
    if (name == L"." || name == L"..") continue;
    take(Utf8(name), KindOfAttributes(found.dwFileAttributes, found.dwReserved0));
  } while (FindNextFileW(search, &found) != 0);
  bool isWhole = GetLastError() == ERROR_NO_MORE_FILES || Fail();
  FindClose(search);
  return isWhole;
}

bool MayRead(const std::string& path) {
  return OpenExisting(path, GENERIC_READ) || GetLastError() != ERROR_ACCESS_DENIED;
}

std::optional<uint64_t> FreeSpaceIn(const std::string& folder) {
  ULARGE_INTEGER available{};
  std::wstring wide = WidePath(folder);
  if (!wide.ends_with(L'\\')) wide += L'\\';
  if (!Done(GetDiskFreeSpaceExW(wide.c_str(), &available, nullptr, nullptr))) return std::nullopt;
  return available.QuadPart;
}

std::optional<std::string> ListedName(const std::string& folder, const std::string& name) {
  // Those would stand for any name.
  if (name.find_first_of("*?") != std::string::npos) return std::nullopt;
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileW(WidePath(WithSeparator(folder) + name).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return std::nullopt;
  FindClose(search);
  return Utf8(found.cFileName);
}

bool MakeFolder(const std::string& folder) {
  return Done(CreateDirectoryW(WidePath(folder).c_str(), OwnerOnly()));
}

bool Remove(const std::string& path) {
  std::wstring wide = WidePath(path);
  if (DeleteFileW(wide.c_str()) != 0) return true;
  if (GetLastError() != ERROR_ACCESS_DENIED) return Fail();
  if (IsFolder(wide)) return Done(RemoveDirectoryW(wide.c_str()));
  // A file that may only be read goes with its folder's leave, as elsewhere.
  DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0) {
    errno = EACCES;
    return false;
  }
  SetFileAttributesW(wide.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  return Done(DeleteFileW(wide.c_str()));
}

bool Rename(const std::string& from, const std::string& to) {
  std::wstring target = WidePath(to);
  if (MoveFileExW(WidePath(from).c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0)
    return true;
  Fail();
  int code = errno;
  if (code == EACCES && ReplaceOpen(from, target)) return true;
  errno = code;
  return false;
}

bool RenameNew(const std::string& from, const std::string& to) {
  return Done(MoveFileExW(WidePath(from).c_str(), WidePath(to).c_str(), 0));
}

bool CutFile(const std::string& path, uint64_t size) {
  Handle handle = OpenExisting(path, GENERIC_WRITE);
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<int64_t>(size);
  return handle && Done(SetFilePointerEx(handle.get(), end, nullptr, FILE_BEGIN)) &&
         Done(SetEndOfFile(handle.get()));
}

bool Link(const std::string& from, const std::string& to) {
  return Done(CreateHardLinkW(WidePath(to).c_str(), WidePath(from).c_str(), nullptr));
}

}  // namespace system

bool IsOutOfRoom(int systemError) {
  auto code = static_cast<DWORD>(systemError);
  return ErrnoOf(code) == ENOSPC || code == ERROR_FILE_TOO_LARGE;
}

std::string ProgramPath() {
  constexpr DWORD kLongestPath = 32768;
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return Utf8(path);
}

uint64_t FileSize(const std::string& path) {
  auto information = InformationOf(path);
  if (!information) ThrowSystemError(errno, path);
  if ((information->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    ThrowSystemError(EISDIR, path);
  return static_cast<uint64_t>(Joined(information->nFileSizeHigh, information->nFileSizeLow));
}

DateTime FileModified(const std::string& path) {
  auto information = InformationOf(path);
  if (!information) ThrowSystemError(errno, path);
  const FILETIME& written = information->ftLastWriteTime;
  int64_t units = Joined(written.dwHighDateTime, written.dwLowDateTime);
  return LocalFromUnix(units / kUnitsASecond - kSecondsTo1970);
}

bool SetFileModified(const std::string& path, DateTime local) {
  int64_t units = (UnixFromLocal(local) + kSecondsTo1970) * kUnitsASecond;
  if (units <= 0) return false;
  FILETIME written{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
  Handle handle = OpenExisting(path, FILE_WRITE_ATTRIBUTES);
  return handle && Done(SetFileTime(handle.get(), nullptr, nullptr, &written));
}

void BeginFlush(const std::string&, const std::function<void()>&) {}

void FlushToDisk(const std::string& path) {
  std::string place = path.empty() ? "." : path;
  Handle handle = OpenExisting(place, GENERIC_WRITE);
  bool isDone = handle && Done(FlushFileBuffers(handle.get()));
  int code = errno;
  // Names are flushed where the person may write to the folder as such; the file system keeps them
  // in a log of its own.
  if (!isDone && !FolderExists(place)) ThrowSystemError(code, path);
}

}  // namespace tarnwick::platform
