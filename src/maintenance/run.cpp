// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/run.h"

#include <algorithm>

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

constexpr int64_t kLookMilliseconds = 30;

}  // namespace

Run::Run(int64_t total) : total_(total) {
  core::BeginLoadState();
}

Run::~Run() {
  core::EndLoadState();
  int64_t end = std::max<int64_t>(total_, 1);
  if (core::State().Ui != nullptr) core::State().Ui->ShowProgress(end, end);
}

void Run::Begin(int64_t total) {
  done_ = shown_ = 0;
  total_ = total;
}

void Run::Advance(int64_t count) {
  done_ += count;
  if (watched_ != nullptr) rowsBefore_ = watched_->RowsSeen();
  Look();
}

bool Run::Look() {
  int64_t now = platform::TickMilliseconds();
  if (now - lastLook_ >= kLookMilliseconds) {
    lastLook_ = now;
    // The end is shown once, when the run is over.
    shown_ = std::max(shown_, done_ + RowsOfStatement());
    if (core::State().Ui != nullptr && shown_ < total_) {
      core::State().Ui->ShowProgress(shown_, total_);
    }
    core::YieldEvents();
  }
  return !core::State().ImportCancelFlag;
}

void Run::Watch(jet::Connection& connection, bool mayStop) {
  watched_ = &connection;
  rowsBefore_ = connection.RowsSeen();
  connection.SetProgressHandler([this, mayStop] { return !Look() && mayStop; });
}

void Run::EndWatch() {
  watched_->SetProgressHandler({});
  watched_ = nullptr;
}

int64_t Run::RowsOfStatement() const {
  return watched_ == nullptr ? 0 : watched_->RowsSeen() - rowsBefore_;
}

Result UntilStopped(const std::function<Result()>& body) {
  try {
    return body();
  } catch (const Error& error) {
    if (repository::IsStop(error)) return Result::kStopped;
    throw;
  }
}

}  // namespace tarnwick::maintenance
