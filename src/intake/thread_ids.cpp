// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/thread_ids.h"

#include <algorithm>

#include "platform/utf8.h"

namespace tarnwick::intake {

namespace {

constexpr size_t kHashSize = 8;
constexpr size_t kMostAnswered = 3;

enum Header : uint8_t { kMessageId, kReferences, kInReplyTo, kHeaders };
constexpr std::string_view kNames[kHeaders] = {"message-id", "references", "in-reply-to"};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The next identifier in angle brackets, without them and without the blanks of folds; "" behind
// the last.
std::string TakeId(std::string_view& text) {
  for (;;) {
    size_t open = text.find('<');
    size_t close = open == std::string_view::npos ? open : text.find('>', open);
    if (close == std::string_view::npos) {
      text = {};
      return {};
    }
    // Of an opening mark that is never closed the next one is the identifier's.
    open = text.rfind('<', close);
    std::string id;
    std::string_view found = text.substr(open + 1, close - open - 1);
    std::copy_if(found.begin(), found.end(), std::back_inserter(id),
                 [](char c) { return !IsBlank(c); });
    text.remove_prefix(close + 1);
    if (!id.empty()) return id;
  }
}

// Some programs write no brackets.
std::string OwnId(std::string_view value) {
  std::string_view rest = value;
  std::string id = TakeId(rest);
  if (!id.empty()) return id;
  value.remove_prefix(std::min(value.find_first_not_of(" \t\r\n<"), value.size()));
  return std::string(value.substr(0, value.find_first_of(" \t\r\n>")));
}

// "Your message of Monday, from Ann <ann@example.org> <123@example.org>": an address that is named
// beside it is no identifier. Those hold digits as a rule.
std::string AnsweredId(std::string_view value) {
  std::string first;
  for (std::string id = TakeId(value); !id.empty(); id = TakeId(value)) {
    bool hasDigit = std::any_of(id.begin(), id.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (hasDigit) return id;
    if (first.empty()) first = id;
  }
  return first;
}

void Add(const std::string& id, ThreadIds& ids) {
  if (id.empty()) return;
  uint64_t hash = ThreadHash(id);
  if (hash == ids.own || ids.answered.size() == kMostAnswered) return;
  if (std::find(ids.answered.begin(), ids.answered.end(), hash) == ids.answered.end()) {
    ids.answered.push_back(hash);
  }
}

// The value of each header that counts, with the lines that continue it; of each the first.
void FindHeaders(std::string_view letter, std::string_view (&values)[kHeaders]) {
  size_t found = kHeaders;  // the one that the line before belongs to
  while (!letter.empty()) {
    size_t end = std::min(letter.find('\n'), letter.size());
    std::string_view line = letter.substr(0, end);
    if (line.empty() || line == "\r") break;
    if (IsBlank(line[0])) {
      if (found != kHeaders) {
        values[found] = {values[found].data(), line.data() + line.size()};
      }
    } else {
      found = kHeaders;
      size_t colon = line.find(':');
      for (size_t i = 0; i < kHeaders && colon != std::string_view::npos; ++i) {
        bool isNew = values[i].data() == nullptr && colon == kNames[i].size();
        if (!isNew || !platform::SameWord(line.substr(0, colon), kNames[i])) continue;
        values[i] = line.substr(colon + 1);
        found = i;
      }
    }
    letter.remove_prefix(std::min(end + 1, letter.size()));
  }
}

}  // namespace

uint64_t ThreadHash(std::string_view text) {
  uint64_t hash = 0xCBF29CE484222325ULL;
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
  return hash == 0 ? 1 : hash;
}

ThreadIds ThreadOfHeaders(std::string_view letter) {
  std::string_view values[kHeaders];
  FindHeaders(letter, values);
  ThreadIds ids;
  std::string own = OwnId(values[kMessageId]);
  if (!own.empty()) ids.own = ThreadHash(own);
  std::string_view references = values[kReferences];
  Add(TakeId(references), ids);
  std::string last;
  for (std::string id = TakeId(references); !id.empty(); id = TakeId(references)) last = id;
  Add(last, ids);
  if (ids.answered.empty()) Add(AnsweredId(values[kInReplyTo]), ids);
  return ids;
}

std::string StoredThread(const ThreadIds& ids) {
  std::string bytes;
  auto append = [&](uint64_t hash) {
    for (size_t i = 0; i < kHashSize; ++i) bytes += static_cast<char>(hash >> (8 * i) & 0xFF);
  };
  if (ids.own == 0 && ids.answered.empty()) return std::string(1, '\0');
  append(ids.own);
  for (uint64_t hash : ids.answered) append(hash);
  return bytes;
}

ThreadIds ThreadOfStored(std::string_view bytes) {
  ThreadIds ids;
  for (size_t at = 0; at + kHashSize <= bytes.size(); at += kHashSize) {
    uint64_t hash = 0;
    for (size_t i = kHashSize; i-- > 0;) {
      hash = hash << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    if (at == 0) {
      ids.own = hash;
    } else if (hash != 0 && ids.answered.size() < kMostAnswered) {
      ids.answered.push_back(hash);
    }
  }
  return ids;
}

}  // namespace tarnwick::intake
