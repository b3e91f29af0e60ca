// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages that were deleted, until the repository is closed: copies of their rows in an encrypted
// file of the scratch folder, which every opening of a repository empties. So a crash leaves them
// deleted, and nothing comes back by itself. What else belongs to a message stays in the repository
// when it is deleted, and is there for one that is taken back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick::maintenance {

class DeletedMessages {
 public:
  // Keeps the rows of messages that are about to be deleted. Throws Error; then nothing of them is
  // kept. REQUIRES: they lie in the open repository.
  void Keep(const std::vector<int64_t>& ids);
  // What was kept and then deleted is one step; these are the messages of it.
  void EndStep(std::vector<int64_t> deleted);

  bool CanTakeBack() const { return !steps_.empty(); }
  size_t NextCount() const { return steps_.empty() ? 0 : steps_.back().size(); }
  // Puts the messages of the last step back under their numbers; one that was loaded again
  // meanwhile is left out. How many came back; on an error, which is thrown, the step stays.
  int64_t TakeBack();

  // The repository was changed as a whole.
  void Forget() { steps_.clear(), made_ = false; }

 private:
  static std::string File();
  static void Drop(const std::vector<int64_t>& ids);

  bool made_ = false;
  std::vector<std::vector<int64_t>> steps_;
};

}  // namespace tarnwick::maintenance
