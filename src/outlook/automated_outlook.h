// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The object model over Outlook itself, by its automation objects: for stores that Outlook has open
// and lets nobody else read. What its objects don't tell (the headers of a letter, what was done
// with it) is asked of them by its MAPI number, which Outlook 2007 and later answer.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "outlook/object_model.h"
#include "platform/automation.h"

namespace tarnwick::outlook {

class AutomatedOutlook : public Namespace {
 public:
  // application: "Outlook.Application". Its stores are those that lie in one of the files; those of
  // an Outlook that doesn't say where they lie (before 2007) are all of its own. Files that it does
  // not have open are read as they lie (pst_provider.h). Throws Error where Outlook does not give
  // its namespace.
  AutomatedOutlook(platform::AutomationObject& application, std::vector<std::string> files);

  std::vector<std::unique_ptr<Store>> Stores() override;
  std::vector<RefusedStore> Refused() override { return refused_; }
  bool AsksForAccess() override { return true; }
  std::unique_ptr<LostItems> FindLost(const std::string& location,
                                      const std::function<void(int)>& tell) override;

 private:
  std::shared_ptr<platform::AutomationObject> mapi_;
  std::vector<std::string> files_;
  std::unique_ptr<Namespace> others_;  // stores that Outlook does not have open
  std::vector<RefusedStore> refused_;
};

// Outlook itself where it runs and has one of the files open, else the files as they lie.
std::unique_ptr<Namespace> OpenStores(const std::vector<std::string>& files);

}  // namespace tarnwick::outlook
