// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/reading_rules.h"

#include "platform/clock.h"
#include "repository/parameter_store.h"

namespace tarnwick::intake {

bool IsCompleteStored() {
  return repository::GetOption(repository::kCompleteReadingOption);
}

ReadingRules StoredRules(bool isComplete) {
  if (!isComplete) return kDesigned;
  ReadingRules rules = kComplete;
  rules.drafts = repository::GetOption(kDraftsOption);
  rules.deletedItems = repository::GetOption(kDeletedItemsOption);
  rules.outbox = repository::GetOption(kOutboxOption);
  return rules;
}

bool IsSoundDate(DateTime date) {
  constexpr int kFirstYear = 1971;
  return date >= DateTime::FromDate(kFirstYear, 1, 1) && date <= platform::Now().AddDays(1);
}

}  // namespace tarnwick::intake
