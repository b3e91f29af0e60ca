// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The object model over .pst files, for machines without Outlook. Each store has a reader process
// of its own (pst_link.h) for as long as it is used. Entry identifiers are those that Outlook
// itself gives the items of such a file: a repository filled from the file and one filled through
// Outlook know the same messages.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "intake/reader_link.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

class PstNamespace : public Namespace {
 public:
  explicit PstNamespace(std::vector<std::string> files,
                        std::string program = intake::ReaderProgram())
      : files_(std::move(files)), program_(std::move(program)) {}

  std::vector<std::unique_ptr<Store>> Stores() override;
  std::vector<RefusedStore> Refused() override { return refused_; }
  std::unique_ptr<LostItems> FindLost(const std::string& location,
                                      const std::function<void(int)>& tell) override;
  bool AsksForAccess() override { return false; }

 private:
  std::vector<std::string> files_;
  std::string program_;
  std::vector<RefusedStore> refused_;
};

}  // namespace tarnwick::outlook
