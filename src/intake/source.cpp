// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/source.h"

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "intake/load_account.h"
#include "intake/store_message.h"

namespace tarnwick::intake {

namespace {

Ending TakeIn(const SourceFolder& folder, SourceMessage& message) {
  if (!message.raw) message.raw.emplace(core::State().TempMessageFile);
  const RawMessage& raw = *message.raw;
  SourceDescriptor descriptor = folder.Descriptor();
  Ending ending;
  bool isNew = true;
  if (message.message) {
    bool isPacked = message.prepared && message.prepared->rows;
    dbSaveMesage(raw, *message.message, descriptor.application, 0, folder.Identity(), &ending,
                 isPacked ? &*message.prepared->rows : nullptr);
  } else {
    isNew = TakeInMessage(raw, descriptor, folder.Identity(),
                          {.key = message.key,
                           .isKeyNew = message.isKeyNew,
                           .rules = folder.Rules(),
                           .facts = message.facts,
                           .prepared = message.prepared.get()},
                          ending);
  }
  if (isNew) core::State().NewMessageFlag = true;
  return ending;
}

void ReadMessages(SourceFolder& folder, const std::string& place) {
  LoadAccount& account = Account();
  for (SourceMessage message; !core::IsLoadStopped() && folder.Next(message); message = {}) {
    Ending ending = message.ending;
    if (ending.outcome == Outcome::kNone) ending = TakeIn(folder, message);
    folder.Ended(message, ending);
    account.Count(place, ending.outcome, ending.reason, message.name);
    core::YieldEvents();
  }
  if (!core::IsLoadStopped()) account.Finish(place);
}

}  // namespace

void ReadFolder(SourceFolder& folder) {
  const std::string place = folder.Place();
  try {
    ReadMessages(folder, place);
  } catch (...) {
    Account().AddReason(place, core::CurrentError().Description());
    throw;
  }
}

}  // namespace tarnwick::intake
