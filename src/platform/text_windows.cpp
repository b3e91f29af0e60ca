// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/files.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

constexpr DWORD kQuotaExceeded = 1295;  // no name for it in older headers
constexpr uint32_t kReplacement = 0xFFFD;

// Takes one character from the front of the text, which is not empty.
uint32_t TakeCharacter(std::string_view& text) {
  auto lead = static_cast<unsigned char>(text[0]);
  size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  uint32_t character = length < 2 ? lead : lead & (0xFFU >> (length + 1));
  if (length == 0 || length > text.size() || lead > 0xF4) {
    text.remove_prefix(1);
    return kReplacement;
  }
  for (size_t i = 1; i < length; ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) {
      text.remove_prefix(1);
      return kReplacement;
    }
    character = character << 6 | (byte & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  bool isOff = character < kLeast[length] || character > 0x10FFFF;
  text.remove_prefix(isOff ? 1 : length);
  return isOff ? kReplacement : character;
}

void Append(std::string& text, uint32_t character) {
  auto tail = [&](int shift) { text += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

bool IsDrive(const std::wstring& path) {
  return path.size() >= 2 && path[1] == L':' && path[0] < 0x80 && std::isalpha(path[0]) != 0;
}

std::wstring FullByTheSystem(const std::wstring& path) {
  DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  return full;
}

// "C:\..." or "\\server\share\..." of any path, "." and ".." still in it.
std::wstring Rooted(const std::wstring& path) {
  bool isRooted =
      (IsDrive(path) && path.size() > 2 && path[2] == L'\\') || path.starts_with(L"\\\\");
  if (isRooted) return path;
  bool isOfAnotherFolder = IsDrive(path) || path.starts_with(L'\\');
  return isOfAnotherFolder ? FullByTheSystem(path) : FullByTheSystem(L".") + L'\\' + path;
}

// Where the names begin that ".." takes away.
size_t RootLength(const std::wstring& path) {
  if (IsDrive(path)) return 2;
  size_t share = path.find(L'\\', 2);
  return share == std::wstring::npos ? path.size()
                                     : std::min(path.size(), path.find(L'\\', share + 1));
}

// Absolute, without "." and "..", with a separator at the end of a root alone.
std::wstring Normal(const std::string& path) {
  std::wstring turned = Wide(path);
  std::replace(turned.begin(), turned.end(), L'/', L'\\');
  std::wstring rooted = Rooted(turned);
  size_t root = RootLength(rooted);
  std::vector<std::wstring_view> names;
  std::wstring_view rest = std::wstring_view(rooted).substr(root);
  while (!rest.empty()) {
    size_t end = std::min(rest.size(), rest.find(L'\\'));
    std::wstring_view name = rest.substr(0, end);
    rest.remove_prefix(std::min(rest.size(), end + 1));
    if (name == L"..") {
      if (!names.empty()) names.pop_back();
    } else if (!name.empty() && name != L".") {
      names.push_back(name);
    }
  }
  std::wstring normal = rooted.substr(0, root);
  for (std::wstring_view name : names) normal.append(L"\\").append(name);
  return names.empty() ? normal + L"\\" : normal;
}

bool IsOfTheSystem(const std::string& path) {
  return path.starts_with("\\\\?\\") || path.starts_with("\\\\.\\");
}

}  // namespace

std::wstring Wide(std::string_view utf8) {
  std::wstring wide;
  wide.reserve(utf8.size());
  while (!utf8.empty()) {
    uint32_t character = TakeCharacter(utf8);
    if (character >= 0x10000) {
      wide += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
      character = 0xDC00 + (character & 0x3FF);
    }
    wide += static_cast<wchar_t>(character);
  }
  return wide;
}

std::string Utf8(std::wstring_view wide) {
  std::string utf8;
  utf8.reserve(wide.size());
  for (size_t i = 0; i < wide.size(); ++i) {
    uint32_t character = wide[i];
    bool isPair =
        (character & 0xFC00) == 0xD800 && i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00;
    if (isPair) character = 0x10000 + ((character & 0x3FF) << 10) + (wide[++i] & 0x3FF);
    Append(utf8, character);
  }
  return utf8;
}

std::wstring WidePath(const std::string& path) {
  if (path.empty() || IsOfTheSystem(path)) return Wide(path);
  std::wstring normal = Normal(path);
  // "a:b" would be a part of the file "a" that no listing shows.
  if (normal.find(L':', RootLength(normal)) != std::wstring::npos) return {};
  return normal.starts_with(L"\\\\") ? L"\\\\?\\UNC" + normal.substr(1) : L"\\\\?\\" + normal;
}

std::string AbsolutePath(const std::string& path) {
  if (path.empty() || IsOfTheSystem(path)) return path;
  bool isFolder = path.back() == '/' || path.back() == '\\';
  std::string absolute = Utf8(Normal(path));
  return isFolder ? WithSeparator(absolute) : absolute;
}

std::string SystemPath(const std::string& path) {
  return Utf8(WidePath(path));
}

int ErrnoOf(unsigned long code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_DRIVE:
      return ENOENT;
    case ERROR_DIRECTORY:
      return ENOTDIR;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_WRITE_PROTECT:
      return EACCES;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case kQuotaExceeded:
      return ENOSPC;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return EEXIST;
    default:
      return EIO;
  }
}

}  // namespace tarnwick::platform
