// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/connection.h"

#include <algorithm>
#include <cassert>

#include "database/connection_impl.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

static_assert(kInterrupted == kStopped);

// Engine steps between two calls of a progress handler: a few milliseconds.
constexpr int kProgressSteps = 10000;

}  // namespace

Connection::Connection() : impl_(std::make_unique<Impl>()) {}

Connection::~Connection() = default;

void Connection::SetProvider(std::string_view provider) {
  impl_->provider = provider;
}

void Connection::SetProperty(std::string_view name, std::string_view value) {
  if (platform::SameWord(name, kDataSourceProperty)) {
    impl_->dataSource = value;
  } else if (platform::SameWord(name, kPasswordProperty)) {
    impl_->password = value;
  } else if (platform::SameWord(name, kModeProperty)) {
    impl_->readOnly = platform::SameWord(value, kModeRead);
  } else if (platform::SameWord(name, kJournalProperty)) {
    using Journal = Session::Journal;
    impl_->journal = platform::SameWord(value, kJournalMemory)     ? Journal::kMemory
                     : platform::SameWord(value, kJournalRollback) ? Journal::kRollback
                                                                   : Journal::kLog;
  } else {
    throw Error(ErrorNumber::kNoSuchItem, "No such property: " + std::string(name));
  }
}

void Connection::SetPasswords(std::function<platform::Secret(const std::string&)> passwords) {
  impl_->passwords = std::move(passwords);
}

const std::string& Connection::DataSource() const {
  return impl_->dataSource;
}

void Connection::Open() {
  impl_->Open();
}

void Connection::Close() {
  impl_->Close();
}

bool Connection::IsOpen() const {
  return impl_->session.IsOpen();
}

int64_t Connection::Execute(std::string_view sql) {
  return impl_->Execute(sql);
}

void Connection::ReadRows(std::string_view sql,
                          const std::function<void(const PassingRow&)>& take) {
  impl_->ReadRows(sql, take);
}

int64_t Connection::LastIdentity() const {
  return impl_->session.Engine().LastRowId();
}

void Connection::BeginGroup() {
  impl_->session.BeginGroup();
}

void Connection::EndUnit() {
  impl_->session.EndUnit();
}

void Connection::FlushGroup() {
  impl_->session.FlushGroup();
}

void Connection::EndGroup() {
  impl_->session.EndGroup();
}

bool Connection::InGroup() const {
  return impl_->session.InGroup();
}

int64_t Connection::Batch() const {
  return impl_->session.Batch();
}

bool Connection::IsTakenBack(int64_t batch) const {
  const std::vector<int64_t>& batches = impl_->session.TakenBack();
  return std::binary_search(batches.begin(), batches.end(), batch);
}

int64_t Connection::BatchesTakenBack() const {
  return static_cast<int64_t>(impl_->session.TakenBack().size());
}

void Connection::TakeBackGroup(const Error& reason) {
  impl_->session.TakeBackGroup(reason);
}

bool Connection::HasTable(std::string_view table) const {
  return impl_->HasTable(table);
}

void Connection::SetBulk(bool on) {
  impl_->session.SetBulk(on);
}

void Connection::KeepTextIndex(std::string_view table, std::vector<std::string> columns) {
  impl_->KeepTextIndex(table, std::move(columns));
}

std::optional<std::vector<int64_t>> Connection::MayHold(std::string_view table,
                                                        std::string_view column,
                                                        std::string_view text) {
  return impl_->MayHold(table, column, text);
}

bool Connection::CatchUpTextIndex(const std::function<bool(int64_t, int64_t)>& look) {
  if (impl_->Index() == nullptr) return true;
  // Amid other work, which may be that of a statement, nothing is done.
  if (InGroup() || impl_->session.Engine().IsWatched()) return false;
  return impl_->Index()->CatchUp(look);
}

int64_t Connection::Mark() const {
  return impl_->session.Engine().Number("PRAGMA user_version") >> kSchemaBits;
}

void Connection::SetMark(int64_t mark) {
  int64_t schema = impl_->session.Engine().Number("PRAGMA user_version") & kSchemaMask;
  std::string number = std::to_string(mark << kSchemaBits | schema);
  impl_->session.Engine().Run(("PRAGMA user_version = " + number).c_str());
}

std::string Connection::IntegrityCheck(Checked checked) {
  Statement check(impl_->session.Engine(),
                  checked == Checked::kAll ? "PRAGMA integrity_check" : "PRAGMA quick_check");
  std::string found;
  while (impl_->session.StepRead(check)) {
    if (!found.empty()) found += "\n";
    found += check.Text(0);
  }
  return found == "ok" ? "" : found;
}

void Connection::KeepColumnCache(ColumnCacheDefinition definition) {
  impl_->KeepColumnCache(std::move(definition));
}

int64_t Connection::RowsSeen() const {
  return impl_->session.Engine().RowsSeen();
}

void Connection::SetProgressHandler(std::function<bool()> handler) {
  impl_->session.Engine().SetProgress(kProgressSteps, std::move(handler));
}

BulkScope::~BulkScope() {
  try {
    connection_.SetBulk(false);
  } catch (const std::exception&) {
    // The journal that is in use instead does as well.
  }
}

CommitGroup::~CommitGroup() {
  try {
    End();
  } catch (const std::exception&) {
    // End was the place to hear of it.
  }
}

void CommitGroup::End() {
  if (connection_ == nullptr) return;
  Connection* connection = connection_;
  connection_ = nullptr;
  connection->EndGroup();
}

}  // namespace tarnwick::jet
