// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the text index proposes to a search.
#include <algorithm>
#include <utility>

#include "database/index/text_index.h"

namespace tarnwick::jet {

namespace {

// With more rows than this share of all, reading them one by one costs as much as reading all.
constexpr size_t kUsefulShare = 4;
constexpr size_t kAlwaysUseful = 64;
// What a file can make a search keep in memory, whatever its index says.
constexpr size_t kMostProposed = 4'000'000;
// A list costs a look into the file, half of what a row does that is read for nothing. The rarest
// few mostly leave next to nothing for the others; those of a text of common letters do not.
constexpr size_t kMostLists = 48;
constexpr size_t kFewDocuments = 2;

void KeepCommon(std::vector<uint16_t>& documents, const std::vector<uint16_t>& others) {
  auto end = std::set_intersection(documents.begin(), documents.end(), others.begin(), others.end(),
                                   documents.begin());
  documents.erase(end, documents.end());
}

// How common a trigram has turned out to be, for the order of looking.
struct Probe {
  uint32_t trigram;
  size_t documents = 0;
};

}  // namespace

std::optional<std::vector<int64_t>> TextIndex::Candidates(const std::vector<Wanted>& wanted,
                                                          Share share) {
  std::vector<uint32_t> trigrams;
  for (const Wanted& want : wanted) {
    std::vector<uint32_t> found = TrigramsOf(want.text, want.isPattern, SaltOf(want.column));
    trigrams.insert(trigrams.end(), found.begin(), found.end());
  }
  if (trigrams.empty()) return std::nullopt;
  Database& engine = session_.Engine();
  std::optional<std::vector<int64_t>> keys;
  Attempt([&] {
    if (Missing() > kMostAtOnce) return;
    CatchUp([&](int64_t, int64_t) {
      if (engine.AsksToStop()) throw Error(kStopped, "interrupted");
      return true;
    });
  });
  Attempt([&] { keys = Propose(trigrams, share); });
  return keys;
}

void TextIndex::Show(const std::vector<int64_t>& keys) {
  Write([&] {
    session_.Own("DELETE FROM temp.tw_search_found")->Run();
    std::shared_ptr<Statement> add = session_.Own("INSERT INTO temp.tw_search_found VALUES (?1)");
    for (int64_t key : keys) {
      add->Bind(1, key);
      add->Run();
    }
  });
}

std::optional<std::vector<int64_t>> TextIndex::Propose(const std::vector<uint32_t>& trigrams,
                                                       Share share) {
  std::vector<Segment> segments = Segments();
  size_t most = kAlwaysUseful;
  for (const Segment& segment : segments) most += segment.documents / kUsefulShare;
  most = share == Share::kAny ? kMostProposed : std::min(most, kMostProposed);
  std::vector<int64_t> keys = KeysOf(kChanged, kBeforeAll, most + 1);
  std::vector<int64_t> behind = KeysOf(table_, Done(), most + 1);
  keys.insert(keys.end(), behind.begin(), behind.end());
  if (keys.size() > most) return std::nullopt;

  std::vector<Probe> probes;
  probes.reserve(trigrams.size());
  for (uint32_t trigram : trigrams) probes.push_back({trigram});
  for (const Segment& segment : segments) {
    // The order that the segments so far have taught.
    std::stable_sort(probes.begin(), probes.end(),
                     [](const Probe& a, const Probe& b) { return a.documents < b.documents; });
    bool isFirst = &segment == &segments.front();
    bool any = true;
    std::vector<uint16_t> documents;
    size_t lists = 0;
    for (Probe& probe : probes) {
      bool enough = !any && documents.size() <= kFewDocuments;
      if (!isFirst && (enough || lists == kMostLists)) break;
      if (isFirst && lists == 2 * kMostLists) break;
      lists++;
      Postings postings = ReadPostings(Part(segment.number, probe.trigram / kPartTrigrams),
                                       probe.trigram, segment.documents);
      probe.documents += postings.isAll ? segment.documents : postings.documents.size();
      if (postings.isAll) continue;
      if (any) {
        documents = std::move(postings.documents);
        any = false;
      } else {
        KeepCommon(documents, postings.documents);
      }
    }
    if (!any && documents.empty()) continue;
    std::vector<int64_t> segmentKeys = ReadSegmentKeys(segment.head);
    if (any) keys.insert(keys.end(), segmentKeys.begin(), segmentKeys.end());
    for (uint16_t document : documents) keys.push_back(segmentKeys[document]);
    if (keys.size() > most) return std::nullopt;
  }
  if (keys.size() > most) return std::nullopt;
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  return keys;
}

}  // namespace tarnwick::jet
