// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Work done ahead on a second thread: things are made one after the other and wait, in order, until
// they are taken. Values move from thread to thread, and nothing is shared: what makes them uses
// nothing that the other thread changes.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace tarnwick::platform {

// How many threads the program may keep busy: 1 until it is set, and nothing is done ahead.
int WorkThreads();
void SetWorkThreads(int threads);
// As many as there are processors for the program, and it can make use of.
int ProcessorCount();

// Item: a value with a size_t Cost() const, the bytes of memory that it takes, roughly.
template <typename Item>
class Ahead {
 public:
  // make gives the next item, nullopt behind the last; it runs on the second thread and does not
  // throw. Throws std::system_error where there is no second thread to be had.
  explicit Ahead(std::function<std::optional<Item>()> make)
      : make_(std::move(make)), thread_([this] { Run(); }) {}

  // What is being made is made; nothing is begun any more.
  ~Ahead() {
    {
      std::lock_guard lock(mutex_);
      isLeft_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
  Ahead(const Ahead&) = delete;
  Ahead& operator=(const Ahead&) = delete;

  // Gives back what was taken, once it is done with: memory is freed fastest by the thread that it
  // was taken by, and the two do not wait for each other at that.
  void GiveBack(Item item) { used_.push_back(std::move(item)); }

  // The next item, which may have to be waited for; nullopt behind the last.
  std::optional<Item> Take() {
    if (taken_ == ready_.size()) {
      ready_.clear();
      taken_ = 0;
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return isEnded_ || IsWorthTaking(); });
      ready_.swap(made_);
      cost_ = 0;
      if (returned_.empty()) returned_.swap(used_);
      lock.unlock();
      changed_.notify_all();
    }
    if (ready_.empty()) return std::nullopt;
    return std::move(ready_[taken_++]);
  }

 private:
  // Twice as much at most waits to be taken, and a little is waited for, so that neither thread is
  // woken for each item.
  static constexpr size_t kMostCost = size_t{3} << 20;
  static constexpr size_t kWorthTaking = 16;
  static constexpr size_t kCostWorthTaking = size_t{256} << 10;

  bool IsWorthTaking() const { return made_.size() >= kWorthTaking || cost_ >= kCostWorthTaking; }

  void Run() {
    std::vector<Item> gone;
    for (;;) {
      gone.clear();
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isLeft_ || cost_ < kMostCost; });
        if (isLeft_) return;
        gone.swap(returned_);
      }
      std::optional<Item> item = make_();
      bool isWanted = false;
      {
        std::lock_guard lock(mutex_);
        if (item) {
          cost_ += item->Cost();
          made_.push_back(std::move(*item));
        } else {
          isEnded_ = true;
        }
        isWanted = isEnded_ || IsWorthTaking();
      }
      if (isWanted) changed_.notify_all();
      if (!item) return;
    }
  }

  std::function<std::optional<Item>()> make_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Item> made_;
  size_t cost_ = 0;  // of what was made
  std::vector<Item> returned_;
  bool isEnded_ = false;
  bool isLeft_ = false;

  std::vector<Item> ready_;  // of whoever takes
  size_t taken_ = 0;
  std::vector<Item> used_;

  std::thread thread_;  // last: it uses the others
};

}  // namespace tarnwick::platform
