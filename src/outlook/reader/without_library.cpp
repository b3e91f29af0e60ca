// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// In place of library_store.cpp where the store library is not to be had.
#include "outlook/reader/store_file.h"

namespace tarnwick::outlook::reader {

std::unique_ptr<StoreFile> OpenByLibrary(platform::InputFile&, bool) {
  throw ReadError("this program was built without the library for such stores");
}

}  // namespace tarnwick::outlook::reader
