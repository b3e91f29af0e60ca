// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include <wincred.h>

#include <string>
#include <string_view>

#include "desktop_keyring.h"

namespace tarnwick::app {

namespace {

// Stands in people's keyrings; do not change. Names are of ASCII letters.
std::wstring TargetOf(const std::string& name) {
  return std::wstring(L"tarnwick/").append(name.begin(), name.end());
}

std::string LastReason() {
  return "The system's own keyring gave error " + std::to_string(GetLastError()) + ".";
}

}  // namespace

std::string DesktopKeyring::WhyNot() {
  DWORD mostKept[CRED_TYPE_MAXIMUM];
  bool mayKeep = CredGetSessionTypes(CRED_TYPE_MAXIMUM, mostKept) != 0;
  if (!mayKeep) return LastReason();
  return mostKept[CRED_TYPE_GENERIC] == CRED_PERSIST_NONE
             ? "This system may not remember passwords: it was set up so."
             : "";
}

std::optional<platform::Secret> DesktopKeyring::Find(const std::string& name) {
  PCREDENTIALW found = nullptr;
  if (CredReadW(TargetOf(name).c_str(), CRED_TYPE_GENERIC, 0, &found) == 0) return std::nullopt;
  auto* bytes = reinterpret_cast<char*>(found->CredentialBlob);
  platform::Secret password(std::string_view(bytes, found->CredentialBlobSize));
  SecureZeroMemory(bytes, found->CredentialBlobSize);
  CredFree(found);
  return password;
}

std::string DesktopKeyring::Keep(const std::string& name, const platform::Secret& password) {
  std::wstring target = TargetOf(name);
  std::string_view bytes = password.Bytes();
  CREDENTIALW kept = {};
  kept.Type = CRED_TYPE_GENERIC;
  kept.TargetName = target.data();
  // It is only read.
  kept.CredentialBlob = reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()));
  kept.CredentialBlobSize = static_cast<DWORD>(bytes.size());
  kept.Persist = CRED_PERSIST_LOCAL_MACHINE;
  return CredWriteW(&kept, 0) != 0 ? std::string() : LastReason();
}

void DesktopKeyring::Remove(const std::string& name) {
  CredDeleteW(TargetOf(name).c_str(), CRED_TYPE_GENERIC, 0);
}

}  // namespace tarnwick::app
