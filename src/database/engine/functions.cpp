// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/functions.h"

#include <sqlite3.h>

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "database/engine/engine.h"
#include "database/engine/packing.h"
#include "database/text/order.h"
#include "database/text/search.h"
#include "platform/error.h"
#include "platform/locale.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

bool IsNull(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_NULL;
}

// As it is stored, whatever its type.
std::string_view StoredOf(sqlite3_value* value) {
  const void* data = sqlite3_value_blob(value);
  int size = sqlite3_value_bytes(value);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
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
  } catch (const Error& error) {
    sqlite3_result_error(context, error.Description().c_str(), -1);
    sqlite3_result_error_code(context, error.Number());
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

bool IsPackedText(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_BLOB && IsPacked(StoredOf(value));
}

// The text of an argument that may be packed; valid until the next one. nullopt for a damaged one:
// the search goes on with the others.
template <bool kLong>
std::optional<std::string_view> SearchedText(sqlite3_value* value) {
  if (!kLong || !IsPackedText(value)) return TextOf(value);
  try {
    return UnpackScratch(StoredOf(value));
  } catch (const Error&) {
    return std::nullopt;
  }
}

template <bool kLong>
void InStr(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return;
  Shielded(context, [&] {
    std::optional<std::string_view> searched = SearchedText<kLong>(arguments[0]);
    if (!searched) return;
    std::string_view text = *searched;
    WithPrepared<Needle>(context, arguments[1], [&](const Needle& needle) {
      Needle::Match match = needle.Find(text);
      size_t place =
          match.begin == Needle::kNone ? 0 : platform::CountChars(text.substr(0, match.begin)) + 1;
      sqlite3_result_int64(context, static_cast<sqlite3_int64>(place));
    });
  });
}

template <bool kLong>
void Like(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return;
  Shielded(context, [&] {
    std::optional<std::string_view> text = SearchedText<kLong>(arguments[0]);
    if (!text) return;
    WithPrepared<LikePattern>(context, arguments[1], [&](const LikePattern& pattern) {
      sqlite3_result_int(context, pattern.Matches(*text) ? 1 : 0);
    });
  });
}

void LongText(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (!IsPackedText(arguments[0])) return sqlite3_result_value(context, arguments[0]);
  Shielded(context, [&] {
    std::string_view text = UnpackScratch(StoredOf(arguments[0]));
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  });
}

void PlainBytes(sqlite3_context* context, int, sqlite3_value** arguments) {
  bool isPacked =
      sqlite3_value_type(arguments[0]) == SQLITE_TEXT && IsPacked(StoredOf(arguments[0]));
  if (!isPacked) return sqlite3_result_value(context, arguments[0]);
  Shielded(context, [&] {
    std::string_view bytes = UnpackScratch(StoredOf(arguments[0]));
    sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  });
}

void PackText(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (IsNull(arguments[0])) return;
  Shielded(context, [&] {
    std::string_view text = TextOf(arguments[0]);
    std::string_view packed = Pack(text);
    if (!packed.empty()) {
      sqlite3_result_blob64(context, packed.data(), packed.size(), SQLITE_TRANSIENT);
    } else {
      sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
  });
}

void PackBytes(sqlite3_context* context, int, sqlite3_value** arguments) {
  int type = sqlite3_value_type(arguments[0]);
  if (type != SQLITE_TEXT && type != SQLITE_BLOB) {
    return sqlite3_result_value(context, arguments[0]);
  }
  Shielded(context, [&] {
    std::string_view bytes = StoredOf(arguments[0]);
    std::string_view packed = Pack(bytes);
    if (!packed.empty()) {
      sqlite3_result_text64(context, packed.data(), packed.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } else {
      sqlite3_result_blob64(context, bytes.empty() ? "" : bytes.data(), bytes.size(),
                            SQLITE_TRANSIENT);
    }
  });
}

void Pass(sqlite3_context* context, int, sqlite3_value** arguments) {
  const auto* taker = static_cast<RowTaker*>(sqlite3_value_pointer(arguments[0], kTakerType));
  if (taker == nullptr) return sqlite3_result_error(context, "no taker", -1);
  Shielded(context,
           [&] { sqlite3_result_int(context, (*taker)(PassedRow(arguments + 1)) ? 1 : 0); });
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
  struct Registered {
    const char* name;
    int arguments;
    Function function;
  };
  constexpr Registered kFunctions[] = {
      {"tw_format", 2, Format},          {"tw_instr", 2, InStr<false>},
      {"tw_instr_long", 2, InStr<true>}, {"tw_like", 2, Like<false>},
      {"tw_like_long", 2, Like<true>},   {"tw_long_text", 1, LongText},
      {"tw_bytes", 1, PlainBytes},       {"tw_pack_text", 1, PackText},
      {"tw_pack_bytes", 1, PackBytes}};
  for (const Registered& made : kFunctions) {
    int code = sqlite3_create_function_v2(handle, made.name, made.arguments, kFlags, nullptr,
                                          made.function, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errmsg(handle));
  }
  int code = sqlite3_create_function_v2(handle, "tw_pass", -1, SQLITE_UTF8 | SQLITE_DIRECTONLY,
                                        nullptr, Pass, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errmsg(handle));
  code =
      sqlite3_create_collation_v2(handle, kTextCollation, SQLITE_UTF8, nullptr, Collate, nullptr);
  if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errmsg(handle));
}

}  // namespace tarnwick::jet
