// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/stored_units.h"

#include <utility>

#include "repository/repository.h"

namespace tarnwick::intake {

using repository::RepositoryDb;

StoredUnits::StoredUnits() : takenBack_(RepositoryDb().BatchesTakenBack()) {}

void StoredUnits::EndStored(int64_t mark) {
  jet::Connection& repository = RepositoryDb();
  if (repository.BatchesTakenBack() != takenBack_) {
    lost_.push_back(mark);  // in the middle of this message
  } else if (repository.Batch() != 0) {
    waiting_.push_back({repository.Batch(), mark});
  }
  EndOther();
}

void StoredUnits::EndOther() {
  try {
    RepositoryDb().EndUnit();
  } catch (...) {
    takenBack_ = RepositoryDb().BatchesTakenBack();
    throw;
  }
  takenBack_ = RepositoryDb().BatchesTakenBack();
  Settle();
}

void StoredUnits::Settle() {
  jet::Connection& repository = RepositoryDb();
  if (waiting_.empty() || waiting_.front().batch == repository.Batch()) return;
  std::vector<Waiting> left;
  for (const Waiting& unit : waiting_) {
    if (unit.batch == repository.Batch()) {
      left.push_back(unit);
    } else if (repository.IsTakenBack(unit.batch)) {
      lost_.push_back(unit.mark);
    }
  }
  waiting_ = std::move(left);
}

std::vector<int64_t> StoredUnits::TakeLost() {
  Settle();
  return std::exchange(lost_, {});
}

}  // namespace tarnwick::intake
