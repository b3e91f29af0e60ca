// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/owner_only_windows.h"

#include <sddl.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick::platform {

namespace {

// The user's own number as a text; "" where it can't be told.
std::wstring UserNumber() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) return {};
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<std::max_align_t> memory(size / sizeof(std::max_align_t) + 1);
  auto* user = reinterpret_cast<TOKEN_USER*>(memory.data());
  bool isTold = GetTokenInformation(token, TokenUser, user, size, &size) != 0;
  CloseHandle(token);
  wchar_t* text = nullptr;
  if (!isTold || ConvertSidToStringSidW(user->User.Sid, &text) == 0) return {};
  std::wstring number = text;
  LocalFree(text);
  return number;
}

PSECURITY_DESCRIPTOR DescriptorOf(const std::wstring& rule) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ConvertStringSecurityDescriptorToSecurityDescriptorW(rule.c_str(), SDDL_REVISION_1, &descriptor,
                                                       nullptr);
  return descriptor;
}

SECURITY_ATTRIBUTES Make() {
  SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
  std::wstring user = UserNumber();
  if (user.empty()) return attributes;
  // Protected from the folder's rules; full access for the user and the system, handed down.
  attributes.lpSecurityDescriptor = DescriptorOf(L"D:P(A;OICI;FA;;;" + user + L")(A;OICI;FA;;;SY)");
  return attributes;
}

}  // namespace

SECURITY_ATTRIBUTES* OwnerOnly() {
  static SECURITY_ATTRIBUTES attributes = Make();
  return attributes.lpSecurityDescriptor != nullptr ? &attributes : nullptr;
}

PSECURITY_DESCRIPTOR OwnerMayOnly(DWORD rights) {
  std::wstring user = UserNumber();
  if (user.empty()) return nullptr;
  std::wstring allowed = L"(A;;" + std::to_wstring(rights) + L";;;";
  // "OW" stands for whoever owns it.
  return DescriptorOf(L"D:P" + allowed + L"OW)" + allowed + user + L")(A;;GA;;;SY)");
}

}  // namespace tarnwick::platform
