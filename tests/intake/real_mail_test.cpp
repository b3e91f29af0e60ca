// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Runs over real and deliberately broken messages where they are at hand: a folder named by
// TARNWICK_DATA, or "shared/data" beside the source's folder. Skipped elsewhere.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/run_state.h"
#include "intake/header_parser.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/html.h"
#include "support/scripted_ui.h"
#include "support/temp_folder.h"

namespace tarnwick::intake {
namespace {

namespace fs = std::filesystem;

class RealMail : public ::testing::Test {
 protected:
  RealMail() {
    core::State().EmailFileFolder = folder_.File("scratch/");
    core::State().LogFile = folder_.File("log");
    platform::MakeFolder(core::State().EmailFileFolder);
    const char* data = std::getenv("TARNWICK_DATA");
    root_ = fs::path(data != nullptr ? data : TARNWICK_SOURCE "/../shared/data") / "eml";
  }
  ~RealMail() override { core::ResetState(); }

  static std::vector<std::string> FilesBelow(const fs::path& folder) {
    std::vector<std::string> files;
    std::error_code code;
    for (const auto& entry : fs::recursive_directory_iterator(folder, code)) {
      if (entry.is_regular_file()) files.push_back(entry.path().string());
    }
    return files;
  }

  static void ExpectValidTexts(const MailMessage& message) {
    const std::string* texts[] = {&message.Subject,     &message.TimeText,     &message.TimeShift,
                                  &message.MessageKey,  &message.FromName,     &message.FromAddress,
                                  &message.FromToName,  &message.Importance,   &message.Charset,
                                  &message.Body,        &message.HTMLBody,     &message.Encoding,
                                  &message.HTMLCharset, &message.FromToAddress};
    for (const std::string* text : texts) EXPECT_TRUE(platform::IsValidUtf8(*text));
    for (const auto* list : {&message.To, &message.Cc}) {
      for (const AddressPair& pair : *list) {
        EXPECT_TRUE(platform::IsValidUtf8(pair.Name + pair.Address));
      }
    }
    for (const std::string& name : message.Attachments) EXPECT_TRUE(platform::IsValidUtf8(name));
    EXPECT_TRUE(platform::IsValidUtf8(platform::HtmlToPlainText(message.HTMLBody)));
  }

  testing::TempFolder folder_;
  testing::ScriptedUi ui_;
  fs::path root_;
};

TEST_F(RealMail, EveryFileIsParsedIntoValidText) {
  std::vector<std::string> files = FilesBelow(root_);
  if (files.empty()) GTEST_SKIP() << "no real mail here";
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    MailMessage message;
    ParseMessageFile(file, {"Inbox", "", ""}, nullptr, message);
    ExpectValidTexts(message);
  }
}

TEST_F(RealMail, MailingListsOfOneYearComeOutWhole) {
  std::vector<std::string> files = FilesBelow(root_ / "list-mail-2002");
  if (files.empty()) GTEST_SKIP() << "no real mail here";
  size_t dated = 0;
  size_t readable = 0;
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    MailMessage message;
    EXPECT_TRUE(ParseMessageFile(file, {"Inbox", "", ""}, nullptr, message));
    EXPECT_NE(message.FromAddress, kNoAddress);
    EXPECT_EQ(message.Subject.find("=?"), std::string::npos);
    int year = message.ReceivedTime.ToCivil().year;
    if (year >= 2000 && year <= 2003) ++dated;
    if (!message.Body.empty() || !message.HTMLBody.empty()) ++readable;
  }
  EXPECT_GE(dated * 1000, files.size() * 999);
  EXPECT_GE(readable * 1000, files.size() * 995);
}

}  // namespace
}  // namespace tarnwick::intake
