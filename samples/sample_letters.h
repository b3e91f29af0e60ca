// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The letters of the sample profile (sample_profile.h), put together from their parts.
#pragma once

#include <string>
#include <vector>

#include "samples/sample_profile.h"

namespace tarnwick::samples {

// Plain English letters, most of the sample.
void AddPlainLetters(std::vector<SampleMessage>& messages);
// Letters in other scripts and charsets.
void AddForeignLetters(std::vector<SampleMessage>& messages);
// HTML, parts within parts, attached and inline files.
void AddStructuredLetters(std::vector<SampleMessage>& messages);
// Headers that are missing or wrong, lines that look like something else.
void AddOddLetters(std::vector<SampleMessage>& messages);

// A message to start from: folder, parties and direction set, raw empty. person is one of
// those below.
struct SamplePerson {
  const char* name;
  const char* address;
};
inline constexpr SamplePerson kClara = {"Clara Hollis", "clara@hollis-marsh.example"};
inline constexpr SamplePerson kEdmund = {"Edmund Hollis", "edmund@hollis-marsh.example"};
inline constexpr SamplePerson kMina = {"Mina Hollis", "mina.hollis@college.example"};
inline constexpr SamplePerson kJonas = {"Jonas Marsh", "jonas@hollis-marsh.example"};
inline constexpr SamplePerson kBerit = {"Berit Sølvberg", "berit@fjordpost.example"};
inline constexpr SamplePerson kAnna = {"Анна Воронина", "anna@nevamail.example"};
inline constexpr SamplePerson kYuki = {"森田由紀", "morita@washi.example"};
inline constexpr SamplePerson kLibrary = {"Tolverne Library", "desk@tolverne-library.example"};
inline constexpr SamplePerson kPaper = {"Penrose Paper Mill", "orders@penrose-paper.example"};

SampleMessage InboxLetter(const SamplePerson& from, const std::string& when,
                          const std::string& subject);
SampleMessage SentLetter(const SamplePerson& to, const std::string& when,
                         const std::string& subject);
// In the folder "Workshop" below the inbox.
SampleMessage WorkshopLetter(const SamplePerson& from, const std::string& when,
                             const std::string& subject);

// Header lines, each ended by CR LF. from, to and subject are taken as they stand (encoded where
// need be); content is the lines from MIME-Version on.
std::string HeaderLines(const SampleMessage& message, const std::string& from,
                        const std::string& to, const std::string& subject,
                        const std::string& content);
// "name <address>" with the name in quotation marks.
std::string Mailbox(const SamplePerson& person);
std::string PlainContent(const std::string& charset, const std::string& encoding = "7bit");
// Lines joined, each ended by CR LF.
std::string Lines(const std::vector<std::string>& lines);

}  // namespace tarnwick::samples
