// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the registry view of a profile folder. With an odd first byte the rest is a user.reg; with
// an even one it is a list of patches to a sound hive, four bytes each: place and value.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "samples/hive_builder.h"
#include "support/temp_folder.h"

namespace {

namespace platform = tarnwick::platform;

std::string SoundHive() {
  tarnwick::samples::HiveBuilder hive;
  hive.AddText("Identities\\{A}", "Username", "Ann");
  hive.AddText("Identities\\{A}\\Software", "Store Root", "%UserProfile%\\Mail\\", true);
  hive.AddNumber("Identities\\{B}", "Directory Name", 7);
  hive.AddText("Environment", "Анна", "C:\\Temp");
  return hive.Build();
}

void Walk(platform::Registry& registry, const std::string& path, int depth) {
  for (const char* name : {"Username", "Store Root", ""}) {
    if (auto value = registry.Value(path, name)) registry.MapPath(value->text);
  }
  auto keys = registry.SubKeys(path);
  if (!keys || depth == 0) return;
  size_t looked = 0;
  for (const std::string& key : *keys) {
    if (++looked > 8) return;
    std::string below = path;
    if (!below.empty()) below += '\\';
    Walk(registry, below.append(key), depth - 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static const std::string sound = SoundHive();
  static const tarnwick::testing::TempFolder folder;
  platform::RemoveFile(folder.File("NTUSER.DAT"));
  platform::RemoveFile(folder.File("user.reg"));
  if (data[0] % 2 == 1) {
    platform::WriteFile(folder.File("user.reg"),
                        std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  } else {
    std::string bytes = sound;
    for (size_t i = 1; i + 4 <= size; i += 4) {
      size_t place = (data[i] | static_cast<size_t>(data[i + 1]) << 8) % bytes.size();
      bytes[place] = static_cast<char>(data[i + 2]);
      if (place + 1 < bytes.size()) bytes[place + 1] = static_cast<char>(data[i + 3]);
    }
    platform::WriteFile(folder.File("NTUSER.DAT"), bytes);
  }
  try {
    Walk(*platform::OpenProfile(folder.Path()), "", 4);
  } catch (const tarnwick::Error&) {
    // A damaged registry is refused.
  }
  return 0;
}
