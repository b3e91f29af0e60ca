// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Jet SQL, as much of it as the program speaks. Internal to the database: a statement is lifted
// (here), parsed into a tree (dialect_tree.h) and written for the engine (dialect_writer.h). What
// is not in this grammar is refused with an Error, so that no text reaches the engine unread.
//
//   statement  = select | insert | update | delete, at most one ";" at its end
//   select     = SELECT [DISTINCT] [TOP number] items FROM tables [IN 'file']
//                [WHERE condition] [GROUP BY values]
//                [ORDER BY value [ASC | DESC], ...]
//   items      = * | table.* | value [AS name], ...
//   tables     = table [AS name], joined by (INNER | LEFT) JOIN table ON condition, with
//                parentheses around what stands to the left of a join
//   insert     = INSERT INTO table [IN 'file'] [(columns)] (VALUES (values) | select)
//                Without (columns) a select's named items go to the columns of their names, and
//                those of * to the columns by place.
//   update     = UPDATE table SET column = value, ... [WHERE condition]
//   delete     = DELETE [*] FROM table [WHERE condition]
//   condition  = AND, OR, NOT over: = <> < > <= >= between values, [NOT] LIKE, [NOT] IN (values or
//                a select), [NOT] BETWEEN value AND value, IS [NOT] NULL
//   value      = literal, name, table.name, + -, & (texts side by side, Null as nothing),
//                Count Sum Min Max, Format or Format$ (a date, a pattern), InStr(text, part), Len,
//                DateValue (a date's day, at midnight), Date()
//   literal    = 'text' or "text" with the quotation mark doubled inside,
//                #mm/dd/yyyy [hh:mm[:ss]]#, a number without an exponent, NULL
//   name       = letters, digits, _ and $; or any characters in [brackets]
//
// Names and words are read without regard to case. A number ends where its digits do, so that
// "WHERE FileID=12ORDER BY ID" is understood. Texts compare without regard to case, and so do InStr
// and Like; in a pattern of Like % and _ are special and everything else is not, brackets included.
// There are no comments: "--" is two minus signs.
//
// Rows of an insert's select go into the columns that they are named after, when all have names; so
// do those of a * between two files, as far as both have a column of the name.
//
// IN 'file' names another database file, opened with the password of the connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "database/value.h"

namespace tarnwick::jet {

struct Token {
  enum class Kind : uint8_t { kEnd, kName, kBracketed, kLiteral, kKeys, kSymbol };
  Kind kind = Kind::kEnd;
  std::string_view text;  // the name or the symbol; a view of the statement
  size_t literal = 0;     // kLiteral, kKeys: its place among the literals
  bool isText = false;    // kLiteral: in quotation marks
};

// So many whole numbers behind IN that they would burden the parser and the engine.
struct KeyList {
  size_t literal = 0;  // Null stands in its place among the literals
  std::vector<int64_t> keys;
};

// A statement with its literals taken out. Two statements of one shape differ in their literals
// alone and share what was prepared for them.
struct LiftedSql {
  std::vector<Token> tokens;  // ends with kEnd
  std::vector<Value> literals;
  std::vector<std::shared_ptr<const KeyList>> keyLists;  // by their literals
  std::string shape;
};

// Reads sql into lifted, whose memory is used again. The tokens are views of sql. Throws Error for
// an unended literal, a date that is none, or a character that begins nothing.
void Lift(std::string_view sql, LiftedSql& lifted);

[[noreturn]] void RefuseSql(const std::string& why);

}  // namespace tarnwick::jet
