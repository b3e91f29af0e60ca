// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/mail_encoding.h"
#include "samples/sample_letters.h"

namespace tarnwick::samples {

namespace {

void AddWestern(std::vector<SampleMessage>& messages) {
  SampleMessage letter =
      InboxLetter(kBerit, "1999-12-20 17:45:00", "Grüße und ein Päckchen für Mina");
  letter.bodyLines = {"Kjære Clara,",
                      "ich übe mein Deutsch, du dein Norwegisch: Blåbær, fløyte, rømme.",
                      "Das Päckchen ist grün und riecht nach Käse & Öl."};
  std::string from =
      EncodedWordQ("iso-8859-1", ToLatin1(kBerit.name)) + " <" + kBerit.address + ">";
  letter.raw = HeaderLines(letter, from, Mailbox(kClara),
                           EncodedWordQ("iso-8859-1", ToLatin1(letter.subject)),
                           PlainContent("iso-8859-1", "quoted-printable")) +
               "\r\n" + QuotedPrintable(ToLatin1(Lines(letter.bodyLines)));
  messages.push_back(letter);

  // Sent as bytes, subject included, by a program that asked nobody.
  SampleMessage raw = InboxLetter(kBerit, "2000-08-06 09:30:12", "Blåbærtur på søndag");
  raw.bodyLines = {"Vi går klokka ti. Ta med kaffe, støvler og godt humør."};
  raw.raw = HeaderLines(raw, from, Mailbox(kClara), ToLatin1(raw.subject),
                        PlainContent("iso-8859-1", "8bit")) +
            "\r\n" + ToLatin1(Lines(raw.bodyLines));
  messages.push_back(raw);

  SampleMessage utf8 = InboxLetter(kBerit, "2008-06-21 21:00:00", "Sankthans – ☀ til midnatt");
  utf8.bodyLines = {"Bålet er tent, “fisken” er grillet, og sola nekter å gå ned."};
  utf8.raw = HeaderLines(utf8, EncodedWordB("utf-8", kBerit.name) + " <" + kBerit.address + ">",
                         Mailbox(kClara), EncodedWordB("utf-8", utf8.subject),
                         PlainContent("utf-8", "8bit")) +
             "\r\n" + Lines(utf8.bodyLines);
  messages.push_back(utf8);
}

void AddRussian(std::vector<SampleMessage>& messages) {
  SampleMessage koi = InboxLetter(kAnna, "2001-02-11 14:05:33", "Переплет для дневника");
  koi.bodyLines = {"Дорогая Клара,", "дневник моей бабушки дошел до нас без обложки.",
                   "Можно ли сделать новую, но оставить старый запах?", "Ваша Анна"};
  koi.raw =
      HeaderLines(koi, EncodedWordB("koi8-r", ToKoi8(kAnna.name)) + " <" + kAnna.address + ">",
                  Mailbox(kClara), EncodedWordB("koi8-r", ToKoi8(koi.subject)),
                  PlainContent("koi8-r", "8bit")) +
      "\r\n" + ToKoi8(Lines(koi.bodyLines));
  messages.push_back(koi);

  SampleMessage windows = InboxLetter(kAnna, "2003-03-08 08:08:08", "С праздником весны!");
  windows.bodyLines = {"Милая Клара,", "дневник стоит на полке и выглядит моложе меня.",
                       "Мимозы у нас по десять рублей за ветку."};
  windows.raw =
      HeaderLines(
          windows,
          EncodedWordQ("windows-1251", ToWindows1251(kAnna.name)) + " <" + kAnna.address + ">",
          Mailbox(kClara), EncodedWordB("windows-1251", ToWindows1251(windows.subject)),
          PlainContent("windows-1251", "quoted-printable")) +
      "\r\n" + QuotedPrintable(ToWindows1251(Lines(windows.bodyLines)));
  messages.push_back(windows);

  SampleMessage reply = SentLetter(kAnna, "2003-03-09 10:15:00", "Re: С праздником весны!");
  reply.bodyLines = {"Спасибо! And thank you for the photograph of the shelf."};
  reply.raw = HeaderLines(reply, Mailbox(kClara),
                          EncodedWordB("koi8-r", ToKoi8(kAnna.name)) + " <" + kAnna.address + ">",
                          "Re: " + EncodedWordB("koi8-r", ToKoi8("С праздником весны!")),
                          PlainContent("koi8-r", "8bit")) +
              "\r\n" + ToKoi8(Lines(reply.bodyLines));
  messages.push_back(reply);
}

void AddJapanese(std::vector<SampleMessage>& messages) {
  constexpr const char* kYukiJis = "?9EDM35*";  // 森田由紀
  SampleMessage iso = WorkshopLetter(kYuki, "2004-09-13 02:20:00", "和紙の見本について");
  iso.bodyLines = {"こんにちは、クララさん。", "見本を三枚お送りしました。",
                   "ご返事をお待ちしております。"};
  auto word = [](const std::string& jis) { return EncodedWordB("iso-2022-jp", JisToIso2022(jis)); };
  iso.raw =
      HeaderLines(iso, word(kYukiJis) + " <" + kYuki.address + ">", Mailbox(kClara),
                  word("OB;f$N8+K\\$K$D$$$F"), PlainContent("iso-2022-jp")) +
      "\r\n" +
      Lines({JisToIso2022("$3$s$K$A$O!\"%/%i%i$5$s!#"), JisToIso2022("8+K\\$r;0Kg$*Aw$j$7$^$7$?!#"),
             JisToIso2022("$4JV;v$r$*BT$A$7$F$*$j$^$9!#")});
  messages.push_back(iso);

  SampleMessage shift = WorkshopLetter(kYuki, "2005-04-05 23:59:59", "桜が咲きました");
  shift.bodyLines = {"京都では桜が満開です。", "お元気で。"};
  auto shiftWord = [](const std::string& jis) {
    return EncodedWordB("shift_jis", JisToShiftJis(jis));
  };
  shift.raw = HeaderLines(shift, shiftWord(kYukiJis) + " <" + kYuki.address + ">", Mailbox(kClara),
                          shiftWord(":y$,:i$-$^$7$?"), PlainContent("shift_jis", "8bit")) +
              "\r\n" +
              Lines({JisToShiftJis("5~ET$G$O:y$,K~3+$G$9!#"), JisToShiftJis("$*855$$G!#")});
  messages.push_back(shift);
}

}  // namespace

void AddForeignLetters(std::vector<SampleMessage>& messages) {
  AddWestern(messages);
  AddRussian(messages);
  AddJapanese(messages);
}

}  // namespace tarnwick::samples
