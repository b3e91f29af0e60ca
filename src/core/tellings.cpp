// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/tellings.h"

#include <cassert>

#include "core/guard.h"
#include "core/messages.h"
#include "core/text.h"

namespace tarnwick::core {

namespace {

TellingsKept*& Keeper() {
  static TellingsKept* keeper = nullptr;
  return keeper;
}

}  // namespace

TellingsKept::TellingsKept() {
  assert(Keeper() == nullptr);
  Keeper() = this;
}

TellingsKept::~TellingsKept() {
  Keeper() = nullptr;
}

bool TellingsKept::IsOn() {
  return Keeper() != nullptr;
}

bool TellingsKept::Keep(Telling telling) {
  if (Keeper() == nullptr) return false;
  Keeper()->kept_.push_back(std::move(telling));
  return true;
}

void Tell(const Telling& telling) {
  switch (telling.kind) {
    case Telling::Kind::kBox:
      return ShowRepeatedMessage(telling.what, OneLogLine(telling.text));
    case Telling::Kind::kEntry:
      return WriteLog(OneLogLine(telling.text));
    case Telling::Kind::kProgress:
      return LogProgress(OneLogLine(telling.text));
    case Telling::Kind::kError:
      try {
        throw Error(telling.number, telling.text);
      } catch (const Error&) {
        ReportCurrentException(telling.what, telling.isBox ? Report::kShow : Report::kLog,
                               telling.detail);
      }
      return;
    default:
      return;
  }
}

}  // namespace tarnwick::core
