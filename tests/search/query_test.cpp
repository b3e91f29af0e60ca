// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/query.h"
#include "support/testing.h"

namespace tarnwick::search {
namespace {

DateTime Day(int year, int month, int day) {
  return DateTime::FromDate(year, month, day);
}

Query Of(std::vector<Term> terms) {
  Query query;
  query.terms = std::move(terms);
  return query;
}

Query Between(std::optional<DateTime> from, std::optional<DateTime> to) {
  Query query;
  query.from = from;
  query.to = to;
  return query;
}

Query WithFile(bool has) {
  Query query;
  query.hasFile = has;
  return query;
}

TEST(Query, ReadsWhatPeopleType) {
  platform::SetLocaleOverride("en_US");
  const struct {
    const char* name;
    std::string typed;
    Query query;
  } cases[] = {
      {"nothing", "  \t ", {}},
      {"words", " budget  2004 ", Of({{Field::kAny, "budget"}, {Field::kAny, "2004"}})},
      {"a word twice", "a b a", Of({{Field::kAny, "a"}, {Field::kAny, "b"}})},
      {"a phrase", "\"annual report\" x", Of({{Field::kAny, "annual report"}, {Field::kAny, "x"}})},
      {"a phrase that is being typed", "\"annual re", Of({{Field::kAny, "annual re"}})},
      {"a quotation mark alone", "\"", {}},
      {"excluded", "-spam -\"old news\"",
       Of({{Field::kAny, "spam", true}, {Field::kAny, "old news", true}})},
      {"a dash alone is a word", "a - b",
       Of({{Field::kAny, "a"}, {Field::kAny, "-"}, {Field::kAny, "b"}})},
      {"a dash within a word", "well-known", Of({{Field::kAny, "well-known"}})},
      {"fields in any case", "From:ann TO:bob sUbject:x file:a.doc in:Inbox",
       Of({{Field::kFrom, "ann"},
           {Field::kTo, "bob"},
           {Field::kSubject, "x"},
           {Field::kFile, "a.doc"},
           {Field::kFolder, "Inbox"}})},
      {"a field with a phrase", "-from:\"Ann Lee\"", Of({{Field::kFrom, "Ann Lee", true}})},
      {"a field that is being typed", "from: budget", Of({{Field::kAny, "budget"}})},
      {"no field", "http://x Re:budget",
       Of({{Field::kAny, "http://x"}, {Field::kAny, "Re:budget"}})},
      {"no field in quotation marks", "\"from:ann\"", Of({{Field::kAny, "from:ann"}})},
      {"an address", "ann@example.org", Of({{Field::kAny, "ann@example.org"}})},
      {"an apostrophe", "it's", Of({{Field::kAny, "it's"}})},
      {"before a year", "before:2004", Between({}, Day(2003, 12, 31))},
      {"after a year", "after:2004", Between(Day(2005, 1, 1), {})},
      {"after a month", "after:2004-12", Between(Day(2005, 1, 1), {})},
      {"before a day", "before:2004-03-01", Between({}, Day(2004, 2, 29))},
      {"a date of the locale", "after:3/7/2005", Between(Day(2005, 3, 8), {})},
      {"of a month", "-before:2004-02 -after:2004-02", Between(Day(2004, 2, 1), Day(2004, 2, 29))},
      {"the narrower of two", "after:2001 after:2003 before:2009 before:2008",
       Between(Day(2004, 1, 1), Day(2007, 12, 31))},
      {"no date yet", "after:20 before:2004-13 after:", {}},
      {"the ends of the calendar", "after:9999-12-31 before:0100-01-01",
       Between(Day(9999, 12, 31), Day(100, 1, 1))},
      {"files", "has:file", WithFile(true)},
      {"no files", "-has:files", WithFile(false)},
      {"states", "is:Unread -is:answered is:",
       Of({{Field::kState, "unread"}, {Field::kState, "replied", true}})},
      {"a state that is being typed", "is:unr", {}},
      {"has something else", "has:fun", {}},
  };
  for (const auto& test : cases) EXPECT_EQ(ParseQuery(test.typed), test.query) << test.name;
  platform::SetLocaleOverride("");
}

TEST(Query, BoundsWhatIsPasted) {
  std::string many;
  for (int i = 0; i < 100; ++i) many.append("w").append(std::to_string(i)).append(" ");
  EXPECT_EQ(ParseQuery(many).terms.size(), kMostTerms);
  EXPECT_EQ(ParseQuery(std::string(100000, 'x')).terms.at(0).text.size(), 255U);
  EXPECT_EQ(ParseQuery("a\xFF").terms.size(), 1U);
}

TEST(Query, TermsReadAsTheyWereWritten) {
  for (const char* text : {"Inbox", "Sent Items", "-x", "a:b", "from:ann"}) {
    EXPECT_EQ(ParseQuery(TermText("in", text)), Of({{Field::kFolder, text}})) << text;
    EXPECT_EQ(ParseQuery(TermText("", text)), Of({{Field::kAny, text}})) << text;
  }
}

}  // namespace
}  // namespace tarnwick::search
