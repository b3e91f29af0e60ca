// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Owners of the store library's objects. A failed call throws ReadError with the name of what was
// being read; the library's own error text is dropped, it says nothing to a person.
#pragma once

#include <libbfio.h>
#include <libpff.h>

#include <memory>

#include "outlook/reader/store_file.h"

namespace tarnwick::outlook::reader {

struct FreeItem {
  void operator()(libpff_item_t* item) const { libpff_item_free(&item, nullptr); }
};
struct FreeRecordSet {
  void operator()(libpff_record_set_t* set) const { libpff_record_set_free(&set, nullptr); }
};
struct FreeRecordEntry {
  void operator()(libpff_record_entry_t* entry) const { libpff_record_entry_free(&entry, nullptr); }
};
struct FreeFile {
  void operator()(libpff_file_t* file) const {
    libpff_file_close(file, nullptr);
    libpff_file_free(&file, nullptr);
  }
};

struct FreeInputHandle {
  void operator()(libbfio_handle_t* input) const { libbfio_handle_free(&input, nullptr); }
};

using ItemHandle = std::unique_ptr<libpff_item_t, FreeItem>;
using RecordSetHandle = std::unique_ptr<libpff_record_set_t, FreeRecordSet>;
using RecordEntryHandle = std::unique_ptr<libpff_record_entry_t, FreeRecordEntry>;
using InputHandle = std::unique_ptr<libbfio_handle_t, FreeInputHandle>;
using FileHandle = std::unique_ptr<libpff_file_t, FreeFile>;

// Calls a routine of the library that hands out an object through its last argument but one.
// Gives an empty handle when there is none of the kind; throws when the call fails.
template <typename Handle, typename Routine, typename... Arguments>
Handle Get(const char* what, Routine routine, Arguments... arguments) {
  typename Handle::pointer object = nullptr;
  if (routine(arguments..., &object, nullptr) < 0) throw ReadError(what);
  return Handle(object);
}

}  // namespace tarnwick::outlook::reader
