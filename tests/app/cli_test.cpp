// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The contract of tarnwick-cli, as scripts see it.
#include <filesystem>

#include "cli/command_line.h"
#include "platform/registry.h"
#include "samples/dbx_builder.h"
#include "samples/sample_profile.h"
#include "samples/worn_outlook.h"
#include "support/machine.h"
#include "support/run_program.h"
#include "support/testing.h"

namespace tarnwick::app {
namespace {

using testing::ProgramRun;

class Cli : public ::testing::Test {
 protected:
  ProgramRun Run(std::vector<std::string> words, const std::string& input = {}) {
    std::vector<std::string> arguments = {TARNWICK_CLI, "--home", home_.File("home")};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return testing::RunProgram(arguments, input);
  }

  std::string WriteMessage(const std::string& name, const std::string& text) {
    platform::WriteFile(home_.File(name), text);
    return home_.File(name);
  }

  // What a command prints when all goes well.
  std::string Output(const std::vector<std::string>& words) {
    ProgramRun run = Run(words);
    EXPECT_EQ(run.status, 0) << run.errors;
    return run.output;
  }

  // Takes a plain letter in.
  void TakeLetter(const std::string& subject) {
    std::string file = WriteMessage(
        subject + ".eml", "From: Ann Lee <ann@example.org>\r\nSubject: " + subject +
                              "\r\nDate: Mon, 5 Jan 2004 10:20:30 +0000\r\n\r\nText.\r\n");
    ASSERT_EQ(Run({"take", file}).status, 0);
  }

  testing::TempFolder home_;
};

TEST_F(Cli, ConversationsStandTogether) {
  auto letter = [&](const std::string& name, int day, const std::string& headers) {
    return WriteMessage(name, "From: Ann <ann@example.org>\r\nSubject: " + name +
                                  "\r\nDate: " + std::to_string(day) +
                                  " Jan 2004 10:20:30 +0000\r\n" + headers + "\r\n\r\nx\r\n");
  };
  ASSERT_EQ(Run({"take", letter("plan", 1, "Message-ID: <1@x>"), letter("other", 2, ""),
                 letter("answer", 3, "References: <1@x>"), letter("late", 4, "")})
                .status,
            0);
  ProgramRun run = Run({"list", "--conversations"});
  EXPECT_THAT(run.output, ::testing::MatchesRegex("4\t.*\tlate\t4\n3\t.*\tanswer\t3\n"
                                                  "1\t.*\tplan\t3\n2\t.*\tother\t2\n"));
  run = Run({"list", "--conversations", "--json", "--search", "plan"});
  EXPECT_THAT(run.output, HasSubstr("\"Conversation\":1}"));
  EXPECT_EQ(Run({"list", "--conversations", "--subject", "nothing"}).output, "");
}

TEST_F(Cli, WhatIsFoundIsLoadedWithWhatIsLostOfIt) {
  samples::WornOutlook store(outlook::reader::Variant::kUnicode, 12);
  store.DeleteEvery(4);
  store.Finish();
  platform::MakeFolder(home_.File("disk"));
  WriteMessage("disk/mail.pst", store.Bytes());
  std::string disk = home_.File("disk");
  EXPECT_EQ(Run({"find", disk, "--rescue"}).status, 2) << "without --load";
  EXPECT_THAT(Output({"find", disk, "--load", "--accept", "all"}), HasSubstr("stored 9,"));
  EXPECT_THAT(Output({"find", disk, "--load", "--accept", "all", "--rescue"}),
              HasSubstr("stored 3, already stored 9,"));
  EXPECT_THAT(Output({"find", disk, "--load"}), HasSubstr("found 0,")) << "nothing is new";
}

TEST_F(Cli, AHomeIsMadeAndAMessageTakenListedAndShown) {
  std::string raw =
      "From: Ann Lee <ann@example.org>\r\nTo: bob@example.org\r\nSubject: Garden\tplan\r\n"
      "Date: Mon, 5 Jan 2004 10:20:30 +0000\r\n\r\nTulips first.\r\n";
  std::string file = WriteMessage("garden.eml", raw);
  ProgramRun run = Run({"take", file});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "stored 1, already stored 0, unreadable 0\n");
  run = Run({"take", file});
  EXPECT_EQ(run.output, "stored 0, already stored 1, unreadable 0\n");
  EXPECT_THAT(run.errors, HasSubstr("This email is in the repository."));

  run = Run({"list"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "1\t2004-01-05 10:20:30\tIn\t\tAnn Lee\tGarden plan\n");
  run = Run({"list", "--json", "--subject", "GARDEN"});
  EXPECT_THAT(run.output, HasSubstr("\"ID\":1"));
  EXPECT_THAT(run.output, HasSubstr("\"ReceivedTime\":\"2004-01-05 10:20:30\""));
  EXPECT_EQ(Run({"list", "--text", "roses"}).output, "");
  EXPECT_EQ(Run({"list", "--to", "2004-01-04"}).output, "");
  EXPECT_NE(Run({"list", "--search", "tulips from:ann after:2003"}).output, "");
  EXPECT_EQ(Run({"list", "--search", "tulips -plan"}).output, "");
  EXPECT_EQ(Run({"list", "--limit", "0"}).output, "");

  EXPECT_EQ(Run({"show", "1", "--raw"}).output, raw);
  EXPECT_EQ(Run({"show", "1", "--text"}).output, "Tulips first.\r\n");
  run = Run({"show", "2"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors, "");
}

// An empty repository in the place of a lost one would hide the loss.
TEST_F(Cli, AStartWithoutARepositoryOrParametersFailsAndMakesNone) {
  ASSERT_EQ(Run({"list"}).status, 0);
  for (const char* name : {"Tarnwick.twr", "emlParameter.twr"}) {
    std::string lost = home_.File("home/" + std::string(name));
    platform::RenameFile(lost, lost + ".kept");
    ProgramRun run = Run({"list"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors, HasSubstr("Error: You should take the following actions"));
    EXPECT_THAT(run.errors, HasSubstr(lost + " is missing"));
    EXPECT_FALSE(platform::FileExists(lost));
    platform::RenameFile(lost + ".kept", lost);
  }
  platform::RemoveFile(home_.File("home/emlTemplate.twr"));
  EXPECT_EQ(Run({"list"}).status, 0);
}

// A new home begins with complete reading; a load may have either, and knows what both have stored.
TEST_F(Cli, LoadReadsInEitherWay) {
  samples::MessageStoreBuilder store;
  for (int year : {2004, 2016}) {
    samples::IndexedMessage letter;
    letter.subject = std::to_string(year);
    letter.date = DateTime::FromDate(year, 1, 5);
    letter.text = "From: a@b.test\r\nSubject: " + letter.subject + "\r\n\r\nText.\r\n";
    store.AddMessage(letter);
  }
  store.Finish();
  platform::MakeFolder(home_.File("mail/"));
  for (const char* name : {"Inbox", "Drafts"}) {
    platform::WriteFile(home_.File("mail/" + std::string(name) + ".dbx"), store.Bytes());
  }
  auto load = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"--profile", home_.File("mail/"), "load", "--accept", "all"});
    return Run(words).output;
  };
  EXPECT_EQ(
      load({"--reading", "designed"}),
      "found 4, stored 1, already stored 0, refused 0, ignored 0, unreadable 1, not reached 2\n");
  EXPECT_EQ(
      load({}),
      "found 4, stored 1, already stored 1, refused 0, ignored 0, unreadable 0, not reached 2\n");
  EXPECT_EQ(
      load({"--reading", "complete", "--folders", "drafts,deleted"}),
      "found 4, stored 0, already stored 4, refused 0, ignored 0, unreadable 0, not reached 0\n");
}

// Nobody else may read what is kept, whatever the system would allow; and what was written down on
// the way does not stay, nor what a killed run has left.
TEST_F(Cli, WhatItKeepsIsItsOwnersAlone) {
  mode_t former = umask(0);
  std::string file = WriteMessage(
      "inline.eml", "From: a@b.test\r\nSubject: s\r\n\r\nbegin 644 a.txt\r\n#0V%T\r\n`\r\nend\r\n");
  samples::WriteSampleProfile(home_.File("profile/"));
  EXPECT_EQ(Run({"--profile", home_.File("profile/"), "load", "--accept", "all"}).status, 0);
  EXPECT_EQ(Run({"take", file}).status, 0);
  EXPECT_EQ(Run({"backup", home_.File("home/all.twb")}).status, 0);
  EXPECT_EQ(Run({"export", home_.File("home/part.twb")}).status, 0);
  umask(former);
  std::string scratch = home_.File("home/EmailFile/");
  EXPECT_TRUE(platform::ListFiles(scratch).empty());
  platform::WriteFile(scratch + "oeTempMessage.msg", "of a killed run");
  EXPECT_EQ(Run({"list"}).status, 0);
  EXPECT_TRUE(platform::ListFiles(scratch).empty());
  int seen = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.File("home"))) {
    EXPECT_FALSE(testing::IsOpenToOthers(entry.path().string())) << entry.path();
    ++seen;
  }
  EXPECT_GE(seen, 8);
}

// A terminal would obey them: set its title, overwrite a line, turn a name round.
TEST_F(Cli, WhatAMessageSaysIsShownAndNotObeyed) {
  std::string file = WriteMessage("evil.eml",
                                  "From: \"=?utf-8?Q?A=1B[2J=C2=9B=0D=0ATo:_x?=\" "
                                  "<a@b.test>\r\nSubject: =?utf-8?Q?a=E2=80=AEb=E2=80=8F?="
                                  "\x1B]0;x\x07\r\n\r\nt\x1B[31mred\rover\r\n");
  ASSERT_EQ(Run({"take", file}).status, 0);
  for (std::vector<std::string> words : {std::vector<std::string>{"list"},
                                         {"list", "--json"},
                                         {"contacts", "--json"},
                                         {"show", "1"},
                                         {"show", "1", "--text"},
                                         {"contacts"},
                                         {"delete", "1"}}) {
    ProgramRun run = Run(words, "n\n");
    for (const char* obeyed : {"\x1B", "\x07", "\u009B", "\u202E", "\u200F", "\rover", "\nTo:"}) {
      EXPECT_EQ((run.output + run.errors).find(obeyed), std::string::npos) << words[0] << obeyed;
    }
  }
  EXPECT_NE(Run({"list", "--json"}).output.find(R"(a\u202eb\u200f\u001b]0;x)"), std::string::npos);
  EXPECT_NE(Run({"show", "1", "--raw"}).output.find("\x1B[31m"), std::string::npos);
}

TEST_F(Cli, MailGoesToABackupAndBackAndToAnotherHome) {
  for (const char* subject : {"Garden plan", "Roof"}) TakeLetter(subject);
  std::string before = Run({"list", "--json"}).output;
  std::string backup = home_.File("full.twb");
  ProgramRun run = Run({"backup", backup});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.errors, "Backup is done.\n");
  EXPECT_EQ(Run({"backup", backup}, "n\n").status, 1);
  EXPECT_EQ(Run({"--yes", "backup", backup}).status, 0);

  std::string part = home_.File("part.twb");
  run = Run({"export", part, "--subject", "roof"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.errors, "1 Email(s) is exported.\nExport is done.\n");
  run = Run({"export", home_.File("none.twb"), "--subject", "cellar"});
  EXPECT_EQ(run.status, 1);
  EXPECT_FALSE(platform::FileExists(home_.File("none.twb")));

  run = Run({"merge", part, "--duplicates", "keep", "--accept", "all"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "imported 1, ignored 0, not reached 0\n");
  run = Run({"merge", part}, "o\n");
  EXPECT_EQ(run.output, "imported 0, ignored 1, not reached 0\n");
  EXPECT_EQ(Run({"merge", backup}).status, 1);
  EXPECT_NE(Run({"list", "--json"}).output, before);

  EXPECT_EQ(Run({"restore", backup}, "y\nn\n").status, 1);
  run = Run({"restore", backup}, "y\ny\n");
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(Run({"list", "--json"}).output, before);
  run = Run({"restore", part}, "y\ny\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("Error: You should use full backup file in this function."));
  EXPECT_EQ(Run({"restore"}).status, 2);
  EXPECT_EQ(Run({"merge", part, "--duplicates", "perhaps"}).status, 2);
}

TEST_F(Cli, AMessageIsMarkedAndDeletedAndItsContactListed) {
  std::string file =
      WriteMessage("roof.eml",
                   "From: \"Ann \\\"A\\\" Lee\" <ann@example.org>\r\nSubject: Roof \"A\" \\ b\r\n"
                   "Date: Mon, 5 Jan 2004 10:20:30 +0000\r\n\r\nTiles.\r\n");
  ASSERT_EQ(Run({"take", file}).status, 0);
  EXPECT_THAT(Run({"list", "--json"}).output, HasSubstr(R"("Subject":"Roof \"A\" \\ b")"));
  EXPECT_EQ(Run({"mark", "1"}).status, 0);
  EXPECT_NE(Run({"list", "--hot"}).output, "");
  EXPECT_EQ(Run({"mark", "1"}).status, 0);
  EXPECT_EQ(Run({"list", "--hot"}).output, "");

  ProgramRun run = Run({"contacts", "--name", "LEE"});
  EXPECT_THAT(run.output, ::testing::MatchesRegex("1\t.*Lee\tann@example.org\n"));
  run = Run({"contacts", "--json"});
  EXPECT_THAT(run.output, HasSubstr("\"Addresses\":[\"ann@example.org\"]}\n"));
  EXPECT_EQ(Run({"contacts", "--name", "nobody"}).output, "");

  EXPECT_EQ(Run({"delete", "1"}, "n\n").status, 1);
  EXPECT_NE(Run({"list"}).output, "");
  EXPECT_EQ(Run({"--yes", "delete", "1"}).status, 0);
  EXPECT_EQ(Run({"list"}).output, "");
  EXPECT_EQ(Run({"delete", "1"}).status, 1);
  EXPECT_EQ(Run({"mark", "first"}).status, 2);
}

TEST_F(Cli, AttachmentsAreListedAndSaved) {
  std::string raw =
      "From: Ann Lee <ann@example.org>\r\nSubject: Plan\r\nDate: Mon, 5 Jan 2004 10:20:30 +0000\r\n"
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\n"
      "Text.\r\n--b\r\nContent-Type: image/gif; name=../roof.gif\r\n"
      "Content-Transfer-Encoding: base64\r\n\r\nR0lG\r\n--b\r\nContent-Type: "
      "application/octet-stream; name=roof.gif.exe\r\n\r\nMZ\r\n--b--\r\n";
  ASSERT_EQ(Run({"take", WriteMessage("plan.eml", raw)}).status, 0);
  EXPECT_EQ(Output({"attachments", "1"}),
            "1\t3\timage/gif\t_roof.gif\n2\t2\tapplication/octet-stream\troof.gif.exe\n");
  std::string folder = home_.File("saved/");
  platform::MakeFolder(folder);
  platform::WriteFile(folder + "_ROOF.GIF", "older");
  ProgramRun run = Run({"attachments", "1", "--save", folder});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(platform::ReadFile(folder + "_roof (2).gif"), "GIF");
  EXPECT_EQ(platform::ReadFile(folder + "_ROOF.GIF"), "older");
  EXPECT_EQ(platform::ListFiles(folder).size(), 3U);
  EXPECT_THAT(run.output, HasSubstr("\t" + folder + "_roof (2).gif\n"));
  EXPECT_THAT(run.errors, HasSubstr("roof.gif.exe is a program"));
  EXPECT_EQ(Run({"attachments", "2"}).status, 1);
  EXPECT_EQ(Run({"attachments", "1", "--save", "/proc/none"}).status, 1);
}

TEST_F(Cli, MessagesAreSavedInEachFormat) {
  for (const char* subject : {"Garden plan", "Roof"}) TakeLetter(subject);
  EXPECT_EQ(Output({"save", "--format", "eml", home_.File("eml"), "--subject", "roof"}),
            "selected 1, saved 1, no stored file 0, failed 0, not reached 0\n");
  EXPECT_THAT(platform::ListFiles(home_.File("eml")),
              ElementsAre("2004-01-05 1020 Ann Lee - Roof.eml"));
  EXPECT_EQ(Output({"save", "--format", "mbox", home_.File("mbox"), "--folders"}),
            "selected 2, saved 2, no stored file 0, failed 0, not reached 0\n");
  EXPECT_TRUE(platform::FileExists(home_.File("mbox/Text File.mbox")));
  EXPECT_EQ(Run({"save", "--format", "maildir", home_.File("maildir")}).status, 0);
  EXPECT_EQ(platform::ListFiles(home_.File("maildir/cur")).size(), 2U);
  EXPECT_EQ(Run({"save", "--format", "eml", home_.File("none"), "--subject", "cellar"}).status, 1);
  EXPECT_EQ(Run({"save", "--format", "eml", "/proc/none"}).status, 1);
  EXPECT_EQ(Run({"save", home_.File("eml")}).status, 2);
  EXPECT_EQ(Run({"save", "--format", "pdf", home_.File("eml")}).status, 2);
}

TEST_F(Cli, AStartThatFindsTheProgramRunningLeavesItsLogAlone) {
  EXPECT_EQ(Run({"list"}).status, 0);
  std::string log = home_.File("home/LogEvent/Tarnwick.log");
  platform::WriteFile(log, "of the program that runs\r\n");
  {
    testing::HeldFile other(home_.File("home/emlParameter.twr"));
    EXPECT_EQ(Run({"list"}).status, 1);
    EXPECT_EQ(platform::ReadFile(log).find("of the program that runs"), 0U);
  }
  EXPECT_EQ(Run({"list"}).status, 0);
  EXPECT_EQ(platform::ReadFile(log).find("of the program"), std::string::npos);
}

TEST_F(Cli, AProtectedRepositoryOpensForThePasswordFileAlone) {
  TakeLetter("Garden");
  const std::string first = WriteMessage("first", "first\r\nnot read");
  const std::string second = WriteMessage("second", "second");
  EXPECT_EQ(Run({"protect", "first"}).status, 2);
  EXPECT_EQ(Run({"protect", "--new-password-file", home_.File("none")}).status, 1);
  EXPECT_EQ(Run({"protect", "--new-password-file", first}).status, 0);
  EXPECT_THAT(Run({"list"}).errors, HasSubstr("--password-file"));
  EXPECT_EQ(Run({"--password-file", second, "list"}).status, 1);
  // Each of several is tried.
  ProgramRun run = Run({"--password-file", second, "--password-file", first, "list"});
  EXPECT_THAT(run.output, HasSubstr("Garden"));
  EXPECT_EQ(Run({"--password-file", first, "--yes", "unprotect"}).status, 0);
  EXPECT_THAT(Output({"list"}), HasSubstr("Garden"));
}

TEST_F(Cli, FailuresAndWrongUsageHaveTheirStatus) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{},
        {"lists"},
        {"list", "--limit", "many"},
        {"list", "--direction", "up"},
        {"list", "--from", "5 Jan"},
        {"show"},
        {"load", "extra"},
        {"load", "--reading", "whole"},
        {"load", "--folders", "sent"},
        {"load", "--reading", "designed", "--folders", "drafts"}}) {
    EXPECT_EQ(Run(words).status, 2) << ::testing::PrintToString(words);
  }
  EXPECT_EQ(Run({"take", home_.File("missing.eml")}).status, 1);
  // Of nobody, where the system does not say whose mail it is.
  EXPECT_EQ(Run({"load"}).status, platform::OwnProfileFolder().empty() ? 1 : 0);
  EXPECT_EQ(Run({"--help"}).status, 0);
  EXPECT_THAT(Run({"--version"}).output, ::testing::MatchesRegex("tarnwick-cli .+\n"));
  EXPECT_EQ(Run({"check"}).status, 0);
  std::string bytes = platform::ReadFile(home_.File("home/Tarnwick.twr"));
  bytes[bytes.size() / 2] ^= 1;
  platform::WriteFile(home_.File("home/Tarnwick.twr"), bytes);
  EXPECT_EQ(Run({"check"}).status, 1);
  platform::WriteFile(home_.File("home/Tarnwick.twr"), std::string(5000, 'x'));
  EXPECT_EQ(Run({"check"}).status, 1);
  ProgramRun run = Run({"list"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("26 "));
}

TEST(Arguments, OptionsTakeValuesEitherWayAndOperandsMayLookLikeOptions) {
  Arguments arguments({"--limit", "5", "--sort=subject", "--json", "-", "--", "--odd"},
                      {"--limit", "--sort"}, {"--json"});
  EXPECT_EQ(arguments.Number("--limit"), 5);
  EXPECT_EQ(arguments.OneOf("--sort", {"date", "subject"}), "subject");
  EXPECT_TRUE(arguments.Has("--json"));
  EXPECT_THAT(arguments.Operands(), ElementsAre("-", "--odd"));
  EXPECT_THROW(Arguments({"--limit"}, {"--limit"}, {}), UsageError);
  EXPECT_THROW(Arguments({"--what"}, {}, {}), UsageError);
  EXPECT_THROW(ParseNumber("-1", "ID"), UsageError);
  EXPECT_THROW(ParseNumber("99999999999999999999", "ID"), UsageError);
}

}  // namespace
}  // namespace tarnwick::app
