// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/contact_book.h"

#include "intake/store_message.h"
#include "support/program_fixture.h"

namespace tarnwick::contacts {
namespace {

class ContactBookTest : public testing::ProgramFixture {
 protected:
  static Texts Listed(const std::string& filter) {
    jet::Recordset list;
    EXPECT_TRUE(OpenContactList(list, filter));
    Texts names;
    for (; !list.Eof(); list.MoveNext()) names.push_back(list.Field(kName).AsText());
    return names;
  }
  static Texts AddressesOf(int64_t contact) {
    Texts texts;
    for (const ContactAddress& address : ReadAddresses(contact)) texts.push_back(address.Address);
    return texts;
  }
  static void AddNames(std::initializer_list<const char*> names) {
    for (const char* name : names) intake::GetContactId(name, "a@b.c");
  }
  static void AddMessage(const std::string& subject, int64_t contact) {
    Run("INSERT INTO Email (Subject, FromTo) VALUES ('" + subject + "', " +
        std::to_string(contact) + ")");
  }
};

TEST_F(ContactBookTest, TheListIsFoundByPartsOfNames) {
  AddNames({"Zoe Quill", "ann o'hara", "Ann 100% \"Q\"", "Анна"});
  EXPECT_EQ(Listed("").size(), 4U);
  EXPECT_EQ(Listed("").back(), "Анна");
  EXPECT_THAT(Listed("ANN"), UnorderedElementsAre("ann o'hara", "Ann 100% \"Q\""));
  EXPECT_THAT(Listed("нН"), ElementsAre("Анна"));
  // Quotation marks of the filter stand for any one character.
  EXPECT_THAT(Listed("o'h"), ElementsAre("ann o'hara"));
  for (const std::string& filter : {std::string("' OR '1'='1"), std::string(300, 'x')}) {
    EXPECT_THAT(Listed(filter), IsEmpty());
  }
  EXPECT_THAT(ui_.shown, IsEmpty());
}

TEST_F(ContactBookTest, AContactIsFoundInTheList) {
  AddNames({"bob", "Ann", "Änne", "zoe", "Bob Q", "O'Hara"});
  // Two of one name, as an edited name can make them.
  Run("INSERT INTO MeContact (Name) VALUES ('BOB')");
  for (const char* filter : {"", "b", "o'h"}) {
    jet::Recordset list;
    ASSERT_TRUE(OpenContactList(list, filter));
    for (int64_t row = 1; row <= list.RecordCount(); ++row) {
      list.SetAbsolutePosition(row);
      Contact contact = *ReadContact(list.Field(kContactId).AsInt());
      EXPECT_EQ(FindInList(list, filter, contact), row) << filter << ": " << contact.Name;
    }
    EXPECT_EQ(FindInList(list, filter, Contact{99, "Bob", "", "", "", "", ""}), 0);
    EXPECT_EQ(FindInList(list, filter, Contact{99, "zzz", "", "", "", "", ""}), 0);
  }
}

TEST_F(ContactBookTest, DeletingTakesTheMessagesAlong) {
  int64_t ann = intake::GetContactId("Ann", "ann@example.org");
  int64_t bob = intake::GetContactId("Bob", "bob@example.org");
  AddMessage("from ann", ann);
  AddMessage("from bob", bob);
  AddMessage("from nobody", 0);
  Run("INSERT INTO ToRecipient (EmailID, Address) VALUES (1, 'x@y.z')");

  ui_.yesNo = {false};
  EXPECT_FALSE(DeleteContact(ann));
  EXPECT_EQ(CountRows("MeContact"), 2);
  ui_.yesNo = {true};
  EXPECT_TRUE(DeleteContact(ann));
  EXPECT_THAT(ui_.shown.back(),
              Pair("question", "Are you realy want to delete the  contact and contact's email."));
  EXPECT_THAT(Listed(""), ElementsAre("Bob"));
  EXPECT_THAT(AddressesOf(ann), IsEmpty());
  EXPECT_THAT(AddressesOf(bob), ElementsAre("bob@example.org"));
  EXPECT_EQ(CountRows("Email"), 2);
  EXPECT_EQ(CountRows("ToRecipient"), 1);
}

TEST_F(ContactBookTest, WithoutARowOrWhileMailIsLoadedNothingIsDeleted) {
  AddMessage("from nobody", 0);
  EXPECT_FALSE(DeleteContact(0));
  EXPECT_THAT(ui_.shown, ElementsAre(Pair("box", "There isn't selected row.")));
  EXPECT_EQ(CountRows("Email"), 1);
  int64_t ann = intake::GetContactId("Ann", "ann@example.org");
  core::BeginLoadState();
  EXPECT_FALSE(DeleteContact(ann));
  core::EndLoadState();
  EXPECT_EQ(CountRows("MeContact"), 1);
  EXPECT_EQ(ui_.Shown("box").size(), 2U);
}

TEST_F(ContactBookTest, AddressesAreTakenWithADotAndAnAt) {
  int64_t ann = intake::GetContactId("Ann", "ann@example.org");
  const struct {
    const char *name, *text;
    bool taken;
  } rows[] = {{"ordinary", "ann@home.example", true},
              {"short, the dot first", ".@", true},
              {"apostrophe", "o'hara@x.y", true},
              {"there already", "ann@example.org", true},
              {"no dot", "ann@localhost", false},
              {"no at", "ann.example.org", false},
              {"blank", " ", false}};
  for (const auto& row : rows) {
    ui_.shown.clear();
    EXPECT_EQ(AddAddress(ann, row.text), row.taken) << row.name;
    EXPECT_EQ(ui_.Shown("box"), row.taken ? Texts{} : Texts{"Invalid email address"}) << row.name;
  }
  ui_.shown.clear();
  EXPECT_FALSE(AddAddress(ann, ""));
  EXPECT_THAT(ui_.shown, IsEmpty()) << "an empty answer does nothing";
  EXPECT_THAT(AddressesOf(ann),
              UnorderedElementsAre("ann@example.org", "ann@home.example", ".@", "o'hara@x.y"));
}

TEST_F(ContactBookTest, OneAddressIsDeleted) {
  int64_t ann = intake::GetContactId("Ann", "a@b.c");
  AddAddress(ann, "d@e.f");
  ContactAddress first = ReadAddresses(ann).front();
  ui_.yesNo = {false, true};
  EXPECT_FALSE(DeleteAddress(first));
  EXPECT_TRUE(DeleteAddress(first));
  EXPECT_EQ(ui_.shown.back().second,
            "Are you realy want to delete the email with subject " + first.Address);
  EXPECT_EQ(AddressesOf(ann).size(), 1U);
}

TEST_F(ContactBookTest, ChangesAreSavedWhenWanted) {
  int64_t id = intake::GetContactId("Ann", "a@b.c");
  Contact before = *ReadContact(id);
  EXPECT_EQ(before.Name, "Ann");
  EXPECT_EQ(SaveIfChanged(before, before), Leave::kUnchanged);
  EXPECT_THAT(ui_.shown, IsEmpty());

  Contact after{id, "Ann O'Hara", "1 \"Elm\" St\nTown", "h", "b", "m", "it's\r\n%"};
  ui_.yesNo = {false};
  EXPECT_EQ(SaveIfChanged(before, after), Leave::kDiscarded);
  EXPECT_EQ(*ReadContact(id), before);
  ui_.yesNo = {true};
  EXPECT_EQ(SaveIfChanged(before, after), Leave::kSaved);
  EXPECT_EQ(ui_.shown.back().second, "Information was changed. Would you like to save it?");
  EXPECT_EQ(*ReadContact(id), after);
  EXPECT_EQ(Query("SELECT UserName FROM MeContact").AsText(), "ann");
}

TEST_F(ContactBookTest, AContactThatHasGoneIsSaidSo) {
  Contact gone{77, "Ann", "", "", "", "", ""};
  EXPECT_FALSE(ReadContact(77).has_value());
  EXPECT_FALSE(WriteContact(gone));
  ui_.yesNo = {true};
  EXPECT_EQ(SaveIfChanged({}, gone), Leave::kNotSaved);
  EXPECT_EQ(ui_.Shown("box").size(), 2U);
  EXPECT_EQ(CountRows("MeContact"), 0);
}

}  // namespace
}  // namespace tarnwick::contacts
