// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A long list of keys that a statement holds, WHERE ID IN (1, 2, ...), as a temporary table in
// memory. Of a million keys written out, the engine would take hundreds of megabytes and seconds in
// which nothing can be shown or stopped. Internal to the database.
#pragma once

#include <cstdint>
#include <string>

#include "database/engine/key_list.h"
#include "database/engine/session.h"

namespace tarnwick::jet {

class KeyTable {
 public:
  // number: of this table among those of the connection.
  KeyTable(Session& session, KeyList keys, int64_t number);
  // The table goes, if the connection is still open.
  ~KeyTable();
  KeyTable(const KeyTable&) = delete;
  KeyTable& operator=(const KeyTable&) = delete;

  const KeyList& Keys() const { return keys_; }
  std::string AsText() const;                        // "1,2,3"
  const std::string& Name() const { return name_; }  // in the schema temp; its column is ID

  // Before a statement is prepared or run that reads it: a rollback may have taken it away. The
  // connection's progress handler is asked meanwhile; Error 9 when it stops, and nothing is left.
  void Fill();

 private:
  Session& session_;
  KeyList keys_;
  std::string name_;
};

}  // namespace tarnwick::jet
