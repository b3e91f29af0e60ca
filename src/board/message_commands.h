// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the main window does to listed messages, without the window. Each asks and reports by itself
// and returns true when rows were changed; the list is the caller's to query and bind anew.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "maintenance/deleted_messages.h"

namespace tarnwick::board {

struct SelectedMessage {
  int64_t id = 0;
  std::string subject;
  std::string application = {};
};

// "There isn't selected row."
void ShowNothingSelected();

// Deletes after a question; one for all of them when several are selected. They are put into kept
// before they go; where that fails the person is asked once more.
bool DeleteMessages(const std::vector<SelectedMessage>& messages,
                    maintenance::DeletedMessages* kept = nullptr);

// Brings back what was deleted last, and says so in the status bar.
bool UndoDelete(maintenance::DeletedMessages& kept);

// Changes the hot mark of one message to its opposite. Of several, all become hot unless all of
// them are, then none is.
bool ToggleActive(const std::vector<SelectedMessage>& messages);

// Takes the hot mark from every listed message, after a question.
bool MarkAllNotHot();

// The IDs of the listed messages in their order; nullopt when it was stopped or on an error, which
// has been reported.
std::optional<std::vector<int64_t>> ListedIds();

// The subject by which a message's relatives are found: what follows the first ":", or the whole
// when nothing does.
std::string RelatedSubject(std::string subject);

}  // namespace tarnwick::board
