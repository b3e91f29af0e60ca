// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/dialect/dialect.h"
#include "database/recordset_impl.h"
#include "database/text/order.h"
#include "database/text/search.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

[[noreturn]] void RefuseCriteria(std::string_view text) {
  RefuseSql("no criteria to find by: " + std::string(text));
}

bool IsNumber(const Value& value) {
  return std::holds_alternative<int64_t>(value.Data()) ||
         std::holds_alternative<double>(value.Data()) || value.IsDate();
}

bool Satisfies(int order, std::string_view op) {
  if (op == "=") return order == 0;
  if (op == "<>") return order != 0;
  if (op == "<") return order < 0;
  if (op == ">") return order > 0;
  if (op == "<=") return order <= 0;
  return order >= 0;
}

}  // namespace

FindCriteria ReadCriteria(std::string_view text, LiftedSql& scratch) {
  Lift(text, scratch);
  const std::vector<Token>& tokens = scratch.tokens;
  bool negative = tokens.size() > 2 && tokens[2].text == "-";
  size_t value = negative ? 3 : 2;
  bool complete =
      tokens.size() == value + 2 && tokens[value].kind == Token::Kind::kLiteral &&
      (tokens[0].kind == Token::Kind::kName || tokens[0].kind == Token::Kind::kBracketed);
  if (!complete) RefuseCriteria(text);
  FindCriteria criteria;
  criteria.field = tokens[0].text;
  criteria.op = tokens[1].text;
  criteria.value = std::move(scratch.literals[tokens[value].literal]);
  if (negative) {
    if (auto* whole = std::get_if<int64_t>(&criteria.value.Data())) {
      criteria.value = -*whole;
    } else {
      criteria.value = -criteria.value.AsDouble();
    }
  }
  for (std::string_view op : {"=", "<>", "<", ">", "<=", ">="}) {
    if (criteria.op == op) return criteria;
  }
  if (!platform::SameWord(criteria.op, "like")) RefuseCriteria(text);
  criteria.op = "LIKE";
  return criteria;
}

bool Holds(const Value& value, const FindCriteria& criteria) {
  if (value.IsNull()) return false;
  if (criteria.op == "LIKE") return LikePattern(criteria.value.AsText()).Matches(value.AsText());
  if (IsNumber(value) || IsNumber(criteria.value)) {
    double a = value.AsDouble();
    double b = criteria.value.AsDouble();
    return Satisfies((a > b) - (a < b), criteria.op);
  }
  return Satisfies(CompareText(value.AsText(), criteria.value.AsText()), criteria.op);
}

}  // namespace tarnwick::jet
