// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/thread_ids.h"

#include "support/testing.h"

namespace tarnwick::intake {
namespace {

ThreadIds Of(const std::string& own, const Texts& answered) {
  ThreadIds ids;
  if (!own.empty()) ids.own = ThreadHash(own);
  for (const std::string& id : answered) ids.answered.push_back(ThreadHash(id));
  return ids;
}

TEST(ThreadIds, AreThoseOfTheHeaders) {
  std::string many = "References:";
  for (int i = 0; i < 10000; ++i) many += " <" + std::to_string(i) + "@x>\r\n";
  const struct {
    const char* name;
    std::string headers;
    ThreadIds ids;
  } cases[] = {
      {"none", "Subject: x\r\n\r\nMessage-ID: <a@x>", {}},
      {"its own alone", "message-id:<a@x>\n", Of("a@x", {})},
      {"of two the first", "Message-ID: <a@x>\nMessage-ID: <b@x>\n", Of("a@x", {})},
      {"without brackets", "Message-ID: a@x (b)\n", Of("a@x", {})},
      {"the first and the last", "References: <a@x> <b@x>\r\n\t<c@x>\r\nMessage-ID: <d@x>\r\n",
       Of("d@x", {"a@x", "c@x"})},
      {"one, and in both headers", "In-Reply-To: <a@x>\nReferences: <a@x>\n", Of("", {"a@x"})},
      {"the answered one alone", "In-Reply-To: <b@x>\nReferences: none\n", Of("", {"b@x"})},
      {"a sentence", "In-Reply-To: Your letter of \"Monday\", from Ann <ann@x> <2@x>\n",
       Of("", {"2@x"})},
      {"itself", "Message-ID: <a@x>\nReferences: <a@x> <b@x>\n", Of("a@x", {"b@x"})},
      {"cut by a fold", "References: <a\r\n b@x>\r\n", Of("", {"ab@x"})},
      {"never closed", "References: <a <b@x> <c\nMessage-ID: <\n", Of("", {"b@x"})},
      {"very many", many + "\r\n", Of("", {"0@x", "9999@x"})},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(ThreadOfHeaders(test.headers), test.ids) << test.name;
    EXPECT_EQ(ThreadOfStored(StoredThread(test.ids)), test.ids) << test.name;
  }
  EXPECT_EQ(StoredThread({}).size(), 1U);
  // Embedded in every repository.
  EXPECT_EQ(StoredThread(Of("a@x", {})), "\xD4\x2F\xE0\x04\x19\xAF\xAC\xE6");
}

}  // namespace
}  // namespace tarnwick::intake
