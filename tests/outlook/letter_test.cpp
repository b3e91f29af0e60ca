// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/letter.h"

#include "outlook/message_of_letter.h"
#include "outlook/raw_row.h"
#include "samples/memory_outlook.h"
#include "support/scripted_ui.h"
#include "support/testing.h"

namespace tarnwick::outlook {
namespace {

using samples::MailNamed;
using samples::MemoryItem;
using samples::MemoryOutlook;

constexpr const char* kEntry = "/O=FIRM/OU=SITE/CN=RECIPIENTS/CN=BOB";

Letter LetterOf(MemoryItem& item) {
  MemoryOutlook::ItemView view(item);
  return ReadLetter(view);
}

TEST(ReadLetter, FindsInternetAddressesWhereverTheItemCarriesThem) {
  auto bob = [](MemoryItem item, std::string smtp = {}) {
    item.Recipient(RecipientType::kTo, "'Bob B'", "EX", kEntry, std::move(smtp));
    return item;
  };
  MemoryItem sender = bob(MailNamed("1", "s"));
  sender.Text(Prop::kSenderAddress, "/o=firm/ou=site/cn=recipients/cn=bob");
  sender.Text(Prop::kSenderSmtpAddress, "bob@sender.test");
  MemoryItem headers = bob(MailNamed("1", "s"));
  headers.Text(Prop::kTransportHeaders,
               "Microsoft Mail Internet Headers Version 2.0\r\n"
               "To: \"C, D\" <cd@x.test>,\r\n\t=?iso-8859-1?Q?Bob_B?= <bob@header.test>\r\n");
  struct {
    const char* name;
    MemoryItem item;
    const char* address;  // of the one recipient, Bob
  } rows[] = {{"beside the entry", bob(MailNamed("1", "s"), "bob@row.test"), "bob@row.test"},
              {"of the sender, who is the same", std::move(sender), "bob@sender.test"},
              {"in the headers, by name", std::move(headers), "bob@header.test"},
              {"nowhere", bob(MailNamed("1", "s")), kEntry}};
  for (auto& row : rows) {
    Letter letter = LetterOf(row.item);
    ASSERT_EQ(letter.recipients.size(), 1u) << row.name;
    EXPECT_EQ(letter.recipients[0].pair.Address, row.address) << row.name;
    EXPECT_EQ(letter.recipients[0].pair.Name, "Bob B") << row.name;
  }
}

TEST(ReadLetter, NamesTheOneWhomTheSenderRepresents) {
  MemoryItem item = MailNamed("1", "s");
  item.Text(Prop::kSentRepresentingName, "Boss")
      .Text(Prop::kSentRepresentingAddress, "boss@firm.test");
  Letter letter = LetterOf(item);
  EXPECT_EQ(letter.from.Address, "boss@firm.test");
  EXPECT_EQ(letter.ownAddress, "ann@firm.test");
  MemoryItem nobody;
  EXPECT_EQ(LetterOf(nobody).from, (intake::AddressPair{"no name", "no address"}));
}

TEST(ReadLetter, TakesTheBodyFromWhereverItIs) {
  std::string html = "<html>\xCF\xF0</html>";
  std::string rtf(4, '\0');
  std::string raw = "{\\rtf1\\fromhtml1{\\*\\htmltag1 <b>}x}";
  std::string packed = "0000" + std::string{static_cast<char>(raw.size()), 0, 0, 0} + "MELA0000";
  packed += raw;
  MemoryItem item = MailNamed("1", "s");
  item.properties.SetBytes(Prop::kRtfCompressed, packed);
  EXPECT_EQ(LetterOf(item).htmlBody, "<b>x");
  item.properties.SetBytes(Prop::kHtml, html);
  item.Number(Prop::kInternetCodepage, 1251);
  EXPECT_EQ(LetterOf(item).htmlBody, "<html>Пр</html>");
  EXPECT_EQ(LetterOf(item).charset, "windows-1251");
}

TEST(HtmlFromBytes, HonoursMarkCodepageAndDeclaration) {
  std::string declared = "<meta content='text/html; charset=koi8-r'>\xF0";
  EXPECT_EQ(HtmlFromBytes(declared, 0), declared.substr(0, declared.size() - 1) + "П");
  EXPECT_EQ(HtmlFromBytes("\xEF\xBB\xBFП", 1252), "П");
  EXPECT_EQ(HtmlFromBytes(std::string_view("\xFF\xFE\x1F\x04", 4), 1252), "П");
}

TEST(DecodeProperties, ReadsByteTextsInTheMessagesCodepage) {
  const struct {
    const char* name;
    Prop property;
    uint32_t number;
    const char *bytes, *text;
  } kRows[] = {{"Cyrillic by code page", Prop::kMessageCodepage, 1251, "\xCF\xF0", "Пр"},
               {"Japanese by code page", Prop::kMessageCodepage, 932, "\x83\x65", "テ"},
               {"Cyrillic by language", Prop::kMessageLocale, 0x0419, "\xCF", "П"},
               {"Cyrillic by the letter's charset", Prop::kInternetCodepage, 20866, "\xCF", "П"},
               {"UTF-16 is no code page of bytes", Prop::kMessageCodepage, 1200, "abc", "abc"}};
  for (const auto& row : kRows) {
    std::string number;
    for (int i = 0; i < 4; ++i) number.push_back(static_cast<char>(row.number >> (8 * i)));
    RawRow raw = {{static_cast<uint16_t>(row.property), PropType::kInt32, number},
                  {static_cast<uint16_t>(Prop::kSubject), PropType::kString8, row.bytes}};
    PropertySet set = Decode(raw, CharsetOfMessage(raw));
    EXPECT_EQ(set.Text(Prop::kSubject), row.text) << row.name;
  }
}

TEST(DecodeProperties, TakesOddValues) {
  auto number = static_cast<uint16_t>(Prop::kSubject);
  auto decode = [&](uint16_t type, const std::string& bytes) {
    return Decode({{number, type, bytes}}, "").Text(Prop::kSubject);
  };
  EXPECT_EQ(decode(PropType::kUnicode, std::string("\x01\0\x05\0R\0e\0", 8)), "Re");
  EXPECT_EQ(decode(PropType::kUnicode, std::string("a\0\0\0b\0c", 7)), "ab");
  EXPECT_EQ(decode(PropType::kString8, "\x01"), "");
  EXPECT_EQ(decode(PropType::kInt32, "\x01"), "");
  auto time = static_cast<uint16_t>(Prop::kDeliveryTime);
  EXPECT_FALSE(Decode({{time, PropType::kTime, "short"}}, "").Time(Prop::kDeliveryTime));
  EXPECT_FALSE(
      Decode({{time, PropType::kTime, std::string(8, '\xFF')}}, "").Time(Prop::kDeliveryTime));
}

bool IsAnn(const std::string& address) {
  return address == "ann@firm.test";
}

class MessageOfLetter : public ::testing::Test {
 protected:
  MessageOfLetter() { SetNow(DateTime::FromDate(2002, 6, 1)); }
  ~MessageOfLetter() override { platform::SetClockOverride({}); }
  intake::MailMessage Message(MemoryItem& item, const FolderPlace& place = {},
                              const intake::ReadingRules& rules = intake::kDesigned) {
    MemoryOutlook::ItemView view(item);
    Letter letter = ReadLetter(view);
    intake::MailMessage message = MessageOf(letter, view, rules);
    SetPlace(place, letter.isDraft, &IsAnn, message);
    return message;
  }
  testing::ScriptedUi ui_;
};

TEST_F(MessageOfLetter, FallsBackToTheTimesThereAre) {
  constexpr int64_t kSubmit = 1015333620;
  MemoryItem item = MailNamed("1", "s");
  EXPECT_EQ(Message(item).SentTime, platform::LocalFromUnix(kSubmit));
  EXPECT_EQ(Message(item).ReceivedTime, platform::LocalFromUnix(kSubmit + 60));
  item.properties.SetTime(Prop::kDeliveryTime, kSubmit + int64_t{400} * 86400);
  EXPECT_EQ(Message(item).ReceivedTime, platform::LocalFromUnix(kSubmit)) << "not yet possible";
  item.properties.SetTime(Prop::kDeliveryTime, kSubmit + 5);
  item.properties.SetTime(Prop::kClientSubmitTime, 79'870'000'000);
  EXPECT_EQ(Message(item).SentTime, platform::LocalFromUnix(kSubmit + 5)) << "the time for none";
  MemoryItem empty;
  EXPECT_EQ(Message(empty).SentTime, DateTime::FromDate(1990, 1, 1));
  EXPECT_EQ(Message(empty).ReceivedTime, DateTime::FromDate(1990, 1, 1));
}

TEST_F(MessageOfLetter, CompleteReadingTakesTheFirstSoundTimeAndEveryRecipient) {
  constexpr int64_t kSubmit = 1015333620;
  MemoryItem item = MailNamed("1", "s");
  item.properties.SetTime(Prop::kClientSubmitTime, 2'000'000'000);  // a clock that ran ahead
  item.Text(Prop::kTransportHeaders, "Subject: s\r\nDate: Sun, 3 Mar 2002 13:07:00 +0000\r\n");
  auto sent = [&] { return Message(item, {}, intake::kComplete).SentTime; };
  EXPECT_EQ(sent(), platform::LocalFromUnix(1015160820));
  EXPECT_GT(Message(item).SentTime, sent()) << "as designed";
  item.Text(Prop::kTransportHeaders, "Date: Sun, 3 Mar 2033 13:07:00 +0000\r\n");
  EXPECT_EQ(sent(), platform::LocalFromUnix(kSubmit + 60)) << "of receiving";
  item.properties.SetTime(Prop::kDeliveryTime, 5);
  EXPECT_EQ(sent(), DateTime::FromDate(1990, 1, 1));
  EXPECT_EQ(Message(item, {}, intake::kComplete).ReceivedTime, DateTime::FromDate(1990, 1, 1));

  for (int i = 0; i < 150; ++i) {
    item.Recipient(RecipientType::kTo, "To " + std::to_string(i), "SMTP", "a@x.test");
    item.Recipient(RecipientType::kCc, "Cc " + std::to_string(i), "", "");
  }
  intake::MailMessage complete = Message(item, {}, intake::kComplete);
  EXPECT_EQ(complete.ToCount, 150);
  EXPECT_EQ(complete.CcCount, 150);
  EXPECT_EQ(complete.Cc.at(149).Name, "Cc 149");
  EXPECT_EQ(Message(item).ToCount, 100);
  EXPECT_EQ(Message(item).CcCount, 0);
}

TEST_F(MessageOfLetter, TakesTheStateOfTheItem) {
  const struct {
    std::vector<std::pair<Prop, int64_t>> properties;
    std::string state;
  } cases[] = {
      {{}, ""},
      {{{Prop::kLastVerbExecuted, 102}}, ""},
      {{{Prop::kMessageFlags, 0}}, "U"},
      {{{Prop::kMessageFlags, 0x11}, {Prop::kFlagStatus, 1}, {Prop::kIconIndex, -1}}, "S"},
      {{{Prop::kMessageFlags, 1}, {Prop::kFlagStatus, 2}}, "SF"},
      {{{Prop::kMessageFlags, 1}, {Prop::kLastVerbExecuted, 103}}, "SR"},
      {{{Prop::kMessageFlags, 1}, {Prop::kLastVerbExecuted, 104}, {Prop::kIconIndex, 0x105}},
       "SRP"},
      {{{Prop::kMessageFlags, 9}, {Prop::kIconIndex, 0x106}}, "SPD"},
  };
  for (const auto& test : cases) {
    MemoryItem item = MailNamed("1", "s");
    for (const auto& [property, number] : test.properties) item.Number(property, number);
    EXPECT_EQ(Message(item).State, test.state);
  }
}

TEST_F(MessageOfLetter, DecidesTheDirectionByFolderThenDraftThenSender) {
  MemoryItem mine = MailNamed("1", "s").Recipient(RecipientType::kTo, "Bob", "SMTP", "b@x.test");
  MemoryItem hers = MailNamed("1", "s").Text(Prop::kSenderAddress, "eve@else.test");
  MemoryItem draft = hers;
  draft.Number(Prop::kMessageFlags, MessageFlag::kUnsent);
  FolderPlace sent{"Sent Items", "\\\\P", true, false};
  FolderPlace inbox{"Inbox", "\\\\P", false, true};
  auto direction = [&](MemoryItem& item, const FolderPlace& place = {}) {
    intake::MailMessage message = Message(item, place);
    return message.Direction + " " + message.FromToAddress;
  };
  EXPECT_THAT(direction(hers, sent), StartsWith("Out "));
  EXPECT_THAT(direction(mine, inbox), StartsWith("In "));
  EXPECT_EQ(direction(mine), "Out b@x.test");
  EXPECT_EQ(direction(hers), "In eve@else.test");
  EXPECT_THAT(direction(draft), StartsWith("Out "));
}

}  // namespace
}  // namespace tarnwick::outlook
