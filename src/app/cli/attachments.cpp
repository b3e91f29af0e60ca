// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/attachments.h"

#include <iostream>
#include <numeric>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/row_output.h"
#include "takeout/stored_message.h"

namespace tarnwick::app {

namespace {

void Print(size_t index, const takeout::Attachment& attachment, const std::string& name) {
  std::cout << index + 1 << '\t' << attachment.size << '\t' << OneLine(attachment.type) << '\t'
            << OneLine(name) << '\n';
}

}  // namespace

int RunAttachments(const std::vector<std::string>& words) {
  Arguments arguments(words, {"--save"}, {});
  int64_t id = ParseNumber(arguments.OnlyOperand("ID"), "ID");
  if (!takeout::ReadStoredMessage(id)) {
    std::cerr << "There is no email with ID " << id << "." << std::endl;
    return kFailed;
  }
  auto attachments = takeout::OpenAttachments(id);
  if (attachments == nullptr) {
    std::cerr << "There isn't nature email copy." << std::endl;
    return kFailed;
  }
  const std::vector<takeout::Attachment>& list = attachments->List();
  std::vector<std::string> names;
  auto folder = arguments.Value("--save");
  if (folder && !list.empty()) {
    std::vector<size_t> all(list.size());
    std::iota(all.begin(), all.end(), size_t{0});
    names = takeout::SaveAttachments(*attachments, all, *folder);
  } else {
    for (const takeout::Attachment& attachment : list) names.push_back(attachment.name);
  }
  for (size_t i = 0; i < names.size(); ++i) Print(i, list[i], names[i]);
  std::cout.flush();
  return std::cout.good() && names.size() == list.size() ? kDone : kFailed;
}

}  // namespace tarnwick::app
