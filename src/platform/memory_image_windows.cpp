// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include <aclapi.h>

#include "platform/owner_only_windows.h"
#include "platform/secret.h"

namespace tarnwick::platform {

namespace {

struct Former {
  int count = 0;  // of those that live
  UINT errorMode = 0;
  PACL access = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;  // in which the access list lies
};

Former& State() {
  static Former former;
  return former;
}

DWORD SetAccess(PACL access) {
  return SetSecurityInfo(GetCurrentProcess(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                         nullptr, access, nullptr);
}

// The user's other programs may still see, wait for and end this one.
void ForbidLooking() {
  Former& former = State();
  if (GetSecurityInfo(GetCurrentProcess(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                      nullptr, &former.access, nullptr, &former.descriptor) != ERROR_SUCCESS) {
    return;
  }
  constexpr DWORD kHarmless = PROCESS_QUERY_LIMITED_INFORMATION | PROCESS_TERMINATE | SYNCHRONIZE;
  PSECURITY_DESCRIPTOR rule = OwnerMayOnly(kHarmless);
  BOOL isThere = FALSE;
  BOOL isDefault = FALSE;
  PACL access = nullptr;
  if (rule == nullptr) return;
  if (GetSecurityDescriptorDacl(rule, &isThere, &access, &isDefault) != 0) SetAccess(access);
  LocalFree(rule);
}

}  // namespace

// The report that the system makes of a crash holds parts of the memory; without its window there
// is none.
NoMemoryImage::NoMemoryImage() {
  Former& former = State();
  if (former.count++ > 0) return;
  former.errorMode = SetErrorMode(SEM_NOGPFAULTERRORBOX);
  SetErrorMode(former.errorMode | SEM_NOGPFAULTERRORBOX);
  ForbidLooking();
}

NoMemoryImage::~NoMemoryImage() {
  Former& former = State();
  if (--former.count > 0) return;
  SetErrorMode(former.errorMode);
  if (former.descriptor == nullptr) return;
  SetAccess(former.access);
  LocalFree(former.descriptor);
  former.descriptor = nullptr;
}

}  // namespace tarnwick::platform
