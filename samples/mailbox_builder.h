// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Files of other mail programs, for tests and fuzzers: folders of Outlook Express 4, and a message
// that Outlook saved as a file.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::samples {

// A *.mbx file of Outlook Express 4 and the *.idx file beside it.
class OutlookExpress4Builder {
 public:
  OutlookExpress4Builder();
  // flags: 1 deleted, 2 unread.
  void Add(const std::string& letter, uint32_t flags = 0);
  std::string Letters() const;
  std::string Index() const;

 private:
  std::string letters_;
  std::string index_;
  uint32_t count_ = 0;
};

// A message file of three recipients' kinds, a long body, an attachment and a message within it.
std::string SampleMsgFile(const std::string& subject = "A saved message",
                          size_t pictureBytes = 5000);

}  // namespace tarnwick::samples
