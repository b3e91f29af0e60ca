// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/search_watch.h"

#include <utility>

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

constexpr int64_t kPatienceMilliseconds = 150;

}  // namespace

SearchWatch::SearchWatch(std::function<void()> begin)
    : begin_(std::move(begin)), since_(platform::TickMilliseconds()) {
  core::State().ImportCancelFlag = false;
  repository::RepositoryDb().SetProgressHandler([this] { return Look(); });
}

SearchWatch::~SearchWatch() {
  repository::RepositoryDb().SetProgressHandler({});
  core::State().ImportCancelFlag = false;
}

bool SearchWatch::Look() {
  if (platform::TickMilliseconds() - since_ < kPatienceMilliseconds) return false;
  if (!begun_) {
    begun_ = true;
    begin_();
  }
  core::YieldEvents();
  return core::State().ImportCancelFlag;
}

}  // namespace tarnwick::board
