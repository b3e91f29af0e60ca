// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/mh.h"

#include <algorithm>
#include <charconv>

#include "intake/header_parser.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::sources {

namespace {

constexpr const char* kSequencesFile = ".mh_sequences";
constexpr const char* kUnseen = "unseen";
constexpr const char* kReplied = "replied";
constexpr const char* kFlagged = "flagged";
constexpr size_t kMostSequences = size_t{4} << 20;  // bytes of the file

uint64_t NumberOf(std::string_view text) {
  uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string HeadOf(const std::string& path, size_t most) {
  std::string head(most, '\0');
  try {
    platform::InputFile file(path);
    head.resize(std::min<uint64_t>(most, file.Size()));
    head.resize(file.ReadAt(0, head.data(), head.size()));
  } catch (const Error&) {
    head.clear();
  }
  return head;
}

bool BeginsWithHeaders(const std::string& path) {
  constexpr size_t kHead = 1024;
  std::string head = HeadOf(path, kHead);
  size_t end = head.find('\n');
  return end != std::string::npos && intake::BeginsHeader(std::string_view(head).substr(0, end));
}

// By their numbers.
std::vector<std::string> NamesIn(const std::vector<std::string>& files) {
  std::vector<std::string> names;
  std::copy_if(files.begin(), files.end(), std::back_inserter(names), IsMhName);
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return NumberOf(a) < NumberOf(b); });
  return names;
}

}  // namespace

bool IsMhName(std::string_view name) {
  constexpr size_t kMostDigits = 10;
  return !name.empty() && name.size() <= kMostDigits && name[0] != '0' &&
         name.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsMhFolder(const std::string& folder, const platform::FolderContent& content) {
  std::vector<std::string> names = NamesIn(content.files);
  if (names.empty()) return false;
  bool isMarked =
      std::find(content.files.begin(), content.files.end(), kSequencesFile) != content.files.end();
  // Deleted letters stay under their numbers behind a comma.
  bool isAll = std::all_of(content.files.begin(), content.files.end(), [](const std::string& name) {
    return name[0] == '.' || name[0] == ',' || IsMhName(name);
  });
  return (isMarked || isAll) && BeginsWithHeaders(folder + names.front());
}

std::vector<std::string> MhFiles(const std::string& folder) {
  auto content = platform::ListFolder(folder);
  if (!content) return {};
  std::vector<std::string> paths = NamesIn(content->files);
  for (std::string& path : paths) path.insert(0, folder);
  return paths;
}

std::string ProgramOfMh(const platform::FolderContent& content) {
  auto has = [&](const char* name) {
    return std::find(content.files.begin(), content.files.end(), name) != content.files.end();
  };
  if (has(".claws_mark") || has(".claws_cache")) return "Claws Mail";
  return has(".sylpheed_mark") || has(".sylpheed_cache") ? "Sylpheed" : "MH";
}

MhSequences::MhSequences(std::string_view text) {
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    size_t colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    std::string name(line.substr(0, colon));
    if (name != kUnseen && name != kReplied && name != kFlagged) continue;
    sequences_.try_emplace(name, RangesOf(line.substr(colon + 1)));
  }
}

// "1 4-6 9", by their beginnings.
MhSequences::Ranges MhSequences::RangesOf(std::string_view text) {
  Ranges ranges;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r"), text.size()));
    if (text.empty()) break;
    std::string_view word = text.substr(0, text.find_first_of(" \t\r"));
    text.remove_prefix(word.size());
    size_t dash = word.find('-');
    uint64_t first = NumberOf(word);
    uint64_t last = dash == std::string_view::npos ? first : NumberOf(word.substr(dash + 1));
    if (first > 0 && last >= first) ranges.push_back({first, last});
  }
  std::sort(ranges.begin(), ranges.end(),
            [](const Range& a, const Range& b) { return a.first < b.first; });
  // Those that overlap become one, so that one look decides.
  Ranges joined;
  for (const Range& range : ranges) {
    if (!joined.empty() && range.first <= joined.back().last) {
      joined.back().last = std::max(joined.back().last, range.last);
    } else {
      joined.push_back(range);
    }
  }
  return joined;
}

bool MhSequences::Holds(const std::string& sequence, uint64_t number) const {
  auto ranges = sequences_.find(sequence);
  if (ranges == sequences_.end()) return false;
  auto behind =
      std::upper_bound(ranges->second.begin(), ranges->second.end(), number,
                       [](uint64_t wanted, const Range& range) { return wanted < range.first; });
  return behind != ranges->second.begin() && std::prev(behind)->last >= number;
}

intake::MessageState MhSequences::StateOf(std::string_view name) const {
  intake::MessageState state;
  state.isKnown = !sequences_.empty();
  if (!state.isKnown) return state;
  uint64_t number = NumberOf(name);
  state.isRead = !Holds(kUnseen, number);
  state.isAnswered = Holds(kReplied, number);
  state.isFlagged = Holds(kFlagged, number);
  return state;
}

std::string SequencesIn(const std::string& folder) {
  return HeadOf(folder + kSequencesFile, kMostSequences);
}

}  // namespace tarnwick::sources
