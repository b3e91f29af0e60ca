// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The password of the open repository: setting one of the owner's own, changing it, taking it off.
// All three make a copy that another password opens, check it and let it take the repository's
// place. So whatever happens, there is one whole repository of the name, with the former password
// or with the new one.
#pragma once

#include <functional>
#include <string>

#include "maintenance/result.h"
#include "platform/secret.h"

namespace tarnwick::maintenance {

bool IsProtected();  // the open repository, with a password of its owner's own

// Whether the password is that of the open repository. REQUIRES: IsProtected().
bool IsOwnPassword(const platform::Secret& password);

// Protects the open repository with a password. The repository is closed and opened again for that:
// recordsets on it that others hold are closed; refreshList is called once when it is open again.
// kStopped and kFailed leave it as it was, but for one failure that is told: the copy has taken its
// place, and only making that durable failed. See backup.h for what is required meanwhile.
Result ProtectRepository(const platform::Secret& password,
                         const std::function<void()>& refreshList = {});
// The same with the program's password, after a question.
Result UnprotectRepository(const std::function<void()>& refreshList = {});

// What is to be said of a password before it is chosen.
inline constexpr const char* kForgottenPassword =
    "Nobody can undo a forgotten password: without it the repository and its backups can't be "
    "opened, by you or by anybody else.";

// For the messages of what writes and reads files: " It is protected with the repository's own
// password." and the like; "" where it has the program's password.
std::string WhichPassword();

}  // namespace tarnwick::maintenance
