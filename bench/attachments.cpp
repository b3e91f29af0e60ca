// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-attachments MAIL OUT: writes the attachments of every message file below MAIL into OUT,
// with a list of them, for attachments_reference.py, which finds them in another way.
#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/error.h"
#include "platform/files.h"
#include "takeout/attachments.h"

namespace {

using namespace tarnwick;

void WriteAttachments(const std::string& mail, const std::string& out) {
  platform::MakeFolder(out);
  std::string list;
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(mail)) {
    if (!entry.is_regular_file()) continue;
    takeout::MessageAttachments attachments(platform::ReadFile(entry.path().string()));
    list += "M\t" + entry.path().string() + "\n";
    for (size_t i = 0; i < attachments.List().size(); ++i) {
      std::string name = std::to_string(files++);
      platform::WriteFile(out + "/" + name, attachments.Bytes(i));
      list += "A\t" + name + "\t" + attachments.List()[i].name + "\t" + attachments.List()[i].type +
              "\n";
    }
  }
  platform::WriteFile(out + "/list", list);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: tarnwick-attachments MAIL OUT\n");
    return 2;
  }
  try {
    WriteAttachments(argv[1], argv[2]);
  } catch (const Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
