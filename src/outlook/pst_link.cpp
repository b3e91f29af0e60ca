// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_link.h"

#include <algorithm>

#include "outlook/type_name.h"
#include "platform/error.h"

namespace tarnwick::outlook {

PstLink::PstLink(const std::string& storePath, const std::string& program, Way way)
    : link_(intake::ReaderLink::Open(program, storePath,
                                     way == Way::kByIndex ? intake::Conversation::kOutlookStore
                                                          : intake::Conversation::kLostOutlook,
                                     intake::kDesigned)) {
  link_->TellProgress([this](int come) {
    if (come < 0) {
      step_ = static_cast<uint32_t>(-int64_t{come});
    } else if (tell_) {
      tell_(std::min(come, 100));
    }
  });
}

// Whether it comes next of what was asked ahead; answers that nobody wants any more are passed
// over.
bool PstLink::TakeAhead(const PstRequest& request) {
  std::string wanted = intake::BytesOf(request);
  while (!ahead_.empty()) {
    std::string asked = std::move(ahead_.front());
    ahead_.pop_front();
    if (asked == wanted) return true;
    link_->Answer([](std::string_view) {});
  }
  return false;
}

// The record of the answer. Behind a loss the same is asked for in steps, and then without that
// which the reader was lost over.
std::string_view PstLink::Ask(PstRequest request, const ByteSink& sink,
                              const std::function<void()>& restart) {
  if (!TakeAhead(request)) link_->Ask({}, intake::BytesOf(request));
  auto again = [&](bool /*isAlone*/) -> std::optional<std::string> {
    if (restart) restart();
    if (request.tellsSteps) {
      bool isNew =
          step_ > 0 && std::ranges::find(request.leaveOut, step_) == request.leaveOut.end();
      if (!isNew) return std::nullopt;
      request.leaveOut.push_back(step_);
    }
    request.tellsSteps = true;
    step_ = 0;
    return intake::BytesOf(request);
  };
  std::optional<std::string_view> record = link_->Answer(sink, again);
  if (!record) throw Error(ErrorNumber::kPathAccess, intake::kReaderLost);
  return *record;
}

template <typename Said>
Said PstLink::AskFor(const PstRequest& request) {
  std::string_view record = Ask(request);
  Said said;
  try {
    said = intake::RecordOf<Said>(record);
  } catch (const Error&) {
    link_->Distrust();
    throw;
  }
  if (!said.fault.empty()) throw Error(ErrorNumber::kPathAccess, said.fault);
  return said;
}

StoreSays PstLink::Store() {
  return AskFor<StoreSays>({.kind = PstRequest::Kind::kStore});
}

FolderSays PstLink::Folder(uint32_t node) {
  return AskFor<FolderSays>({.kind = PstRequest::Kind::kFolder, .place = {.node = node}});
}

ItemFacts PstLink::Facts(const reader::ItemPlace& place) {
  return AskFor<FactsSaid>({.kind = PstRequest::Kind::kFacts, .place = place}).facts;
}

std::vector<reader::FoundItem> PstLink::Found(const std::function<void(int)>& tell) {
  tell_ = tell;
  auto items = AskFor<FoundSaid>({.kind = PstRequest::Kind::kFound}).items;
  tell_ = nullptr;
  return items;
}

void PstLink::AskAhead(const std::vector<reader::ItemPlace>& places,
                       const intake::ReadingRules& rules) {
  for (const reader::ItemPlace& place : places) {
    if (ahead_.size() >= kMaxItemsAhead) return;
    ahead_.push_back(intake::BytesOf(
        PstRequest{.kind = PstRequest::Kind::kLetter, .place = place, .rules = rules}));
    try {
      link_->Ask({}, ahead_.back());
    } catch (const Error&) {
      return;  // a reader that was lost too often, which is told of each in its turn
    }
  }
}

ItemReading PstLink::Letter(const reader::ItemPlace& place, const intake::ReadingRules& rules,
                            uint64_t& budget, intake::ScratchLetter& output) {
  uint64_t written = 0;
  auto add = [&](std::string_view bytes) {
    written += bytes.size();
    if (written <= budget) output.Add(bytes);
  };
  auto restart = [&] {
    written = 0;
    output.Restart();
  };
  std::string_view record =
      Ask({.kind = PstRequest::Kind::kLetter, .place = place, .rules = rules}, add, restart);
  ItemReading reading;
  try {
    reading = intake::RecordOf<ItemReading>(record);
    if (!reading.type.empty() && !IsTypeName(reading.type)) intake::RefuseRecord();
    bool isWhole = reading.type == kMailType && written <= budget;
    if (isWhole) intake::CheckPrepared(reading.prepared, output.Held());
  } catch (const Error&) {
    link_->Distrust();
    throw Error(ErrorNumber::kPathAccess, intake::kReaderLost);
  }
  intake::TellOf(reading.prepared);
  if (written > budget) {
    throw Error(ErrorNumber::kPathAccess, "The messages take more room than their store could");
  }
  budget -= written;
  return reading;
}

}  // namespace tarnwick::outlook
