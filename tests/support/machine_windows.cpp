// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/machine.h"

#include <windows.h>

#include <aclapi.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "platform/charset.h"
#include "platform/files.h"
#include "platform/windows_text.h"
#include "support/faults.h"

namespace tarnwick::testing {

FileSizeLimit::FileSizeLimit(uint64_t) : former_(0) {
  throw std::runtime_error("no limit of a file's size here");
}

FileSizeLimit::~FileSizeLimit() = default;

bool RunInChild(const std::function<void()>&) {
  throw std::runtime_error("no fork here");
}

std::string OneSpelling(std::string path) {
  path = platform::AsciiLower(path);
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

void KillThisProcess() {
  TerminateProcess(GetCurrentProcess(), 9);
  Sleep(INFINITE);
  std::abort();
}

void KillProcess(int64_t id) {
  HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(id));
  TerminateProcess(process, 9);
  CloseHandle(process);
}

void MakePipe(const std::string&) {}

void MakeLink(const std::string& target, const std::string& path) {
  bool isFolder = platform::FolderExists(platform::FolderOf(path) + target);
  CreateSymbolicLinkW(platform::WidePath(path).c_str(), platform::Wide(target).c_str(),
                      isFolder ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0);
}

bool LetOwner(const std::string& path, unsigned digit) {
  if ((digit & 4) == 0) return false;
  DWORD attributes = (digit & 2) != 0 ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_READONLY;
  return SetFileAttributesW(platform::WidePath(path).c_str(), attributes) != 0;
}

bool IsOpenToOthers(const std::string& path) {
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring wide = platform::WidePath(path);
  if (GetNamedSecurityInfoW(wide.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                            nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return true;
  }
  bool isOpen = list == nullptr;
  for (WORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    ACCESS_ALLOWED_ACE* entry = nullptr;
    GetAce(list, i, reinterpret_cast<void**>(&entry));
    PSID whom = &entry->SidStart;
    isOpen = isOpen || IsWellKnownSid(whom, WinWorldSid) ||
             IsWellKnownSid(whom, WinBuiltinUsersSid) ||
             IsWellKnownSid(whom, WinAuthenticatedUserSid);
  }
  LocalFree(descriptor);
  return isOpen;
}

bool MayBeLookedInto() {
  HANDLE process = OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId());
  if (process != nullptr) CloseHandle(process);
  return process != nullptr;
}

bool IsAdministrator() {
  return false;
}

// Where the engine locks a file of any size.
HeldFile::HeldFile(const std::string& path) {
  HANDLE file = CreateFileW(platform::WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (!LockFile(file, 0x40000000, 0, 512, 0)) throw std::runtime_error("no lock");
  handle_ = reinterpret_cast<intptr_t>(file);
}

HeldFile::~HeldFile() {
  CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace tarnwick::testing
