// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A bounded store of what was made from texts: the least recently used goes first. Internal to the
// database.
#pragma once

#include <cassert>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tarnwick::jet {

template <typename Made>
class TextCache {
 public:
  explicit TextCache(size_t capacity) : capacity_(capacity) {}

  // nullptr when there is none. What is found stays alive with its owner, whatever is dropped here.
  std::shared_ptr<Made> Find(std::string_view text) {
    auto found = places_.find(text);
    if (found == places_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->made;
  }

  // REQUIRES: Find(text) gave nullptr.
  void Add(std::string_view text, std::shared_ptr<Made> made) {
    assert(places_.find(text) == places_.end());
    if (entries_.size() >= capacity_) {
      places_.erase(entries_.back().text);
      entries_.pop_back();
    }
    entries_.push_front({std::string(text), std::move(made)});
    places_.emplace(entries_.front().text, entries_.begin());
  }

  void Clear() {
    places_.clear();
    entries_.clear();
  }

 private:
  struct Entry {
    std::string text;
    std::shared_ptr<Made> made;
  };
  size_t capacity_;
  std::list<Entry> entries_;  // most recently used first
  std::unordered_map<std::string_view, typename std::list<Entry>::iterator> places_;
};

}  // namespace tarnwick::jet
