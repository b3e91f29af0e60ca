// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/jet/functions.h"

#include <sqlite3.h>

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/jet/text_fold.h"
#include "platform/jet/text_order.h"
#include "platform/jet/text_search.h"
#include "platform/locale.h"

namespace tarnwick::jet {

namespace {

bool IsNull(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_NULL;
}

std::string_view TextOf(sqlite3_value* value) {
  const void* data = sqlite3_value_text(value);
  int size = sqlite3_value_bytes(value);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
}

// No exception may pass through the engine.
template <typename Body>
void Shielded(sqlite3_context* context, Body&& body) {
  try {
    body();
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (const std::exception& error) {
    sqlite3_result_error(context, error.what(), -1);
  }
}

// What the second argument was made into, kept with the statement while it is constant.
template <typename Prepared, typename Use>
void WithPrepared(sqlite3_context* context, sqlite3_value* value, Use&& use) {
  auto* kept = static_cast<Prepared*>(sqlite3_get_auxdata(context, 1));
  if (kept != nullptr) {
    use(*kept);
    return;
  }
  auto made = std::make_unique<Prepared>(TextOf(value));
  use(*made);
  sqlite3_set_auxdata(context, 1, made.release(),
                      [](void* data) { delete static_cast<Prepared*>(data); });
}

void Format(sqlite3_context* context, int, sqlite3_value** arguments) {
  Shielded(context, [&] {
    std::string text;
    switch (sqlite3_value_type(arguments[0])) {
      case SQLITE_NULL:
        break;
      case SQLITE_INTEGER:
        text = platform::FormatDate(DateTime::FromSeconds(sqlite3_value_int64(arguments[0])),
                                    TextOf(arguments[1]));
        break;
      default:
        text = TextOf(arguments[0]);
    }
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  });
}

void InStr(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return;
  Shielded(context, [&] {
    std::string_view text = TextOf(arguments[0]);
    WithPrepared<Needle>(context, arguments[1], [&](const Needle& needle) {
      Needle::Match match = needle.Find(text);
      size_t place = match.begin == Needle::kNone ? 0 : CountChars(text.substr(0, match.begin)) + 1;
      sqlite3_result_int64(context, static_cast<sqlite3_int64>(place));
    });
  });
}

void Like(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return;
  Shielded(context, [&] {
    std::string_view text = TextOf(arguments[0]);
    WithPrepared<LikePattern>(context, arguments[1], [&](const LikePattern& pattern) {
      sqlite3_result_int(context, pattern.Matches(text) ? 1 : 0);
    });
  });
}

int Collate(void*, int sizeA, const void* a, int sizeB, const void* b) {
  try {
    return CompareText({static_cast<const char*>(a), static_cast<size_t>(sizeA)},
                       {static_cast<const char*>(b), static_cast<size_t>(sizeB)});
  } catch (const std::exception&) {
    return 0;  // out of memory: the engine has no way to be told
  }
}

}  // namespace

void RegisterFunctions(sqlite3* handle) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  using Function = void (*)(sqlite3_context*, int, sqlite3_value**);
  constexpr std::pair<const char*, Function> kFunctions[] = {
      {"tw_format", Format}, {"tw_instr", InStr}, {"tw_like", Like}};
  for (auto [name, function] : kFunctions) {
    int code = sqlite3_create_function_v2(handle, name, 2, kFlags, nullptr, function, nullptr,
                                          nullptr, nullptr);
    if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errmsg(handle));
  }
  int code =
      sqlite3_create_collation_v2(handle, kTextCollation, SQLITE_UTF8, nullptr, Collate, nullptr);
  if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errmsg(handle));
}

}  // namespace tarnwick::jet
