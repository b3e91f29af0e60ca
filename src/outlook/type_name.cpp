// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/type_name.h"

#include <algorithm>
#include <iterator>

#include "core/text.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

struct Known {
  std::string_view messageClass;
  const char* typeName;
};
constexpr Known kKnown[] = {{"ipm.note", kMailType},
                            {"ipm.post", "PostItem"},
                            {"ipm.contact", "ContactItem"},
                            {"ipm.distlist", "DistListItem"},
                            {"ipm.appointment", "AppointmentItem"},
                            {"ipm.task", "TaskItem"},
                            {"ipm.taskrequest", "TaskRequestItem"},
                            {"ipm.stickynote", "NoteItem"},
                            {"ipm.activity", "JournalItem"},
                            {"ipm.document", "DocumentItem"},
                            {"ipm.schedule.meeting", "MeetingItem"},
                            {"report", "ReportItem"}};

}  // namespace

std::string TypeNameOf(std::string_view messageClass) {
  std::string lower = platform::AsciiLower(messageClass);
  for (const Known& known : kKnown) {
    if (!core::BeginsWith(lower, known.messageClass)) continue;
    if (lower.size() == known.messageClass.size() || lower[known.messageClass.size()] == '.') {
      return known.typeName;
    }
  }
  return kUnknownType;
}

bool IsTypeName(std::string_view name) {
  return name == kUnknownType ||
         std::ranges::find(kKnown, name, &Known::typeName) != std::end(kKnown);
}

}  // namespace tarnwick::outlook
