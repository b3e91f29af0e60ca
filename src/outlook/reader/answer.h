// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes the frames of an answer to the channel, which is standard input. Throws ChannelClosed when
// the program at its other end is gone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::outlook::reader {

struct ChannelClosed {};

class Answer {
 public:
  void Property(uint16_t number, uint16_t type, std::string_view bytes);
  void Nodes(char kind, const std::vector<uint32_t>& nodes);
  // Payloads longer than a frame take several.
  void Frame(char kind, std::string_view payload);
  void Flush();

 private:
  std::string buffer_;
};

// The next request's kind and payload; throws ChannelClosed at the end.
char ReadRequest(std::string& payload);

}  // namespace tarnwick::outlook::reader
