// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One store of Outlook's as the program asks about it: through a tarnwick-reader of its own
// (pst_record.h), which is started again behind what ended it.
//
// Letters can be asked for ahead of their time: the reader gets them ready while the program is
// busy with others, so that neither waits for the other at each.
//
// A request that fails throws Error 75; those behind it are answered. A reader that was lost too
// often costs the rest of the store: each further request then throws at once.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/reader_link.h"
#include "intake/scratch_letter.h"
#include "outlook/pst_record.h"

namespace tarnwick::outlook {

inline constexpr size_t kMaxItemsAhead = 32;

class PstLink {
 public:
  // How requests are answered: by the store's own index, or by what a search of all of it finds.
  enum class Way { kByIndex, kBySearch };

  // Throws Error for a file that can't be read and a program that can't be started.
  PstLink(const std::string& storePath, const std::string& program, Way way = Way::kByIndex);
  PstLink(const PstLink&) = delete;
  PstLink& operator=(const PstLink&) = delete;

  StoreSays Store();
  FolderSays Folder(uint32_t node);
  ItemFacts Facts(const reader::ItemPlace& place);
  // tell: how far the search has come, in percent.
  std::vector<reader::FoundItem> Found(const std::function<void(int)>& tell);

  // Has the reader get ready letters that will be asked for next, in this order.
  void AskAhead(const std::vector<reader::ItemPlace>& places, const intake::ReadingRules& rules);
  // budget: as Item::Read has it. Throws Error for what its reading ended with; what was to be told
  // of it has been told.
  ItemReading Letter(const reader::ItemPlace& place, const intake::ReadingRules& rules,
                     uint64_t& budget, intake::ScratchLetter& output);

  uint64_t StoreSize() const { return link_->StoreSize(); }
  int64_t ProcessId() const { return link_->ProcessId(); }

 private:
  using ByteSink = std::function<void(std::string_view)>;
  std::string_view Ask(PstRequest request, const ByteSink& sink = {},
                       const std::function<void()>& restart = {});
  template <typename Said>
  Said AskFor(const PstRequest& request);
  bool TakeAhead(const PstRequest& request);

  std::unique_ptr<intake::ReaderLink> link_;
  std::deque<std::string> ahead_;  // requests for letters, as they were sent
  std::function<void(int)> tell_;
  uint32_t step_ = 0;  // that the reader has come to
};

}  // namespace tarnwick::outlook
