// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/connection_impl.h"

#include <algorithm>

#include "platform/clock.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

constexpr size_t kMostLiterals = 300;

class StatementRow final : public PassingRow {
 public:
  explicit StatementRow(const Statement& statement) : statement_(statement) {}
  int64_t Int(int column) const override { return statement_.Int(column); }
  std::string_view Text(int column) const override { return statement_.Text(column); }

 private:
  const Statement& statement_;
};

}  // namespace

Connection::Impl::~Impl() {
  try {
    Close();
  } catch (const std::exception&) {
    // The file is left as after a crash; the next opening puts it right.
  }
}

void Connection::Impl::Open() {
  PasswordSource one = [known = password](const std::string&) { return platform::Secret(known); };
  session.Open(dataSource, passwords ? passwords : std::move(one), {readOnly, journal});
  schema_ = std::make_unique<Catalog>(session.Engine());
}

void Connection::Impl::Close() {
  if (!session.IsOpen()) return;
  std::optional<Error> failure = session.EndWriting();
  std::set<ConnectionUser*> users = std::move(users_);
  users_.clear();
  for (ConnectionUser* user : users) user->ConnectionCloses();
  programs_.Clear();
  index_.reset();
  columnCache_.reset();
  lastTested_ = {};
  schema_.reset();
  try {
    session.Close();
  } catch (const Error& error) {
    if (!failure) failure = error;
  }
  if (failure) throw *failure;
}

std::shared_ptr<Program> Connection::Impl::Translate(std::string_view sql) {
  session.Engine();
  Lift(sql, lifted_);
  // A program holds its lists of keys; a list of thousands of texts is not worth keeping either.
  bool isKept = lifted_.keyLists.empty() && lifted_.literals.size() <= kMostLiterals;
  if (isKept) {
    if (std::shared_ptr<Program> known = programs_.Find(lifted_.shape)) return known;
  }
  std::shared_ptr<Program> program = MakeProgram(Parse(lifted_));
  lifted_.keyLists.clear();
  if (isKept && !program->file) programs_.Add(lifted_.shape, program);
  return program;
}

std::shared_ptr<Program> Connection::Impl::TranslateTable(std::string_view table) {
  session.Engine();
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
    program->plan = PlanSelect(*select, *schema_, kOtherSchema,
                               columnCache_ ? &columnCache_->Definition() : nullptr);
    program->all.sql = program->plan.all;
    program->keys.sql = program->plan.keys;
    program->row.sql = program->plan.row;
    program->narrowed.sql = program->plan.narrowed;
    if (const std::optional<ColumnCachePlan>& cache = program->plan.columnCache) {
      program->cacheReferences.sql = cache->references.value_or(EngineSql());
      program->cacheDetails.sql = cache->details.value_or(EngineSql());
      program->cacheRows.sql = cache->rows.value_or(EngineSql());
      program->cacheRow.sql = cache->row;
      program->cacheOrder.sql = cache->order;
      program->cacheText.sql = cache->text;
    }
    return program;
  }
  SqlWriter writer(*schema_, kOtherSchema);
  if (auto* insert = std::get_if<Insert>(&parsed)) {
    program->file = insert->file;
    program->writesFile = insert->file.has_value();
    if (insert->select && insert->select->file) program->file = insert->select->file;
    if (program->file && insert->IsCopyOfRows()) {
      program->copy = std::make_shared<Insert>(std::move(*insert));
      insert = program->copy.get();
    } else {
      writer.Write(*insert);
    }
    const TableView* view = schema_->Find(insert->table);
    bool namesKey = view != nullptr && (insert->columns.empty() ||
                                        std::any_of(insert->columns.begin(), insert->columns.end(),
                                                    [&](const std::string& column) {
                                                      return platform::SameWord(column, view->key);
                                                    }));
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
  Database& engine = session.Engine();
  if (engine.IsReadOnly() || index_) return;
  try {
    index_ = std::make_unique<TextIndex>(session, table, std::move(columns));
  } catch (const Error&) {
    // A file that can't take an index, on a full disk perhaps, is searched without.
    if (engine.InTransaction()) engine.Run("ROLLBACK");
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
    bool applies =
        column && text.IsText() && (!term.mustBeZero || literals[*term.mustBeZero] == Value(0));
    if (applies) wanted.push_back({*column, text.AsText(), term.isPattern});
  }
  if (wanted.empty()) return std::nullopt;
  return index_->Candidates(wanted);
}

std::optional<std::vector<int64_t>> Connection::Impl::MayHold(std::string_view table,
                                                              std::string_view column,
                                                              std::string_view text) {
  if (!index_ || !index_->IsOf(table)) return std::nullopt;
  std::optional<size_t> place = index_->Find(column);
  if (!place) return std::nullopt;
  return index_->Candidates({{*place, std::string(text), false}}, TextIndex::Share::kAny);
}

// Not kept as a program: such a statement reads a part of a table, and the next another.
void Connection::Impl::ReadRows(std::string_view sql,
                                const std::function<void(const PassingRow&)>& take) {
  session.Engine();
  Lift(sql, lifted_);
  ParsedSql parsed = Parse(lifted_);
  lifted_.keyLists.clear();
  auto* select = std::get_if<Select>(&parsed);
  if (select == nullptr || select->file) RefuseSql("only rows of this file can be read");
  std::vector<Value> literals = std::move(lifted_.literals);
  SqlWriter writer(*schema_);
  writer.Write(*select);
  PreparedSql prepared{writer.Take(), nullptr};
  Statement& statement = Ready(prepared, literals);
  StatementUse use(statement);
  StatementRow row(statement);
  while (session.StepRead(statement)) take(row);
}

PreparedSql& Connection::Impl::Reading(Program& program, const std::vector<Value>& literals) {
  if (std::optional<std::vector<int64_t>> keys = Proposed(program.plan, literals)) {
    index_->Show(*keys);
    return program.narrowed;
  }
  return program.plan.keyed ? program.keys : program.all;
}

Statement& Connection::Impl::Prepared(PreparedSql& sql) {
  if (!sql.statement) {
    bool readsKeys = !sql.sql.keys.empty();
    sql.statement = std::make_unique<Statement>(session.Engine(), sql.sql.text, readsKeys);
  }
  return *sql.statement;
}

Statement& Connection::Impl::Ready(PreparedSql& prepared, const std::vector<Value>& literals) {
  Statement& statement = Prepared(prepared);
  for (size_t literal : prepared.sql.literals) {
    statement.BindValue(static_cast<int>(literal) + kFirstLiteral, literals[literal]);
  }
  for (const std::shared_ptr<const KeyList>& list : prepared.sql.keys) {
    statement.BindKeys(static_cast<int>(list->literal) + kFirstLiteral, list->keys);
  }
  if (prepared.sql.usesDate) {
    statement.Bind(kDateParameter, platform::Now().DatePart().Seconds());
  }
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
    if (base != nullptr && platform::SameWord(shown.statement->OriginTable(i), program.plan.base)) {
      field.column = shown.statement->OriginColumn(i);
      field.kind = base->KindOf(field.column);
      field.isKey = !base->key.empty() && platform::SameWord(base->key, field.column);
    }
    program.fields.push_back(std::move(field));
  }
  return program.fields;
}

int64_t Connection::Impl::Execute(std::string_view sql) {
  std::shared_ptr<Program> program = Translate(sql);
  if (program->isRead) RefuseSql("a statement that gives rows needs a recordset");
  std::vector<Value> literals = std::move(lifted_.literals);
  BeforeRewriting(program->rewrites);
  int64_t changed = program->file ? ExecuteOnOther(*program, literals)
                                  : session.RunWrite(Ready(program->write, literals));
  lifted_.literals = std::move(literals);  // its memory is used again
  return changed;
}

// Rows go by the names of their columns, for the files may be of different versions: what the
// target has no column for stays behind, what the source has none for is Null.
EngineSql Connection::Impl::CopyOf(Insert& copy) {
  Catalog other(session.Engine(), kOtherSchema);
  Catalog& from = copy.file ? *schema_ : other;
  Catalog& to = copy.file ? other : *schema_;
  const TableView* source = from.Find(copy.select->table.name);
  const TableView* target = to.Find(copy.table);
  if (source == nullptr || target == nullptr) throw Error(1, "no such table: " + copy.table);
  // Of like tables the engine carries rows over whole; those of another's file it reads value by
  // value.
  bool areAlike = copy.file && source->columns == target->columns && source->types == target->types;
  if (!areAlike) {
    copy.select->items.clear();
    for (const std::string& column : target->columns) {
      if (!source->Has(column)) continue;
      copy.columns.push_back(column);
      SelectItem& item = copy.select->items.emplace_back();
      item.value.kind = Expression::Kind::kColumn;
      item.value.text = column;
    }
  }
  SqlWriter writer(*schema_, kOtherSchema);
  writer.Write(copy);
  return writer.Take();
}

int64_t Connection::Impl::ExecuteOnOther(Program& program, const std::vector<Value>& literals) {
  OtherFile file(session, literals[*program.file].AsText(), program.writesFile);
  // The statement must be gone before the file can be let go.
  struct Drop {
    Program& program;
    ~Drop() { program.write.statement.reset(); }
  } drop{program};
  if (program.copy) program.write.sql = CopyOf(*program.copy);
  session.CountVersion();
  return session.Engine().RunWrite(Ready(program.write, literals));
}

void Connection::Impl::KeepColumnCache(ColumnCacheDefinition definition) {
  Database& engine = session.Engine();
  programs_.Clear();
  columnCache_ = std::make_unique<ColumnCache>(session, std::move(definition));
  engine.SetWriteHooks({[this](std::string_view table, int64_t key) {
                          if (columnCache_) columnCache_->RowChanged(table, key);
                        },
                        [this] {
                          if (columnCache_) columnCache_->Forget();
                        }});
}

bool Connection::Impl::HasTable(std::string_view table) {
  session.Engine();
  return schema_->Find(table) != nullptr;
}

void Connection::Impl::ForgetTables() {
  programs_.Clear();
  schema_ = std::make_unique<Catalog>(session.Engine());
}

}  // namespace tarnwick::jet
