// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which of the messages that were stored are in the file: the engine may take back what it has
// collected for a commit (a full disk), messages that were done long ago among it. Every message is
// a unit of the open repository's commits; what is counted as stored is counted through this.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnwick::intake {

class StoredUnits {
 public:
  StoredUnits();

  // Ends the unit of a message. It was stored; mark is the caller's name for it. Both throw Error
  // when a commit fails.
  void EndStored(int64_t mark);
  // Ends the unit of one that was not.
  void EndOther();

  // The marks of the messages that have been taken back since the last call. All that was stored is
  // known to be in the file or not once the group has ended.
  std::vector<int64_t> TakeLost();

 private:
  struct Waiting {
    int64_t batch;
    int64_t mark;
  };
  void Settle();

  std::vector<Waiting> waiting_;  // in batches that are not committed yet
  std::vector<int64_t> lost_;
  int64_t takenBack_;  // batches, until the end of the last unit
};

}  // namespace tarnwick::intake
