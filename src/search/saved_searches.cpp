// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/saved_searches.h"

#include "core/guard.h"
#include "core/text.h"
#include "database/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::search {

namespace {

constexpr const char* kSearches = "SavedSearch";
constexpr const char* kFolders = "Folders";
constexpr const char* kShown = "Shown";

}  // namespace

std::vector<SavedSearch> SavedSearches() {
  return core::Guarded("SavedSearches", std::vector<SavedSearch>(), [] {
    std::vector<SavedSearch> searches;
    jet::Recordset rows;
    rows.Open("SELECT ParameterID, ParameterText FROM Parameter WHERE ParameterGroup = '" +
                  std::string(kSearches) + "' ORDER BY ParameterID",
              repository::ParameterDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      searches.push_back({rows.Field(0).AsText(), rows.Field(1).AsText()});
    }
    return searches;
  });
}

void SaveSearch(const SavedSearch& search) {
  repository::SetParameter(kSearches, search.name, repository::kTextColumn, search.text);
}

void RemoveSearch(const std::string& name) {
  core::GuardedRun("RemoveSearch", [&] {
    repository::ParameterDb().Execute("DELETE * FROM Parameter WHERE ParameterGroup = '" +
                                      std::string(kSearches) + "' AND ParameterID = '" +
                                      core::QuoteSql(name) + "'");
  });
}

bool ReadFoldersShown() {
  return repository::GetParameter(kFolders, kShown, repository::kAmountColumn).AsInt() != 0;
}

void SaveFoldersShown(bool shown) {
  repository::SetParameter(kFolders, kShown, repository::kAmountColumn, shown ? 1 : 0);
}

}  // namespace tarnwick::search
