// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/layout_store.h"

#include <cstdint>

#include "repository/parameter_store.h"

namespace tarnwick::board {

namespace {

constexpr const char* kPlaceGroup = "XYMainBoard";
constexpr const char* kTimelineGroup = "Timeline";
constexpr const char* kConversationsGroup = "Conversations";
constexpr const char* kReadingGroup = "ReadingPane";
constexpr const char* kRecentGroup = "RecentRepository";
constexpr size_t kMostRecent = 8;
constexpr const char* kShownKey = "Shown";
// 10,000 pixels: nothing wider was ever meant.
constexpr int64_t kWidest = int64_t{10000} * kTwipsPerPixel;

int ReadNumber(const char* key) {
  int64_t stored = repository::GetParameter(kPlaceGroup, key, repository::kAmountColumn).AsInt();
  return stored >= -kWidest && stored <= kWidest ? static_cast<int>(stored) : 0;
}

}  // namespace

WindowPlace ReadWindowPlace() {
  return {ReadNumber("1"), ReadNumber("2"), ReadNumber("4"), ReadNumber("3")};
}

void SaveWindowPlace(const WindowPlace& place) {
  auto write = [](const char* key, int value) {
    repository::SetParameter(kPlaceGroup, key, repository::kAmountColumn, value);
  };
  write("1", place.left);
  write("2", place.top);
  write("3", place.height);
  write("4", place.width);
}

bool ReadTimelineShown() {
  jet::Value stored =
      repository::GetParameter(kTimelineGroup, kShownKey, repository::kAmountColumn);
  return stored.IsNull() || stored.AsInt() != 0;
}

void SaveTimelineShown(bool shown) {
  repository::SetParameter(kTimelineGroup, kShownKey, repository::kAmountColumn, shown ? 1 : 0);
}

bool ReadConversationsShown() {
  return repository::GetParameter(kConversationsGroup, kShownKey, repository::kAmountColumn)
             .AsInt() != 0;
}

void SaveConversationsShown(bool shown) {
  repository::SetParameter(kConversationsGroup, kShownKey, repository::kAmountColumn,
                           shown ? 1 : 0);
}

ReadingPane ReadReadingPane(ReadingPlace usual) {
  auto read = [](const char* key) {
    return repository::GetParameter(kReadingGroup, key, repository::kAmountColumn);
  };
  auto pixels = [&](const char* key) {
    int64_t stored = read(key).AsInt();
    return stored > 0 && stored <= kWidest ? static_cast<int>(stored) : 0;
  };
  ReadingPane pane{usual, pixels("List"), pixels("Letter")};
  jet::Value place = read("Place");
  if (!place.IsNull() && place.AsInt() >= 0 && place.AsInt() <= 2) {
    pane.place = static_cast<ReadingPlace>(place.AsInt());
  }
  return pane;
}

void SaveReadingPane(const ReadingPane& pane) {
  auto write = [](const char* key, int value) {
    repository::SetParameter(kReadingGroup, key, repository::kAmountColumn, value);
  };
  write("Place", static_cast<int>(pane.place));
  if (pane.place == ReadingPlace::kOff) return;
  write("List", pane.list);
  write("Letter", pane.letter);
}

std::vector<std::string> ReadRecentRepositories() {
  std::vector<std::string> folders;
  for (size_t i = 0; i < kMostRecent; ++i) {
    std::string folder =
        repository::GetParameter(kRecentGroup, std::to_string(i), repository::kTextColumn).AsText();
    if (!folder.empty()) folders.push_back(std::move(folder));
  }
  return folders;
}

void AddRecentRepository(const std::string& folder) {
  std::vector<std::string> folders = ReadRecentRepositories();
  std::erase(folders, folder);
  folders.insert(folders.begin(), folder);
  for (size_t i = 0; i < folders.size() && i < kMostRecent; ++i) {
    repository::SetParameter(kRecentGroup, std::to_string(i), repository::kTextColumn, folders[i]);
  }
}

std::optional<int> FittingEdge(int stored, int extent, int screen) {
  if (stored == 0 || stored + extent >= screen) return std::nullopt;
  // A screen to the left that is no longer there leaves an edge below 0; a maximized window's frame
  // may stand out a little.
  constexpr int kFrame = 16 * kTwipsPerPixel;
  if (stored < -kFrame) return std::nullopt;
  return stored;
}

}  // namespace tarnwick::board
