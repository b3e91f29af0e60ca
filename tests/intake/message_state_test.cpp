// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/message_state.h"

#include "support/testing.h"

namespace tarnwick::intake {
namespace {

TEST(MessageState, IsReadFromHeadersAndWrittenBackTheSame) {
  const struct {
    std::string headers;
    std::string stored;
  } cases[] = {
      {"X-Mozilla-Status: 1007\r\n", "SRPF"},
      {"x-mozilla-status:\t0000 \nStatus: RO\n", "S"},
      {"A: b\nStatus: RO\nX-Status: AF\n\nStatus: O", "SRF"},
      {"Status: O\r\nX-Status: T\r\n", "UD"},
      {"Status: N\nStatus: RO\n", "U"},
      {"X-Status: FRA\n", "SRF"},
      {"Status: OK\nX-Status: x\nX-Mozilla-Status: no\n", ""},
      {" Status: RO\nXStatus: RO\nStatus\n", ""},
      {"A: b\n\nStatus: RO\n", ""},
      {"Status:", ""},
  };
  for (const auto& test : cases) {
    MessageState state = StateOfHeaders(test.headers);
    EXPECT_EQ(StoredState(state), test.stored) << test.headers;
    EXPECT_EQ(StateOfStored(test.stored), state) << test.headers;
    EXPECT_EQ(StateOfHeaders(HeadersOfState(state, "\r\n") + "Status: O\r\n\r\n").isRead,
              state.isRead);
    EXPECT_EQ(StateOfHeaders(HeadersOfState(state, "\n")), state) << test.headers;
  }
  EXPECT_TRUE(StateOfHeaders("X-Mozilla-Status: 8").isDeleted);
  EXPECT_EQ(StateOfStored("of another program"), MessageState());
  EXPECT_EQ(StateWords(StateOfStored("SRPFD")),
            (Texts{"read", "replied", "forwarded", "flagged", "draft"}));
}

}  // namespace
}  // namespace tarnwick::intake
