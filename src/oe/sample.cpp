// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/sample.h"

#include <algorithm>

#include "intake/letter_record.h"
#include "oe/announced.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/tree_node.h"
#include "platform/error.h"

namespace tarnwick::oe {

template <typename Archive>
void Pass(Archive& archive, StoreSample& s) {
  constexpr int kLastYear = 9999;
  archive(intake::AtMost{s.messages, UINT32_MAX}, intake::AtMost{s.firstYear, kLastYear},
          intake::AtMost{s.lastYear, kLastYear}, s.isDamaged, s.keys);
}

namespace {

constexpr size_t kMessageRootPlace = 0xE4;

void Add(ByteReader& file, uint32_t infoOffset, StoreSample& sample) {
  std::optional<PeekedMessage> message = PeekMessage(file, infoOffset);
  if (!message) return;
  const MessageInfo& info = message->info;
  int year = info.date.ToCivil().year;
  sample.firstYear = sample.firstYear == 0 ? year : std::min(sample.firstYear, year);
  sample.lastYear = std::max(sample.lastYear, year);
  sample.keys.push_back(MakeEntryKey(info.keyText, info.date));
}

StoreSample SampleHere(const intake::RawMessage& raw) {
  StoreSample sample;
  try {
    ByteReader file(raw);
    sample.messages = CountInHeader(file);
    std::string_view header = file.Read(0, kHeaderSize);
    sample.isDamaged = header.size() < kHeaderSize;
    if (sample.isDamaged || sample.messages == 0) return sample;
    std::optional<TreeNode> root = ReadNode(file, Get32(header, kMessageRootPlace));
    sample.isDamaged = !root || root->isCut || root->entries.empty();
    if (sample.isDamaged) return sample;
    uint32_t first = root->entries.front().value;
    uint32_t last = root->entries.back().value;
    Add(file, first, sample);
    if (last != first) Add(file, last, sample);
  } catch (const Error&) {
    sample.isDamaged = true;
  }
  return sample;
}

class SampleService : public intake::SingleService {
 protected:
  std::string Read(const intake::RawMessage& raw, std::string_view /*how*/,
                   const ByteSink& /*sink*/) override {
    return intake::BytesOf(SampleHere(raw));
  }
};

}  // namespace

StoreSample StoreSampler::Sample(const std::string& file) {
  StoreSample sample;
  try {
    bool isRead = reader_.Ask(file, intake::kComplete, {}, nullptr, [&](auto record, const auto&) {
      sample = intake::RecordOf<StoreSample>(record);
    });
    if (!isRead) sample = SampleHere(file);
  } catch (const Error&) {
    sample.isDamaged = true;
  }
  return sample;
}

std::unique_ptr<intake::LetterService> MakeStoreSampleService() {
  return std::make_unique<SampleService>();
}

}  // namespace tarnwick::oe
