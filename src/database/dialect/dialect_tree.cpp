// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/dialect/dialect_tree.h"

#include <algorithm>
#include <array>

#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// Nesting of parentheses and selects that a statement may have.
constexpr int kDeepest = 200;

struct FunctionRule {
  std::string_view name;
  size_t arguments;
  bool aggregate;
};
constexpr std::array<FunctionRule, 9> kFunctions = {{{"count", 1, true},
                                                     {"sum", 1, true},
                                                     {"min", 1, true},
                                                     {"max", 1, true},
                                                     {"format", 2, false},
                                                     {"format$", 2, false},
                                                     {"instr", 2, false},
                                                     {"len", 1, false},
                                                     {"datevalue", 1, false}}};

const FunctionRule* FindFunction(std::string_view name) {
  for (const FunctionRule& rule : kFunctions) {
    if (platform::SameWord(rule.name, name)) return &rule;
  }
  return nullptr;
}

class Parser {
 public:
  explicit Parser(const LiftedSql& lifted) : lifted_(lifted) {}

  ParsedSql Statement() {
    ParsedSql statement = AnyStatement();
    TakeSymbol(";");
    End();
    return statement;
  }

 private:
  using Kind = Expression::Kind;

  class Deeper {
   public:
    explicit Deeper(int& depth) : depth_(depth) {
      if (++depth_ > kDeepest) RefuseSql("nested too deep");
    }
    ~Deeper() { depth_--; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;

   private:
    int& depth_;
  };

  const Token& Now() const { return lifted_.tokens[place_]; }
  const Token& Ahead() const {
    return lifted_.tokens[std::min(place_ + 1, lifted_.tokens.size() - 1)];
  }

  bool IsWord(std::string_view word) const {
    return Now().kind == Token::Kind::kName && platform::SameWord(Now().text, word);
  }
  bool IsSymbol(std::string_view symbol) const {
    return Now().kind == Token::Kind::kSymbol && Now().text == symbol;
  }
  bool TakeWord(std::string_view word) {
    if (!IsWord(word)) return false;
    place_++;
    return true;
  }
  bool TakeSymbol(std::string_view symbol) {
    if (!IsSymbol(symbol)) return false;
    place_++;
    return true;
  }
  void NeedWord(std::string_view word) {
    if (!TakeWord(word)) Unexpected();
  }
  void NeedSymbol(std::string_view symbol) {
    if (!TakeSymbol(symbol)) Unexpected();
  }
  void End() {
    if (Now().kind != Token::Kind::kEnd) Unexpected();
  }

  [[noreturn]] void Unexpected() const {
    const Token& token = Now();
    if (token.kind == Token::Kind::kEnd) RefuseSql("unexpected end");
    if (token.kind == Token::Kind::kLiteral) RefuseSql("unexpected literal");
    RefuseSql("syntax error near \"" + std::string(token.text) + "\"");
  }

  std::string Name() {
    if (Now().kind != Token::Kind::kName && Now().kind != Token::Kind::kBracketed) Unexpected();
    if (Now().kind == Token::Kind::kName && IsReserved(Now().text)) Unexpected();
    return std::string(lifted_.tokens[place_++].text);
  }

  // The engine's own tables are none of the database's.
  std::string TableOf() {
    std::string name = Name();
    for (std::string_view own : {"sqlite_", "tw_"}) {
      if (platform::SameWord(std::string_view(name).substr(0, own.size()), own)) {
        RefuseSql("no such table: " + name);
      }
    }
    return name;
  }

  static bool IsReserved(std::string_view word) {
    constexpr std::string_view kReserved[] = {
        "select", "from",    "where", "and",    "or",     "not",      "in",
        "like",   "between", "is",    "null",   "order",  "by",       "group",
        "inner",  "left",    "outer", "join",   "on",     "as",       "insert",
        "into",   "update",  "set",   "delete", "values", "distinct", "union"};
    for (std::string_view reserved : kReserved) {
      if (platform::SameWord(word, reserved)) return true;
    }
    return false;
  }

  ParsedSql AnyStatement() {
    if (IsWord("select")) return SelectStatement();
    if (IsWord("insert")) return InsertStatement();
    if (IsWord("update")) return UpdateStatement();
    if (IsWord("delete")) return DeleteStatement();
    Unexpected();
  }

  Select SelectStatement() {
    Deeper deeper(depth_);
    Select select;
    NeedWord("select");
    select.distinct = TakeWord("distinct");
    if (IsWord("top") && Ahead().kind == Token::Kind::kLiteral) {
      place_++;
      if (!std::holds_alternative<int64_t>(lifted_.literals[Now().literal].Data())) Unexpected();
      select.top = lifted_.tokens[place_++].literal;
    }
    do {
      select.items.push_back(Item());
    } while (TakeSymbol(","));
    NeedWord("from");
    Tables(select);
    select.file = File();
    if (TakeWord("where")) select.where = Condition();
    if (TakeWord("group")) {
      NeedWord("by");
      do {
        select.groupBy.push_back(Sum());
      } while (TakeSymbol(","));
    }
    if (TakeWord("order")) {
      NeedWord("by");
      do {
        select.orderBy.push_back(Ordering());
      } while (TakeSymbol(","));
    }
    return select;
  }

  SelectItem Item() {
    SelectItem item;
    if (TakeSymbol("*")) {
      item.star = true;
      return item;
    }
    bool dotted = Ahead().kind == Token::Kind::kSymbol && Ahead().text == ".";
    if (dotted && place_ + 2 < lifted_.tokens.size() && lifted_.tokens[place_ + 2].text == "*") {
      item.star = true;
      item.starTable = Name();
      place_ += 2;
      return item;
    }
    item.value = Sum();
    if (TakeWord("as")) item.alias = Name();
    return item;
  }

  OrderItem Ordering() {
    // A column's number would be taken for a value here; nothing is sorted by a constant.
    if (Now().kind == Token::Kind::kLiteral) Unexpected();
    OrderItem item;
    item.value = Sum();
    if (TakeWord("desc")) {
      item.descending = true;
    } else {
      TakeWord("asc");
    }
    return item;
  }

  TableName Table() {
    TableName table;
    table.name = TableOf();
    if (TakeWord("as")) table.alias = Name();
    return table;
  }

  // Joins are a plain row from left to right; parentheses around a beginning of it change nothing.
  void Tables(Select& select) {
    int open = 0;
    while (TakeSymbol("(")) open++;
    select.table = Table();
    while (true) {
      if (open > 0 && TakeSymbol(")")) {
        open--;
        continue;
      }
      Join join;
      if (TakeWord("left")) {
        NeedWord("join");
        join.kind = Join::Kind::kLeft;
      } else if (TakeWord("inner")) {
        NeedWord("join");
      } else {
        break;
      }
      join.table = Table();
      NeedWord("on");
      join.on = Condition();
      select.joins.push_back(std::move(join));
    }
    if (open > 0) Unexpected();
  }

  std::optional<size_t> File() {
    if (!IsWord("in") || Ahead().kind != Token::Kind::kLiteral || !Ahead().isText) {
      return std::nullopt;
    }
    place_++;
    return lifted_.tokens[place_++].literal;
  }

  Insert InsertStatement() {
    Insert insert;
    NeedWord("insert");
    NeedWord("into");
    insert.table = TableOf();
    insert.file = File();
    if (TakeSymbol("(")) {
      do {
        insert.columns.push_back(Name());
      } while (TakeSymbol(","));
      NeedSymbol(")");
    }
    if (TakeWord("values")) {
      NeedSymbol("(");
      do {
        insert.values.push_back(Sum());
      } while (TakeSymbol(","));
      NeedSymbol(")");
    } else {
      insert.select = std::make_unique<Select>(SelectStatement());
      if (insert.columns.empty()) insert.columns = NamesOf(insert.select->items);
      if (insert.file && insert.select->file) RefuseSql("two files in one statement");
    }
    return insert;
  }

  // Rows that are selected go into the columns of their names, in whatever order those stand. With
  // a * or a value without a name among them they go by their places.
  static std::vector<std::string> NamesOf(const std::vector<SelectItem>& items) {
    std::vector<std::string> names;
    for (const SelectItem& item : items) {
      bool named = !item.alias.empty() || item.value.kind == Kind::kColumn;
      if (item.star || !named) return {};
      names.push_back(item.alias.empty() ? item.value.text : item.alias);
    }
    return names;
  }

  Update UpdateStatement() {
    Update update;
    NeedWord("update");
    update.table = TableOf();
    NeedWord("set");
    do {
      std::string column = Name();
      NeedSymbol("=");
      update.changes.emplace_back(std::move(column), Sum());
    } while (TakeSymbol(","));
    if (TakeWord("where")) update.where = Condition();
    return update;
  }

  Delete DeleteStatement() {
    Delete statement;
    NeedWord("delete");
    TakeSymbol("*");
    NeedWord("from");
    statement.table = TableOf();
    if (TakeWord("where")) statement.where = Condition();
    return statement;
  }

  static Expression Of(Kind kind) {
    Expression expression;
    expression.kind = kind;
    return expression;
  }
  static Expression Of(Kind kind, Expression operand) {
    Expression expression = Of(kind);
    expression.operands.push_back(std::move(operand));
    return expression;
  }

  // operand { operator operand }, kept flat while the operator stays the same.
  template <typename Operand, typename Operator>
  Expression Chain(Operand&& operand, Operator&& takeOperator) {
    Expression result = operand();
    for (std::string_view op; !(op = takeOperator()).empty();) {
      if (result.kind != Kind::kChain || result.text != op) {
        Expression chain = Of(Kind::kChain, std::move(result));
        chain.text = op;
        result = std::move(chain);
      }
      result.operands.push_back(operand());
    }
    return result;
  }

  Expression Condition() {
    Deeper deeper(depth_);
    return Chain([&] { return Conjunction(); },
                 [&] { return std::string_view(TakeWord("or") ? "OR" : ""); });
  }

  Expression Conjunction() {
    return Chain([&] { return Negation(); },
                 [&] { return std::string_view(TakeWord("and") ? "AND" : ""); });
  }

  Expression Negation() {
    if (!TakeWord("not")) return Comparison();
    Deeper deeper(depth_);
    return Of(Kind::kNot, Negation());
  }

  Expression Comparison() {
    Expression left = Sum();
    for (std::string_view op : {"=", "<>", "<=", ">=", "<", ">"}) {
      if (!TakeSymbol(op)) continue;
      Expression compare = Of(Kind::kCompare, std::move(left));
      compare.text = op;
      compare.operands.push_back(Sum());
      return compare;
    }
    if (TakeWord("is")) {
      Expression test = Of(Kind::kIsNull, std::move(left));
      test.negated = TakeWord("not");
      NeedWord("null");
      return test;
    }
    bool negated = TakeWord("not");
    Expression result;
    if (TakeWord("like")) {
      result = Of(Kind::kLike, std::move(left));
      result.operands.push_back(Sum());
    } else if (TakeWord("between")) {
      result = Of(Kind::kBetween, std::move(left));
      result.operands.push_back(Sum());
      NeedWord("and");
      result.operands.push_back(Sum());
    } else if (TakeWord("in")) {
      result = In(std::move(left));
    } else if (negated) {
      Unexpected();
    } else {
      return left;
    }
    result.negated = negated;
    return result;
  }

  Expression In(Expression left) {
    Expression in = Of(Kind::kIn, std::move(left));
    for (const std::shared_ptr<const KeyList>& keys : lifted_.keyLists) {
      if (Now().kind != Token::Kind::kKeys || keys->literal != Now().literal) continue;
      in.keys = keys;
      place_++;
      return in;
    }
    NeedSymbol("(");
    if (IsWord("select")) {
      in.select = std::make_unique<Select>(SelectStatement());
      if (in.select->file || in.select->top) Unexpected();
    } else {
      do {
        in.operands.push_back(Sum());
      } while (TakeSymbol(","));
    }
    NeedSymbol(")");
    return in;
  }

  std::string_view TakeOneOf(std::initializer_list<std::string_view> symbols) {
    for (std::string_view symbol : symbols) {
      if (TakeSymbol(symbol)) return symbol;
    }
    return {};
  }

  // Texts side by side bind weaker than arithmetic.
  Expression Sum() {
    Deeper deeper(depth_);
    return Chain([&] { return Addition(); }, [&] { return TakeOneOf({"&"}); });
  }
  Expression Addition() {
    return Chain([&] { return Signed(); }, [&] { return TakeOneOf({"+", "-"}); });
  }

  Expression Signed() {
    Deeper deeper(depth_);
    if (TakeSymbol("-")) return Of(Kind::kMinus, Signed());
    return Primary();
  }

  Expression Primary() {
    const Token& token = Now();
    switch (token.kind) {
      case Token::Kind::kLiteral: {
        Expression literal = Of(Kind::kLiteral);
        literal.literal = token.literal;
        place_++;
        return literal;
      }
      case Token::Kind::kSymbol: {
        NeedSymbol("(");
        Expression inner = Condition();
        NeedSymbol(")");
        return inner;
      }
      case Token::Kind::kName:
        if (Ahead().kind == Token::Kind::kSymbol && Ahead().text == "(") return Call();
        if (TakeWord("null")) return Of(Kind::kNull);
        break;
      default:
        break;
    }
    Expression column = Of(Kind::kColumn);
    column.text = Name();
    if (TakeSymbol(".")) {
      column.table = std::move(column.text);
      column.text = Name();
    }
    return column;
  }

  Expression Call() {
    std::string name(Now().text);
    place_ += 2;
    if (platform::SameWord(name, "date")) {
      NeedSymbol(")");
      return Of(Kind::kDate);
    }
    const FunctionRule* rule = FindFunction(name);
    if (rule == nullptr) RefuseSql("no such function: " + name);
    Expression call = Of(Kind::kCall);
    call.text = rule->name;
    if (rule->name == "count" && TakeSymbol("*")) {
      call.operands.push_back(Of(Kind::kStar));
    } else {
      do {
        call.operands.push_back(Sum());
      } while (TakeSymbol(","));
    }
    NeedSymbol(")");
    if (call.operands.size() != rule->arguments) {
      RefuseSql("wrong number of arguments to " + name);
    }
    return call;
  }

  const LiftedSql& lifted_;
  size_t place_ = 0;
  int depth_ = 0;
};

}  // namespace

ParsedSql Parse(const LiftedSql& lifted) {
  return Parser(lifted).Statement();
}

bool IsAggregate(std::string_view function) {
  const FunctionRule* rule = FindFunction(function);
  return rule != nullptr && rule->aggregate;
}

}  // namespace tarnwick::jet
