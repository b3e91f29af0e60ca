// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/ahead.h"

#include "database/engine/packing.h"
#include "database/index/text_index.h"

namespace tarnwick::jet {

std::string PackAhead(std::string_view plain) {
  return std::string(Pack(plain));
}

std::vector<uint32_t> TrigramsAhead(const std::vector<std::string>& texts) {
  thread_local TrigramSet trigrams;
  trigrams.Clear();
  for (size_t i = 0; i < texts.size(); i++) TextIndex::AddTo(trigrams, i, texts[i]);
  return trigrams.Hashes();
}

}  // namespace tarnwick::jet
