// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a load reads from: Outlook Express, Outlook, and whatever comes later. The load command asks
// each source whether it is there, has all of them announce to the account of the load
// (load_account.h) what they hold, and then has them read one after the other. A source counts each
// message that it comes to in the account, hands what is new to the storing step, and ends early
// once core::IsLoadStopped. Its routines report their own errors.
#pragma once

#include <string>

#include "core/run_state.h"

namespace tarnwick::intake {

class Source {
 public:
  virtual ~Source() = default;

  // As people know it: "Outlook Express".
  virtual std::string Name() const = 0;
  // The option that has it read without a question: in the parameter store, and while it runs.
  virtual const char* Option() const = 0;
  virtual bool& OptionFlag() const = 0;

  // Whether the profile holds anything of it.
  virtual bool IsThere() = 0;
  // Finds what there is. whole: as at a first load. False when it could not be looked at; that is
  // no end of the load.
  virtual bool Announce(bool whole) = 0;
  // Reads what was announced. False when it could not be read.
  virtual bool Read(bool whole) = 0;
};

}  // namespace tarnwick::intake
