// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/connection_impl.h"

#include <algorithm>

#include "database/key_table.h"
#include "database/text_index.h"
#include "database/text_order.h"
#include "platform/clock.h"

namespace tarnwick::jet {

namespace {

constexpr int64_t kLongestCommitMilliseconds = 250;
constexpr int kNotADatabase = 26;

}  // namespace

Connection::Impl::Impl() = default;

Connection::Impl::~Impl() {
  try {
    Close();
  } catch (const std::exception&) {
    // The file is left as after a crash; the next opening puts it right.
  }
}

Database& Connection::Impl::Engine() {
  if (!database_) {
    throw Error(ErrorNumber::kObjectClosed, "Operation is not allowed when the object is closed.");
  }
  return *database_;
}

void Connection::Impl::Open() {
  if (database_) {
    throw Error(ErrorNumber::kObjectOpen, "Operation is not allowed when the object is open.");
  }
  database_ = std::make_unique<Database>(
      dataSource, password, readOnly ? Database::Mode::kReadOnly : Database::Mode::kExisting);
  try {
    CheckReadable();
    Configure();
    schema_ = std::make_unique<Catalog>(*database_);
  } catch (...) {
    database_.reset();
    throw;
  }
  takenBack.clear();
}

void Connection::Impl::CheckReadable() {
  // The lock is taken with the first read and kept until the file is closed.
  database_->Run("PRAGMA locking_mode = EXCLUSIVE");
  database_->Number("SELECT count(*) FROM sqlite_schema");
  // The engine would take an empty file for a new database.
  if (database_->Number("PRAGMA page_count") == 0) {
    throw Error(kNotADatabase, "file is not a database");
  }
}

void Connection::Impl::Configure() {
  database_->Run(
      "PRAGMA cell_size_check = ON;"
      "PRAGMA cache_size = -16000;"
      "PRAGMA synchronous = FULL;");
  if (!database_->IsReadOnly()) {
    // The log exists while the file is open; at rest it is a single file that can be copied, and
    // read where nothing can be written.
    database_->Run("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 1000;");
  }
  if (!readOnly && database_->Number("PRAGMA application_id") != TextOrderVersion()) {
    database_->Run("BEGIN; REINDEX;");
    database_->Run(("PRAGMA application_id = " + std::to_string(TextOrderVersion())).c_str());
    database_->Run("COMMIT");
  }
}

void Connection::Impl::Close() {
  if (!database_) return;
  std::optional<Error> failure;
  try {
    if (collecting_) Commit();
  } catch (const Error& error) {
    failure = error;
  }
  depth_ = 0;
  refusal_.reset();
  std::set<ConnectionUser*> users = std::move(users_);
  users_.clear();
  for (ConnectionUser* user : users) user->ConnectionCloses();
  programs_.Clear();
  lastKeys_.reset();
  statements_.Clear();
  index_.reset();
  digest_.reset();
  lastTested_ = {};
  schema_.reset();
  try {
    if (!database_->IsReadOnly()) database_->Run("PRAGMA journal_mode = DELETE");
  } catch (const Error& error) {
    if (!failure) failure = error;
  }
  database_.reset();
  collecting_ = false;
  unsynced_ = false;
  if (failure) throw *failure;
}

std::shared_ptr<Program> Connection::Impl::Translate(std::string_view sql) {
  Engine();
  Lift(sql, lifted_);
  PlaceKeys();
  bool hasKeys = !lifted_.keyTables.empty();
  if (!hasKeys) {
    if (std::shared_ptr<Program> known = programs_.Find(lifted_.shape)) return known;
  }
  std::shared_ptr<Program> program = MakeProgram(Parse(lifted_));
  lifted_.keyTables.clear();
  if (!lifted_.numbersInline && !hasKeys && !program->file) programs_.Add(lifted_.shape, program);
  return program;
}

// An export copies table after table by one list: it is kept until a statement comes without.
void Connection::Impl::PlaceKeys() {
  if (lifted_.keyLists.empty()) return lastKeys_.reset();
  for (KeyList& keys : lifted_.keyLists) {
    if (!lastKeys_ || lastKeys_->Keys() != keys) {
      lastKeys_ = std::make_shared<KeyTable>(*this, std::move(keys), ++keyTables_);
    }
    lifted_.keyTables.push_back(lastKeys_);
  }
  lifted_.keyLists.clear();
}

std::shared_ptr<Program> Connection::Impl::TranslateTable(std::string_view table) {
  Engine();
  lifted_.literals.clear();
  lifted_.shape.assign("TABLE ").append(table);
  if (std::shared_ptr<Program> known = programs_.Find(lifted_.shape)) return known;
  std::shared_ptr<Program> program = MakeProgram(WholeTable(table));
  if (!program->plan.keyed) throw Error(1, "no such table: " + std::string(table));
  programs_.Add(lifted_.shape, program);
  return program;
}

std::shared_ptr<Program> Connection::Impl::MakeProgram(ParsedSql parsed) {
  auto program = std::make_shared<Program>();
  if (auto* select = std::get_if<Select>(&parsed)) {
    program->isRead = true;
    program->file = select->file;
    program->plan =
        PlanSelect(*select, *schema_, kOtherSchema, digest_ ? &digest_->Definition() : nullptr);
    program->all.sql = program->plan.all;
    program->groups.sql = program->plan.groups;
    program->keys.sql = program->plan.keys;
    program->row.sql = program->plan.row;
    program->narrowed.sql = program->plan.narrowed;
    if (const std::optional<DigestPlan>& digest = program->plan.digest) {
      program->digestReferences.sql = digest->references.value_or(EngineSql());
      program->digestDetails.sql = digest->details.value_or(EngineSql());
      program->digestRows.sql = digest->rows.value_or(EngineSql());
      program->digestRow.sql = digest->row;
      program->digestOrder.sql = digest->order;
      program->digestText.sql = digest->text;
    }
    return program;
  }
  SqlWriter writer(*schema_, kOtherSchema);
  if (auto* insert = std::get_if<Insert>(&parsed)) {
    program->file = insert->file;
    program->writesFile = insert->file.has_value();
    if (insert->select && insert->select->file) program->file = insert->select->file;
    writer.Write(*insert);
    const TableView* view = schema_->Find(insert->table);
    bool namesKey =
        view != nullptr &&
        (insert->columns.empty() ||
         std::any_of(insert->columns.begin(), insert->columns.end(),
                     [&](const std::string& column) { return SameWord(column, view->key); }));
    if (namesKey && !insert->file) program->rewrites = insert->table;
  } else if (auto* update = std::get_if<Update>(&parsed)) {
    writer.Write(*update);
  } else {
    const auto& statement = std::get<Delete>(parsed);
    writer.Write(statement);
    if (!statement.where) program->rewrites = statement.table;
  }
  program->write.sql = writer.Take();
  return program;
}

void Connection::Impl::KeepTextIndex(std::string_view table, std::vector<std::string> columns) {
  if (Engine().IsReadOnly() || index_) return;
  try {
    index_ = std::make_unique<TextIndex>(*this, table, std::move(columns));
  } catch (const Error&) {
    // A file that can't take an index, on a full disk perhaps, is searched without.
    if (database_->InTransaction()) database_->Run("ROLLBACK");
  }
}

void Connection::Impl::BeforeRewriting(std::string_view table) {
  if (index_ && !table.empty() && index_->IsOf(table)) index_->Reset();
}

std::optional<std::vector<int64_t>> Connection::Impl::Proposed(const ReadPlan& plan,
                                                               const std::vector<Value>& literals) {
  if (!index_ || plan.searches.empty() || !index_->IsOf(plan.searched)) return std::nullopt;
  std::vector<TextIndex::Wanted> wanted;
  for (const SearchTerm& term : plan.searches) {
    std::optional<size_t> column = index_->Find(term.column);
    const Value& text = literals[term.literal];
    bool applies = column && text.IsText() && (!term.nought || literals[*term.nought] == Value(0));
    if (applies) wanted.push_back({*column, text.AsText(), term.isPattern});
  }
  if (wanted.empty()) return std::nullopt;
  return index_->Candidates(wanted);
}

PreparedSql& Connection::Impl::Reading(Program& program, const std::vector<Value>& literals) {
  if (std::optional<std::vector<int64_t>> keys = Proposed(program.plan, literals)) {
    index_->Show(*keys);
    return program.narrowed;
  }
  if (!program.plan.groupItems.empty()) return program.groups;
  return program.plan.keyed ? program.keys : program.all;
}

Statement& Connection::Impl::Prepared(PreparedSql& sql) {
  for (const std::shared_ptr<KeyTable>& keys : sql.sql.keys) keys->Fill();
  if (!sql.statement) sql.statement = std::make_unique<Statement>(Engine(), sql.sql.text);
  return *sql.statement;
}

Statement& Connection::Impl::Ready(PreparedSql& prepared, const std::vector<Value>& literals) {
  Statement& statement = Prepared(prepared);
  for (size_t literal : prepared.sql.literals) {
    statement.BindValue(static_cast<int>(literal) + kFirstLiteral, literals[literal]);
  }
  if (prepared.sql.usesDate) {
    statement.Bind(kDateParameter, platform::Now().DatePart().Seconds());
  }
  if (prepared.sql.usesNow) statement.Bind(kNowParameter, platform::Now().Seconds());
  return statement;
}

const std::vector<FieldInfo>& Connection::Impl::Fields(Program& program) {
  if (!program.fields.empty()) return program.fields;
  PreparedSql& shown = program.plan.keyed ? program.row : program.all;
  Prepared(shown);
  const TableView* base = program.plan.base.empty() ? nullptr : schema_->Find(program.plan.base);
  for (int i = 0; i < shown.statement->ColumnCount(); i++) {
    FieldInfo field;
    field.name = shown.statement->ColumnName(i);
    if (base != nullptr && SameWord(shown.statement->OriginTable(i), program.plan.base)) {
      field.column = shown.statement->OriginColumn(i);
      field.kind = base->KindOf(field.column);
      field.isKey = !base->key.empty() && SameWord(base->key, field.column);
    }
    program.fields.push_back(std::move(field));
  }
  return program.fields;
}

std::shared_ptr<Statement> Connection::Impl::Own(std::string_view sql) {
  if (std::shared_ptr<Statement> known = statements_.Find(sql)) return known;
  auto statement = std::make_shared<Statement>(Engine(), sql);
  statements_.Add(sql, statement);
  return statement;
}

int64_t Connection::Impl::Execute(std::string_view sql) {
  std::shared_ptr<Program> program = Translate(sql);
  if (program->isRead) RefuseSql("a statement that gives rows needs a recordset");
  std::vector<Value> literals = std::move(lifted_.literals);
  BeforeRewriting(program->rewrites);
  int64_t changed = program->file ? ExecuteOnOther(*program, literals)
                                  : RunWrite(Ready(program->write, literals));
  lifted_.literals = std::move(literals);  // its memory is used again
  return changed;
}

int64_t Connection::Impl::ExecuteOnOther(Program& program, const std::vector<Value>& literals) {
  OtherFile file(*this, literals[*program.file].AsText(), program.writesFile);
  // The statement must be gone before the file can be let go.
  struct Drop {
    Program& program;
    ~Drop() { program.write.statement.reset(); }
  } drop{program};
  version_++;
  return RunTold(Ready(program.write, literals));
}

// The engine tells of each row that is written, but not where it empties a whole table at once.
int64_t Connection::Impl::RunTold(Statement& statement) {
  int64_t before = Engine().RowsSeen();
  statement.Run();
  int64_t changed = Engine().Changes();
  if (digest_ && changed > 0 && Engine().RowsSeen() == before) digest_->Forget();
  return changed;
}

void Connection::Impl::KeepDigest(DigestDefinition definition) {
  Database& engine = Engine();
  programs_.Clear();
  digest_ = std::make_unique<Digest>(*this, std::move(definition));
  engine.SetWriteHooks({[this](std::string_view table, int64_t key) {
                          if (digest_) digest_->RowChanged(table, key);
                        },
                        [this] {
                          if (digest_) digest_->Forget();
                        }});
}

int64_t Connection::Impl::RunWrite(Statement& statement) {
  BeforeWrite();
  version_++;
  try {
    return RunTold(statement);
  } catch (const Error& error) {
    AfterFailure(error);
    throw;
  }
}

bool Connection::Impl::StepRead(Statement& statement) {
  try {
    return statement.Step();
  } catch (const Error& error) {
    AfterFailure(error);
    throw;
  }
}

void Connection::Impl::BeforeWrite() {
  if (depth_ == 0) return;
  if (refusal_) throw *refusal_;
  if (!collecting_) {
    Own("BEGIN")->Run();
    collecting_ = true;
    collectingSince_ = platform::TickMilliseconds();
    ++batch_;
  }
  unitWrote_ = true;
}

// The engine itself may have rolled the whole commit back.
void Connection::Impl::AfterFailure(const Error& error) {
  if (!collecting_ || database_->InTransaction()) return;
  collecting_ = false;
  takenBack.push_back(batch_);
  version_++;
  if (index_) index_->Forget();
  if (unitWrote_) refusal_ = error;
}

void Connection::Impl::Commit() {
  try {
    Own("COMMIT")->Run();
  } catch (const Error& error) {
    if (database_->InTransaction()) Own("ROLLBACK")->Run();
    AfterFailure(error);
    throw;
  }
  collecting_ = false;
  unsynced_ = true;
}

void Connection::Impl::BeginGroup() {
  Engine();
  // Commits in a group need no flush of their own: the log keeps them in order, and SyncLog at the
  // group's end covers them all.
  if (depth_ == 0) database_->Run("PRAGMA synchronous = NORMAL");
  depth_++;
}

void Connection::Impl::EndUnit() {
  if (depth_ == 0) return;
  refusal_.reset();
  unitWrote_ = false;
  bool due =
      collecting_ && platform::TickMilliseconds() - collectingSince_ >= kLongestCommitMilliseconds;
  bool followDue = collecting_ && index_ && index_->IsFollowDue();
  if (index_ && (due || followDue)) index_->Follow(false);
  if (due && collecting_) Commit();
}

void Connection::Impl::FlushGroup() {
  if (depth_ == 0 || !database_) return;
  // A unit that is refused stays so to its end: its beginning is gone.
  unitWrote_ = false;
  if (collecting_) Commit();
  if (unsynced_) database_->SyncLog();
  unsynced_ = false;
}

void Connection::Impl::EndGroup() {
  if (depth_ == 0 || !database_) return;
  if (--depth_ > 0) return;
  depth_ = 1;
  std::optional<Error> failure;
  try {
    if (index_) index_->Follow(true);
    FlushGroup();
  } catch (const Error& error) {
    failure = error;
  }
  depth_ = 0;
  refusal_.reset();
  database_->Run("PRAGMA synchronous = FULL");
  if (failure) throw *failure;
}

Connection::Impl::OtherFile::OtherFile(Impl& connection, const std::string& path, bool isWritten)
    : connection_(connection) {
  // A file can't be attached within a commit.
  connection.FlushGroup();
  Database& engine = connection.Engine();
  engine.Attach(path, connection.password, kOtherSchema);
  try {
    if (engine.Number("PRAGMA other.page_count") == 0) {
      throw Error(kNotADatabase, "file is not a database");
    }
    if (isWritten) {
      // A file that is being made is of no use before all of it is there, and is flushed then.
      engine.Run(
          "PRAGMA other.synchronous = OFF; PRAGMA other.journal_mode = MEMORY;"
          "PRAGMA other.cache_size = -16000;");
    }
    if (engine.Number("PRAGMA other.application_id") != TextOrderVersion()) {
      engine.Run("REINDEX");
      engine.Run(("PRAGMA other.application_id = " + std::to_string(TextOrderVersion())).c_str());
    }
  } catch (...) {
    engine.Detach(kOtherSchema);
    throw;
  }
}

Connection::Impl::OtherFile::~OtherFile() {
  try {
    connection_.Engine().Detach(kOtherSchema);
  } catch (const Error&) {
    // Left attached; the next file of this kind will say so.
  }
}

}  // namespace tarnwick::jet
