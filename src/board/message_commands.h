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

namespace tarnwick::board {

struct SelectedMessage {
  int64_t id = 0;
  std::string subject;
  std::string application = {};
};

// "There isn't selected row."
void ShowNothingSelected();

// Deletes after a question; one for all of them when several are selected.
bool DeleteMessages(const std::vector<SelectedMessage>& messages);

// Changes the hot mark of one message to its opposite. Of several, all become hot unless all of
// them are, then none is.
bool ToggleActive(const std::vector<SelectedMessage>& messages);

// Takes the hot mark from every listed message, after a question.
bool MarkAllNotHot();

// The IDs of the listed messages in their order; nullopt when it was stopped or on an error, which
// has been reported.
std::optional<std::vector<int64_t>> ListedIds();

// Fills ObjectList with the IDs of the listed messages. False when the list is empty, when it was
// stopped or on an error, which has been reported.
bool FillObjectList();

// The subject by which a message's relatives are found: what follows the first ":", or the whole
// when nothing does.
std::string RelatedSubject(std::string subject);

}  // namespace tarnwick::board
