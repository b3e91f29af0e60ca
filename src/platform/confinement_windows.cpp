// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/confinement.h"

#include <windows.h>

#include <sddl.h>

#include <cstddef>
#include <vector>

namespace tarnwick::platform {

namespace {

constexpr int64_t kUnitsASecond = 10'000'000;

// Of this process alone; its limits hold beside those of the job that it was started in.
HANDLE Job() {
  static HANDLE job = [] {
    HANDLE made = CreateJobObjectW(nullptr, nullptr);
    AssignProcessToJobObject(made, GetCurrentProcess());
    return made;
  }();
  return job;
}

// Limits of the job, all at once, as the system wants them.
JOBOBJECT_EXTENDED_LIMIT_INFORMATION& Limits() {
  static JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  return limits;
}

void SetLimits() {
  SetInformationJobObject(Job(), JobObjectExtendedLimitInformation, &Limits(), sizeof Limits());
}

void RemovePrivileges(HANDLE token) {
  DWORD size = 0;
  GetTokenInformation(token, TokenPrivileges, nullptr, 0, &size);
  std::vector<std::max_align_t> memory(size / sizeof(std::max_align_t) + 1);
  auto* privileges = reinterpret_cast<TOKEN_PRIVILEGES*>(memory.data());
  if (GetTokenInformation(token, TokenPrivileges, privileges, size, &size) == 0) return;
  for (DWORD i = 0; i < privileges->PrivilegeCount; ++i) {
    privileges->Privileges[i].Attributes = SE_PRIVILEGE_REMOVED;
  }
  AdjustTokenPrivileges(token, FALSE, privileges, 0, nullptr, nullptr);
}

// From here on nothing that belongs to anybody can be written to.
bool LowerIntegrity() {
  HANDLE token = nullptr;
  constexpr DWORD kAccess = TOKEN_QUERY | TOKEN_ADJUST_DEFAULT | TOKEN_ADJUST_PRIVILEGES;
  if (OpenProcessToken(GetCurrentProcess(), kAccess, &token) == 0) return false;
  RemovePrivileges(token);
  TOKEN_MANDATORY_LABEL label{};
  label.Label.Attributes = SE_GROUP_INTEGRITY;
  bool isLow = ConvertStringSidToSidW(L"S-1-16-0", &label.Label.Sid) != 0 &&
               SetTokenInformation(token, TokenIntegrityLevel, &label,
                                   sizeof label + GetLengthSid(label.Label.Sid)) != 0;
  LocalFree(label.Label.Sid);
  CloseHandle(token);
  return isLow;
}

// No memory that is executed is made or changed from here on, nothing is loaded into the process.
void DenyNewCode() {
  PROCESS_MITIGATION_DYNAMIC_CODE_POLICY code{};
  code.ProhibitDynamicCode = 1;
  SetProcessMitigationPolicy(ProcessDynamicCodePolicy, &code, sizeof code);
  PROCESS_MITIGATION_EXTENSION_POINT_DISABLE_POLICY points{};
  points.DisableExtensionPoints = 1;
  SetProcessMitigationPolicy(ProcessExtensionPointDisablePolicy, &points, sizeof points);
  PROCESS_MITIGATION_IMAGE_LOAD_POLICY images{};
  images.NoRemoteImages = 1;
  images.NoLowMandatoryLabelImages = 1;
  SetProcessMitigationPolicy(ProcessImageLoadPolicy, &images, sizeof images);
}

}  // namespace

Walls ConfineThisProcess(uint64_t maxMemory) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  Walls walls;
  Limits().BasicLimitInformation.LimitFlags =
      JOB_OBJECT_LIMIT_ACTIVE_PROCESS | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
  Limits().BasicLimitInformation.ActiveProcessLimit = 1;
  if (maxMemory > 0) {
    Limits().BasicLimitInformation.LimitFlags |= JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    Limits().ProcessMemoryLimit = static_cast<SIZE_T>(maxMemory);
  }
  SetLimits();
  DenyNewCode();
  walls.rights = LowerIntegrity();
  return walls;
}

void LimitProcessorTime(int64_t seconds) {
  FILETIME created{};
  FILETIME ended{};
  FILETIME kernel{};
  FILETIME user{};
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  int64_t used = static_cast<int64_t>(uint64_t{user.dwHighDateTime} << 32 | user.dwLowDateTime);
  Limits().BasicLimitInformation.LimitFlags |= JOB_OBJECT_LIMIT_PROCESS_TIME;
  Limits().BasicLimitInformation.PerProcessUserTimeLimit.QuadPart =
      used + (seconds + 1) * kUnitsASecond;
  SetLimits();
}

}  // namespace tarnwick::platform
