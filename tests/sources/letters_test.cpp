// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers

#include "samples/mailbox_builder.h"
#include "sources/letter_files.h"
#include "sources/letter_key.h"
#include "sources/mbox.h"
#include "sources/outlook_express4.h"
#include "support/testing.h"

namespace tarnwick::sources {
namespace {

using ::testing::ElementsAreArray;

std::vector<std::string> LettersOf(LetterReader& reader) {
  std::vector<std::string> letters;
  for (LetterEntry letter; reader.Next(letter); letter = {}) {
    std::string text = letter.fault.empty() ? "" : "fault: " + letter.fault;
    if (letter.fault.empty()) reader.Copy([&](std::string_view piece) { text += piece; });
    letters.push_back((letter.state.isDeleted ? "deleted: " : "") + text);
  }
  return letters;
}

TEST(LetterKey, IsThatOfTheRfcAndTheSameHoweverALetterIsKept) {
  Blake2b abc;
  abc.Add("abc");
  EXPECT_EQ(abc.Finish(), "384264f676f39536840523f284921cdc68b6846b");
  Blake2b blocks;
  for (int i = 0; i < 1000; ++i) blocks.Add("q");
  EXPECT_EQ(blocks.Finish(), "ab2815d74732863a6e3606358b73fab58c8abcb6");

  const std::string letter = "Subject: x\nTo: a\n\nStatus: of affairs\n\nend\n";
  const std::string key = KeyOfLetter(letter);
  for (const char* same :
       {"Subject: x\r\nTo: a\r\n\r\nStatus: of affairs\r\n\r\nend",
        "X-Mozilla-Status: 0001\nX-Mozilla-Keys: a\n  b\nSubject: x\nStatus: RO\n"
        "To: a\n\nStatus: of affairs\n\nend\n\n\n"}) {
    EXPECT_EQ(KeyOfLetter(same), key) << same;
  }
  for (const char* other : {"Subject: x\nTo: a\n\nStatus: of\n\nend\n",
                            "Subject: x\nTo: a\n\nStatus: of affairs\nend\n",
                            "Subject: x\nTo: a\n b\n\nStatus: of affairs\n\nend\n"}) {
    EXPECT_NE(KeyOfLetter(other), key) << other;
  }
  std::string longLines = "Subject: " + std::string(200'000, 's') + "\r\n\r\n" +
                          std::string(70'000, 'x') + "\r" + std::string(65'535, 'y') + "\r\n";
  for (size_t size : {1U, 7U, 65'536U, 65'537U}) {
    LetterKey pieces;
    for (size_t at = 0; at < longLines.size(); at += size) pieces.Add(longLines.substr(at, size));
    EXPECT_EQ(pieces.Finish(), KeyOfLetter(longLines)) << size;
  }
}

struct MboxCase {
  const char* what;
  std::string file;
  std::vector<std::string> letters;
  friend void PrintTo(const MboxCase& row, std::ostream* out) { *out << row.what; }
};

class Mbox : public ::testing::TestWithParam<MboxCase> {};

const std::string kSep = "From ann@example.org Tue Mar  5 13:07:00 2002\n";

const MboxCase kMboxCases[] = {
    {"an empty file", "", {}},
    {"no mailbox", "From here on all is well\n\nSubject: x\n", {}},
    {"two letters, the second without an end",
     kSep + "A: 1\n\none\n\n" + kSep + "A: 2\n\ntwo",
     {"A: 1\n\none\n", "A: 2\n\ntwo"}},
    {"from lines of a text do not cut",
     kSep + "A: 1\n\nwe left\n" + kSep + "\nFrom the hills Tue we came\n\nFrom me 5 Mar\n",
     {"A: 1\n\nwe left\n" + kSep + "\nFrom the hills Tue we came\n\nFrom me 5 Mar\n"}},
    {"each quoted line loses a mark",
     kSep + "A: 1\n\n>From a\n>>From b\n> From c\n>Fromage\n",
     {"A: 1\n\nFrom a\n>From b\n> From c\n>Fromage\n"}},
    {"netscape quotes once, and leaves out the date",
     "From - \nX-Mozilla-Status: 0009\nA: 1\n\n>From a\n>>From b\n\nFrom - Mon Jun  3 12:50:27 "
     "1996\nA: 2\n\n",
     {"deleted: X-Mozilla-Status: 0009\nA: 1\n\nFrom a\n>>From b\n", "A: 2\n\n"}},
    {"line ends of dos are kept",
     "From - Mon Jun  3 12:50:27 1996\r\nA: 1\r\n\r\n>From\r\n>From b\r\n\r\nFrom - Mon Jun  3 "
     "12:50:27 1996\r\nA: 2\r\n\r\nx\r\n",
     {"A: 1\r\n\r\n>From\r\nFrom b\r\n", "A: 2\r\n\r\nx\r\n"}},
    {"eudora neither quotes nor leaves a line empty",
     "From ???@??? Thu Jan 01 00:00:01 1998\r\nA: 1\r\n\r\n>From a\r\nFrom ???@??? Thu Jan 01 "
     "00:00:01 1998\r\nA: 2\r\n",
     {"A: 1\r\n\r\n>From a\r\n", "A: 2\r\n"}},
    {"a length that is sound counts",
     kSep + "Content-Length: 57\n\nx\n\n" + kSep + ">From z\n\n\n" + kSep + "A: 2\n\n",
     {"Content-Length: 57\n\nx\n\n" + kSep + ">From z\n", "A: 2\n\n"}},
    {"a length that is not sound does not",
     kSep + "Content-Length: 9\n\nx\n\n" + kSep + "A: 2\n\n",
     {"Content-Length: 9\n\nx\n", "A: 2\n\n"}},
    {"a sender of several words, a zone, and no line end at all",
     "From \"Ann B\"@x Tue, 5 Mar 2002 13:07:00 +0100",
     {""}},
    {"a sender alone before a header",
     "From 184434@xxx\nA: 1\n\nFrom b@c\nno header\n\nFrom 184435@xxx\nA: 2\n",
     {"A: 1\n\nFrom b@c\nno header\n", "A: 2\n"}},
};

TEST_P(Mbox, IsCutIntoItsLetters) {
  testing::TempFolder folder;
  platform::WriteFile(folder.File("box"), GetParam().file);
  MboxReader reader(folder.File("box"));
  EXPECT_THAT(LettersOf(reader), ElementsAreArray(GetParam().letters)) << GetParam().what;
  EXPECT_EQ(CountMbox(folder.File("box")).letters, static_cast<int64_t>(GetParam().letters.size()));
}
INSTANTIATE_TEST_SUITE_P(Files, Mbox, ::testing::ValuesIn(kMboxCases));

// Marks that fall on the edge of what is read at once are found like others.
TEST(MboxReader, FindsMarksWhereverTheyLie) {
  testing::TempFolder folder;
  std::string file;
  std::vector<std::string> letters;
  for (size_t length = 262'000; length < 262'300; length += 3) {
    letters.push_back("A: 1\n\n" + std::string(length, 'x') + "\n>From\nFrom a\n");
    file += kSep + "A: 1\n\n" + std::string(length, 'x') + "\n>From\n>From a\n\n";
  }
  file.pop_back();
  platform::WriteFile(folder.File("box"), file);
  MboxReader reader(folder.File("box"));
  EXPECT_TRUE(LettersOf(reader) == letters);
  MboxCount part = CountMbox(folder.File("box"), file.size() / 4);
  EXPECT_TRUE(part.isEstimate);
  EXPECT_NEAR(static_cast<double>(part.letters), static_cast<double>(letters.size()), 3);
}

TEST(LetterFiles, ApplesGiveTheLetterAloneAndMaildirsItsState) {
  testing::TempFolder folder;
  platform::WriteFile(folder.File("1.emlx"),
                      "5    \nA: 1\n<plist><key>flags</key>\n<integer>3</integer>");
  platform::WriteFile(folder.File("2.emlx"), "500\nA: 2\n");
  platform::WriteFile(folder.File("3.eml"), "");
  platform::WriteFile(folder.File("4.EML"), "A: 4\r\n");
  std::vector<std::string> paths;
  platform::WriteFile(folder.File("5.msg"), "A: 5\n");
  for (const char* name : {"1.emlx", "2.emlx", "3.eml", "4.EML", "5.msg", "gone.eml"}) {
    EXPECT_NE(KindOfLetterFile(name), LetterFileKind::kNone);
    paths.push_back(folder.File(name));
  }
  LetterFiles files(paths);
  EXPECT_THAT(LettersOf(files),
              ElementsAre("deleted: A: 1\n", "A: 2\n", "fault: the file is empty", "A: 4\r\n",
                          "A: 5\n", "fault: File not found: " + folder.File("gone.eml")));
  intake::MessageState state = StateOfMaildirName("1015333620.M1P1.host:2,FRS");
  EXPECT_TRUE(state.isFlagged && state.isAnswered && state.isRead && !state.isDeleted);
  EXPECT_TRUE(StateOfMaildirName("1015333620.M1P1.host\xEF\x80\xBA"
                                 "2,S")
                  .isRead);
  EXPECT_FALSE(StateOfMaildirName("1015333620.M2,S").isKnown);
  EXPECT_EQ(YearOfMaildirName("1015333620.M1P1.host:2,"), 2002);
  EXPECT_EQ(YearOfMaildirName("99.host"), 0);
}

TEST(OutlookExpress4, GivesLettersWithTheirStateAndPassesDamage) {
  testing::TempFolder folder;
  samples::OutlookExpress4Builder store;
  for (const char* text : {"A: 1\r\n", "A: 2\r\n\r\ntwo", "A: 3\r\n"}) {
    store.Add(text, text[3] == '2' ? 1 : 2);
  }
  const std::string box = folder.File("Inbox.MBX");
  platform::WriteFile(box, store.Letters());
  auto letters = [&] {
    OutlookExpress4Reader reader(box, IndexBeside(box));
    std::vector<std::string> texts = LettersOf(reader);
    texts.push_back(reader.Damage());
    return texts;
  };
  EXPECT_THAT(letters(), ElementsAre("A: 1\r\n", "A: 2\r\n\r\ntwo", "A: 3\r\n", ""));
  platform::WriteFile(folder.File("inbox.idx"), store.Index());
  EXPECT_THAT(letters(), ElementsAre("A: 1\r\n", "deleted: A: 2\r\n\r\ntwo", "A: 3\r\n", ""));
  EXPECT_EQ(CountOutlookExpress4(box), 3);

  // The second letter's size leads out of the file.
  std::string damaged = store.Letters();
  damaged.replace(damaged.find("A: 2") - 8, 4, "\xFF\xFF\xFF\x7F");
  platform::WriteFile(box, damaged);
  EXPECT_THAT(letters(),
              ElementsAre("A: 1\r\n", "A: 3\r\n", "the file is damaged: letters may be missing"));
  // Its text would be longer than all of it.
  damaged = store.Letters();
  damaged.replace(damaged.find("A: 2") - 4, 1, "\x20");
  platform::WriteFile(box, damaged);
  EXPECT_THAT(letters(), ElementsAre("A: 1\r\n", "A: 3\r\n", ::testing::_));
  damaged.replace(8, 4, "\xFF\xFF\xFF\x7F");
  platform::WriteFile(box, damaged);
  EXPECT_LT(CountOutlookExpress4(box), 100);
}

}  // namespace
}  // namespace tarnwick::sources
