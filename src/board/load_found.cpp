// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/load_found.h"

#include <map>

#include "core/run_state.h"
#include "oe/import.h"
#include "outlook/import.h"
#include "outlook/msg_file.h"
#include "sources/import.h"

namespace tarnwick::board {

namespace {

// By the folder that is read as a profile. The tables of Outlook Express are those of one profile:
// each is a load of its own. All that needs none is one, told of by the first place.
std::map<std::string, Sources> SourcesOf(const std::vector<look::FoundMail>& mail, bool lostToo) {
  intake::ReadingRules rules = intake::StoredRules();
  rules.lostMail = lostToo;
  std::map<std::string, Sources> byProfile;
  std::vector<std::string> stores;
  std::vector<sources::Mailbox> mailboxes;
  std::string first;
  for (const look::FoundMail& found : mail) {
    mailboxes.insert(mailboxes.end(), found.mailboxes.begin(), found.mailboxes.end());
    if (found.program == outlook::kApplication) stores.push_back(found.place);
    if (found.program != oe::kApplication && first.empty()) first = found.place;
    if (found.program != oe::kApplication || byProfile.contains(found.profile)) continue;
    byProfile[found.profile].push_back(oe::MakeSource(rules));
  }
  if (!stores.empty()) byProfile[first].push_back(outlook::MakeSource(stores, rules));
  if (!mailboxes.empty()) {
    byProfile[first].push_back(
        tarnwick::sources::MakeSource(outlook::ReadsMsgFiles(), rules, mailboxes));
  }
  return byProfile;
}

void Add(const LoadResult& part, LoadResult& sum) {
  sum.ran = sum.ran || part.ran;
  sum.failed = sum.failed || part.failed;
  sum.stopped = sum.stopped || part.stopped;
  sum.counts.found += part.counts.found;
  sum.counts.stored += part.counts.stored;
  sum.counts.alreadyStored += part.counts.alreadyStored;
  sum.counts.refused += part.counts.refused;
  sum.counts.ignored += part.counts.ignored;
  sum.counts.unreadable += part.counts.unreadable;
  sum.counts.notReached += part.counts.notReached;
}

}  // namespace

LoadResult LoadFound(const std::vector<look::FoundMail>& mail, SenderPolicy senders, bool lostToo) {
  LoadOptions options;
  options.everyMailer = true;
  options.senders = senders;
  options.isPart = true;
  LoadResult sum;
  bool hasNew = false;
  for (const auto& [profile, sources] : SourcesOf(mail, lostToo)) {
    core::State().ProfileOfLoad = profile;
    LoadResult part = LoadFromMailer(options, sources);
    core::State().ProfileOfLoad.clear();
    Add(part, sum);
    hasNew = hasNew || core::State().NewMessageFlag;
    if (part.stopped || core::State().DiskIsFull) break;
  }
  if (sum.ran) TellLoadEnd(hasNew);
  return sum;
}

}  // namespace tarnwick::board
