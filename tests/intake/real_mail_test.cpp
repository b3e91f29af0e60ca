// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Runs over real and deliberately broken messages where they are at hand: a folder named by
// TARNWICK_DATA, or "shared/data" beside the source's folder. Skipped elsewhere.

#include <filesystem>

#include "core/run_state.h"
#include "intake/header_parser.h"
#include "platform/charset.h"
#include "platform/html.h"
#include "support/real_data.h"
#include "support/scripted_ui.h"
#include "support/testing.h"

namespace tarnwick::intake {
namespace {

namespace fs = std::filesystem;

class RealMail : public ::testing::Test {
 protected:
  RealMail() {
    core::State().EmailFileFolder = folder_.File("scratch/");
    core::State().LogFile = folder_.File("log");
    platform::MakeFolder(core::State().EmailFileFolder);
  }
  ~RealMail() override { core::ResetState(); }

  static std::vector<std::string> FilesBelow(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code code;
    for (const auto& entry : fs::recursive_directory_iterator(testing::RealData(folder), code)) {
      if (entry.is_regular_file()) files.push_back(entry.path().string());
    }
    return files;
  }

  testing::TempFolder folder_;
  testing::ScriptedUi ui_;
};

TEST_F(RealMail, EveryFileIsParsedIntoValidText) {
  std::vector<std::string> files = FilesBelow("eml");
  if (files.empty()) GTEST_SKIP() << "no real mail here";
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    MailMessage message;
    ParseMessageFile(file, {"Inbox", "", ""}, nullptr, message);
    std::string texts = message.Subject + message.FromName + message.FromAddress + message.Charset +
                        message.Importance + message.Body + message.HTMLBody + message.MessageKey +
                        platform::HtmlToPlainText(message.HTMLBody);
    for (const AddressPair& pair : message.To) texts += pair.Name + pair.Address;
    for (const std::string& name : message.Attachments) texts += name;
    EXPECT_TRUE(platform::IsValidUtf8(texts));
  }
}

TEST_F(RealMail, MailingListsOfOneYearComeOutWhole) {
  std::vector<std::string> files = FilesBelow("eml/list-mail-2002");
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
