// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a reader that was taken over may answer of a message. What is believed of it fits the text:
// packed values unpack to what they told or are damaged, trigrams are some, and the record, written
// again, is what it was.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "database/engine/packing.h"
#include "database/index/trigrams.h"
#include "oe/store_record.h"

namespace {

using namespace tarnwick;

void Demand(bool holds) {
  if (!holds) std::abort();
}

void TryPacked(const std::string& packed) {
  if (packed.empty()) return;
  try {
    Demand(jet::Unpack(packed).size() == jet::ToldSize(packed));
  } catch (const Error&) {
    // It says so when it is read.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view record(reinterpret_cast<const char*>(data), size);
  try {
    auto reply = intake::RecordOf<oe::StoreReply>(record);
    if (reply.text) oe::Check(*reply.text);
    Demand(intake::BytesOf(reply) == record);
    if (!reply.text || !reply.text->prepared || !reply.text->prepared->rows) return 0;
    const intake::PackedRows& rows = *reply.text->prepared->rows;
    for (const auto& text : rows.texts) TryPacked(text.packed);
    for (const std::string& piece : rows.pieces) TryPacked(piece);
    if (!rows.trigrams) return 0;
    for (uint32_t trigram : *rows.trigrams) Demand(trigram >> jet::kTrigramBits == 0);
  } catch (const Error&) {
    // Not believed.
  }
  return 0;
}
