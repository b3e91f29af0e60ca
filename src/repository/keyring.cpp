// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/keyring.h"

#include <string_view>

#include "core/messages.h"
#include "repository/parameter_store.h"

namespace tarnwick::repository {

namespace {

constexpr std::string_view kGroup = "Keyring";

struct State {
  Keyring* keyring = nullptr;
  bool asksAlways = false;
};

State& Current() {
  static State state;
  return state;
}

std::string NameOf(const std::string& mark) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string name;
  for (unsigned char byte : mark) {
    name += kDigits[byte >> 4];
    name += kDigits[byte & 15];
  }
  return name;
}

bool WasGiven(const std::string& name) {
  return GetParameter(kGroup, name, kAmountColumn).AsInt() != 0;
}

}  // namespace

void SetKeyring(Keyring* keyring) {
  Current() = {keyring, false};
}

Keyring* TheKeyring() {
  return Current().keyring;
}

void AskInSpiteOfKeyring() {
  Current().asksAlways = true;
}

std::optional<platform::Secret> RememberedPassword(const std::string& mark) {
  const State& state = Current();
  std::string name = NameOf(mark);
  if (state.keyring == nullptr || state.asksAlways || !WasGiven(name)) return std::nullopt;
  return state.keyring->Find(name);
}

void RememberPassword(const std::string& mark, const platform::Secret& password) {
  Keyring* keyring = TheKeyring();
  if (keyring == nullptr || !keyring->isWanted) return;
  keyring->isWanted = false;
  std::string why = keyring->Keep(NameOf(mark), password);
  if (why.empty()) {
    SetParameter(kGroup, NameOf(mark), kAmountColumn, 1);
  } else {
    core::ShowMessage("The password could not be remembered. " + why);
  }
}

void ForgetPassword(const std::string& mark) {
  std::string name = NameOf(mark);
  if (TheKeyring() == nullptr || !WasGiven(name)) return;
  TheKeyring()->Remove(name);
  SetParameter(kGroup, name, kAmountColumn, 0);
}

}  // namespace tarnwick::repository
