// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The person's own passwords remembered from one run to the next, where the person wants it: by the
// desktop's keyring, which the window brings along. Without one, as on the command line, nothing is
// remembered. The keyring knows a password by the mark of the files that it opens (file_key.h), and
// is asked only for those that the program's settings say it was given.
#pragma once

#include <optional>
#include <string>

#include "platform/secret.h"

namespace tarnwick::repository {

class Keyring {
 public:
  virtual ~Keyring() = default;
  // "" where passwords can be kept, else the reason, for the person.
  virtual std::string WhyNot() = 0;
  // nullopt where there is none of the name, or nothing can be had.
  virtual std::optional<platform::Secret> Find(const std::string& name) = 0;
  // "", or why it could not be kept.
  virtual std::string Keep(const std::string& name, const platform::Secret& password) = 0;
  // Also where there is none.
  virtual void Remove(const std::string& name) = 0;

  // What was answered when a password was asked for last: it is to be kept, if it is right.
  bool isWanted = false;
};

// The one that is used from now on, while it lives; nullptr: none.
void SetKeyring(Keyring* keyring);
Keyring* TheKeyring();
// From now on passwords are asked for all the same: somebody has locked the program.
void AskInSpiteOfKeyring();

// The three take the mark of a file. All need the program's settings to be open.
std::optional<platform::Secret> RememberedPassword(const std::string& mark);
// If that is wanted. Tells the person where it fails.
void RememberPassword(const std::string& mark, const platform::Secret& password);
void ForgetPassword(const std::string& mark);

}  // namespace tarnwick::repository
