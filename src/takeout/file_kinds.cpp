// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/file_kinds.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/text.h"
#include "platform/charset.h"

namespace tarnwick::takeout {

namespace {

// Sorted.
constexpr auto kPrograms = std::to_array<std::string_view>(
    {"ade",  "adp",  "app",  "appimage", "application", "appref-ms", "appx", "bas",     "bat",
     "chm",  "cmd",  "com",  "command",  "cpl",         "crt",       "deb",  "desktop", "diagcab",
     "dll",  "docm", "dotm", "exe",      "gadget",      "grp",       "hlp",  "hta",     "inf",
     "ins",  "isp",  "jar",  "jnlp",     "job",         "js",        "jse",  "ksh",     "lnk",
     "mad",  "maf",  "mam",  "mda",      "mdb",         "mde",       "mdt",  "mdw",     "mdz",
     "msc",  "msh",  "msi",  "msix",     "msp",         "mst",       "ocx",  "ops",     "osd",
     "pcd",  "pif",  "pl",   "plg",      "pptm",        "prf",       "prg",  "ps1",     "ps2",
     "psc1", "py",   "pyc",  "reg",      "rpm",         "run",       "scf",  "scr",     "sct",
     "sh",   "shb",  "shs",  "sys",      "url",         "vb",        "vbe",  "vbp",     "vbs",
     "vsw",  "vxd",  "ws",   "wsc",      "wsf",         "wsh",       "xbap", "xlsm",    "xltm"});
static_assert(std::is_sorted(kPrograms.begin(), kPrograms.end()));

constexpr auto kExtensions = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"application/ms-tnef", ".dat"},
    {"application/msword", ".doc"},
    {"application/pdf", ".pdf"},
    {"application/pgp-keys", ".asc"},
    {"application/pgp-signature", ".asc"},
    {"application/pkcs7-mime", ".p7m"},
    {"application/pkcs7-signature", ".p7s"},
    {"application/postscript", ".ps"},
    {"application/rtf", ".rtf"},
    {"application/vnd.ms-excel", ".xls"},
    {"application/vnd.ms-powerpoint", ".ppt"},
    {"application/x-pkcs7-mime", ".p7m"},
    {"application/x-pkcs7-signature", ".p7s"},
    {"application/x-zip-compressed", ".zip"},
    {"application/zip", ".zip"},
    {"audio/mid", ".mid"},
    {"audio/midi", ".mid"},
    {"audio/mpeg", ".mp3"},
    {"audio/wav", ".wav"},
    {"audio/x-wav", ".wav"},
    {"image/bmp", ".bmp"},
    {"image/gif", ".gif"},
    {"image/jpeg", ".jpg"},
    {"image/jpg", ".jpg"},
    {"image/pjpeg", ".jpg"},
    {"image/png", ".png"},
    {"image/svg+xml", ".svg"},
    {"image/tiff", ".tif"},
    {"message/delivery-status", ".txt"},
    {"message/disposition-notification", ".txt"},
    {"message/rfc822", ".eml"},
    {"text/calendar", ".ics"},
    {"text/css", ".css"},
    {"text/csv", ".csv"},
    {"text/directory", ".vcf"},
    {"text/html", ".html"},
    {"text/plain", ".txt"},
    {"text/rfc822-headers", ".txt"},
    {"text/rtf", ".rtf"},
    {"text/vcard", ".vcf"},
    {"text/x-vcard", ".vcf"},
    {"text/xml", ".xml"},
    {"video/mpeg", ".mpg"},
    {"video/quicktime", ".mov"},
});
static_assert(std::is_sorted(kExtensions.begin(), kExtensions.end()));

}  // namespace

bool IsProgramName(std::string_view name) {
  // A Windows drops dots and blanks at the end.
  while (!name.empty() && (name.back() == '.' || name.back() == ' ')) name.remove_suffix(1);
  size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return false;
  std::string extension = platform::AsciiLower(core::Trim(name.substr(dot + 1)));
  return std::binary_search(kPrograms.begin(), kPrograms.end(), extension);
}

std::string ProgramWarning(std::string_view name) {
  return std::string(name) +
         " is a program or can start one. Open it only if you are sure of where it came from: "
         "mail has long been the way in which harmful programs travel.";
}

std::string_view ExtensionOf(std::string_view mediaType) {
  std::string lower = platform::AsciiLower(mediaType);
  const auto* found =
      std::lower_bound(kExtensions.begin(), kExtensions.end(), lower,
                       [](const auto& row, const std::string& type) { return row.first < type; });
  return found != kExtensions.end() && found->first == lower ? found->second : ".bin";
}

}  // namespace tarnwick::takeout
