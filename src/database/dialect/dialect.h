// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Jet SQL, as much of it as the program speaks. Internal to the database: a statement is lifted
// (here), parsed into a tree (dialect_tree.h) and written for the engine (dialect_writer.h). What
// is not in this grammar is refused with an Error, so that no text reaches the engine unread.
//
//   statement  = select | insert | update | delete, at most one ";" at its end
//   select     = SELECT [DISTINCT] [TOP number] items FROM tables [IN 'file']
//                [WHERE condition] [GROUP BY values [HAVING condition]]
//                [ORDER BY value [ASC | DESC], ...]
//   items      = * | table.* | value [AS name], ...
//   tables     = table [AS name], joined by "," or by [INNER | LEFT [OUTER]] JOIN table ON
//   condition,
//                with parentheses around what stands to the left of a join
//   insert     = INSERT INTO table [IN 'file'] [(columns)] (VALUES (values) | select)
//                Without (columns) a select's named items go to the columns of their names, and
//                those of * to the columns by place.
//   update     = UPDATE table SET column = value, ... [WHERE condition]
//   delete     = DELETE [* | table.*] FROM table [WHERE condition]
//   condition  = AND, OR, NOT over: = <> < > <= >= between values, [NOT] LIKE, [NOT] IN (values or
//   a
//                select), [NOT] BETWEEN value AND value, IS [NOT] NULL
//   value      = literal, name, table.name, + - * /, & (texts side by side, Null as nothing),
//                Count Sum Avg Min Max, Format or Format$ (a date, a pattern), InStr(text, part),
//                Len, DateValue (a date's day, at midnight), Date(), Now()
//   literal    = 'text' or "text" with the quotation mark doubled inside, #mm/dd/yyyy [hh:mm[:ss]]#
//                or #yyyy-mm-dd ...#, a number, NULL, TRUE (-1), FALSE (0)
//   name       = letters, digits, _ and $; or any characters in [brackets]
//
// Names and words are read without regard to case. A number ends where its digits do, so that
// "WHERE FileID=12ORDER BY ID" is understood. Texts compare without regard to case, and so do InStr
// and Like; in a pattern of Like % and _ are special and everything else is not, brackets included.
// There are no comments: "--" is two minus signs.
//
// Rows of an insert's select go into the columns that they are named after, when all have names.
//
// IN 'file' names another database file, opened with the password of the connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "database/engine/key_list.h"
#include "database/value.h"

namespace tarnwick::jet {

class KeyTable;

struct Token {
  enum class Kind : uint8_t { kEnd, kName, kBracketed, kLiteral, kNumber, kKeys, kSymbol };
  Kind kind = Kind::kEnd;
  // The name, the digits of a number that was not lifted, or the symbol; a view of the statement.
  std::string_view text;
  size_t literal = 0;   // kLiteral: its place among the literals; kKeys: among the lists of keys
  bool isText = false;  // kLiteral: in quotation marks
};

// A statement with its literals taken out. Two statements of one shape differ in their literals
// alone and share what was prepared for them.
struct LiftedSql {
  std::vector<Token> tokens;  // ends with kEnd
  std::vector<Value> literals;
  // Lists of so many whole numbers behind IN that they would burden the parser and the engine.
  std::vector<KeyList> keyLists;
  // Where each of them lies for the engine to read; given by the connection before it is parsed.
  std::vector<std::shared_ptr<KeyTable>> keyTables;
  std::string shape;
  // So many numbers that they stay in the text; such a statement is not worth keeping.
  bool numbersInline = false;
};

// Reads sql into lifted, whose memory is used again. The tokens are views of sql. Throws Error for
// an unended literal, a date that is none, or a character that begins nothing.
void Lift(std::string_view sql, LiftedSql& lifted);

[[noreturn]] void RefuseSql(const std::string& why);

}  // namespace tarnwick::jet
