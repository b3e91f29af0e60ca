// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Whose password opens a database file. A file without a mark (file_key.h) has the program's, one
// with a mark the person's own: the keys of these are kept in memory from the moment the person
// has given the password until ForgetKeys. Passwords themselves are not kept. While a key is known
// no image of the memory is left by a crash.
#pragma once

#include <string>

#include "platform/secret.h"
#include "repository/file_key.h"

namespace tarnwick::repository {

// What the engine is given to open a file: for Connection::SetPasswords. Throws Error
// kWrongPassword where the person's password is needed and was not given yet. REQUIRES: as MarkOf.
platform::Secret PasswordOf(const std::string& file);
// The same of a file that is to have this mark; "" for the program's password.
platform::Secret PasswordOfMark(const std::string& mark);

// Asks for the password of a file where it is needed and not remembered (keyring.h), up to three
// times. A remembered one that is wrong is forgotten. False: the person gave up, and has been told
// what that means. Throws Error kWrongPassword after the third wrong one. REQUIRES: as MarkOf.
bool Unlock(const std::string& file);

void AddKey(FileKey key);
// Forgets all keys but that of this mark.
void ForgetKeys(const std::string& keptMark = {});

}  // namespace tarnwick::repository
