// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/timeline_scope.h"

#include "board/list_query.h"

namespace tarnwick::board {

// The conditions of the list, without its joins. "FromTo + 0" keeps the engine from using the index
// of FromTo: it would look up every message of a correspondent for each part of the range, where
// the dates alone should select the messages. The files of a message are asked for one by one, as a
// list of all that match would have to be made for each part.
timeline::Scope TimelineScope(const ListFilter& filter) {
  ListFilter own = filter;
  own.FromTo.clear();
  own.FileName.clear();
  timeline::Scope scope{filter.DateFrom, filter.DateTo, ListConditions(own), {}};
  if (!filter.FromTo.empty()) {
    scope.ofCorrespondent = " AND Email.FromTo + 0 IN (SELECT MeContact.ID FROM MeContact WHERE " +
                            ContactCondition(filter) + ")";
  }
  if (!filter.FileName.empty()) {
    scope.conditions +=
        " AND Email.ID IN (SELECT Attachment.EmailID FROM Attachment WHERE "
        "Attachment.EmailID = Email.ID AND " +
        AttachmentCondition(filter) + ")";
  }
  return scope;
}

}  // namespace tarnwick::board
