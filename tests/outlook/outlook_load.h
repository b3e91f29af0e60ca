// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A load of Outlook's mail, everyone's accepted.
#pragma once

#include "intake/load_account.h"
#include "outlook/import.h"
#include "support/program_fixture.h"

namespace tarnwick::outlook {

class OutlookLoad : public testing::ProgramFixture {
 protected:
  OutlookLoad() {
    core::BeginLoadState();
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  }
  ~OutlookLoad() override { core::EndLoadState(); }

  static const core::LoadCounts& LoadFrom(Namespace& outlook, bool everyStore,
                                          const intake::ReadingRules& rules = intake::kDesigned) {
    const core::LoadCounts& c = core::State().Counts = {};
    intake::LoadAccount& account = intake::Account();
    account.Open();
    EXPECT_TRUE(olAnnounceFrom(outlook, everyStore, rules));
    EXPECT_TRUE(olImportOutlook());
    account.Close();
    EXPECT_EQ(c.found,
              c.stored + c.alreadyStored + c.refused + c.ignored + c.unreadable + c.notReached);
    return c;
  }
};

}  // namespace tarnwick::outlook
