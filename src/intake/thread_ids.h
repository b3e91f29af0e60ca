// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a letter's headers say of the conversation it belongs to: a hash of its own Message-ID and
// of those it answers. Stored with every message in Email.Thread; search/conversations.h makes
// conversations of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::intake {

struct ThreadIds {
  uint64_t own = 0;                // 0 for none
  std::vector<uint64_t> answered;  // each once, at most three
  friend bool operator==(const ThreadIds&, const ThreadIds&) = default;
};

// Of the headers that a letter begins with; what stands behind them is not looked at. The first
// and the last of References are taken: the letter that it all began with, and the one answered.
// Without any, it is what In-Reply-To names.
ThreadIds ThreadOfHeaders(std::string_view letter);

// The bytes for Email.Thread: eight for each hash, the lowest first, the letter's own at the head;
// a single 0 where the headers tell nothing. Embedded in every repository, as the hash is: do not
// change.
std::string StoredThread(const ThreadIds& ids);
ThreadIds ThreadOfStored(std::string_view bytes);

// FNV-1a, 64 bits; never 0.
uint64_t ThreadHash(std::string_view text);

}  // namespace tarnwick::intake
