// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/sources.h"

#include "oe/import.h"
#include "outlook/import.h"
#include "outlook/msg_file.h"
#include "sources/import.h"

namespace tarnwick::board {

Sources EverySource(const intake::ReadingRules& rules) {
  Sources sources;
  sources.push_back(oe::MakeSource(rules));
  sources.push_back(outlook::MakeSource(rules));
  sources.push_back(tarnwick::sources::MakeSource(outlook::ReadsMsgFiles(), rules));
  return sources;
}

std::vector<options::Mailer> Mailers() {
  std::vector<options::Mailer> mailers;
  for (const auto& source : EverySource()) mailers.push_back({source->Name(), source->Option()});
  return mailers;
}

}  // namespace tarnwick::board
