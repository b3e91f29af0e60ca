// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/automated_outlook.h"

#include <map>

#include "outlook_load.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::outlook {
namespace {

using platform::AutomationObject;
using platform::AutomationValue;

// Members by name; one that takes arguments by its name and the first of them.
class Fake : public AutomationObject {
 public:
  explicit Fake(std::map<std::string, AutomationValue> members) : members_(std::move(members)) {}

  AutomationValue Ask(const std::string& member,
                      const std::vector<AutomationValue>& arguments) override {
    std::string name = member;
    if (!arguments.empty()) {
      const auto* number = std::get_if<int64_t>(&arguments[0]);
      const auto* text = std::get_if<std::string>(&arguments[0]);
      name += " " + (number != nullptr ? std::to_string(*number) : *text);
    }
    if (member == "SaveAsFile") {
      platform::WriteFile(std::get<std::string>(arguments[0]),
                          std::get<std::string>(members_.at("bytes")));
      return {};
    }
    auto found = members_.find(name);
    if (found == members_.end()) throw Error(ErrorNumber::kPathAccess, "no member " + name);
    return found->second;
  }

 private:
  std::map<std::string, AutomationValue> members_;
};

std::shared_ptr<AutomationObject> Made(std::map<std::string, AutomationValue> members) {
  return std::make_shared<Fake>(std::move(members));
}

std::shared_ptr<AutomationObject> All(const std::vector<std::shared_ptr<AutomationObject>>& parts) {
  std::map<std::string, AutomationValue> members = {{"Count", static_cast<int64_t>(parts.size())}};
  for (size_t i = 0; i < parts.size(); ++i) members["Item " + std::to_string(i + 1)] = parts[i];
  return Made(std::move(members));
}

std::shared_ptr<AutomationObject> FolderOf(
    const std::string& name, const std::vector<std::shared_ptr<AutomationObject>>& items,
    const std::vector<std::shared_ptr<AutomationObject>>& folders = {}) {
  return Made({{"Name", name},
               {"EntryID", "of " + name},
               {"DefaultItemType", int64_t{0}},
               {"Items", All(items)},
               {"Folders", All(folders)}});
}

// Of a letter that says the same in each.
std::map<std::string, AutomationValue> Letter(const std::string& id, int64_t format) {
  return {{"EntryID", id},
          {"MessageClass", "IPM.Note"},
          {"Subject", "letter " + id},
          {"Body", "plain text"},
          {"HTMLBody", "<p>marked text</p>"},
          {"BodyFormat", format},
          {"SenderName", "Ben"},
          {"SenderEmailAddress", "ben@example.org"},
          {"SentOn", DateTime::FromDate(2004, 7, 1).WithTime(12, 0, 0)},
          {"ReceivedTime", DateTime::FromDate(4501, 1, 1)},
          {"UnRead", int64_t{1}},
          {"Recipients", All({})},
          {"Attachments", All({})}};
}

class AutomatedOutlookTest : public OutlookLoad {
 protected:
  std::shared_ptr<AutomationObject> Application(
      const std::vector<std::shared_ptr<AutomationObject>>& stores) {
    auto mapi = Made({{"Folders", All(stores)}, {"GetDefaultFolder 5", FolderOf("Gesendet", {})}});
    return Made({{"GetNamespace MAPI", mapi}});
  }
};

constexpr const char* kTag = "GetProperty http://schemas.microsoft.com/mapi/proptag/0x";

TEST_F(AutomatedOutlookTest, TakesWhatOutlooksObjectsTell) {
  auto plain = Letter("01", 1);
  plain["Recipients"] = All(
      {Made({{"Type", int64_t{1}},
             {"Name", "Ann"},
             {"Address", "/O=EXAMPLE/CN=ANN"},
             {"PropertyAccessor", Made({{std::string(kTag) + "39FE001F", "ann@example.org"}})}}),
       Made({{"Type", int64_t{2}}, {"Name", "C"}, {"Address", "c@x.test"}})});
  plain["Attachments"] = All({Made({{"Type", int64_t{1}},
                                    {"FileName", "list.txt"},
                                    {"bytes", std::string(200'000, 'x') + "end"}})});
  auto marked = Letter("02", 2);
  marked["PropertyAccessor"] =
      Made({{std::string(kTag) + "00390040", DateTime::FromDate(2004, 7, 2).WithTime(8, 0, 0)},
            {std::string(kTag) + "0E070003", int64_t{MessageFlag::kRead}},
            {std::string(kTag) + "1035001F", "<two@example.org>"}});
  auto nameless = Letter("03", 1);
  nameless.erase("EntryID");
  auto application = Application({FolderOf(
      "Personal Folders", {},
      {FolderOf("Inbox", {Made(plain), Made(marked), Made(nameless)}),
       FolderOf("Gesendet", {Made(Letter("04", 1)),
                             Made({{"EntryID", "05"}, {"MessageClass", "IPM.Contact"}})})})});
  AutomatedOutlook outlook(*application, {});
  const core::LoadCounts& counts = LoadFrom(outlook, false);
  EXPECT_EQ(counts.stored, 3);
  EXPECT_EQ(counts.unreadable, 1);
  EXPECT_THAT(ui_.Shown("box"), Contains(HasSubstr("Allow access for")));
  std::string other = platform::FormatDate(
      platform::LocalFromUnix(DateTime::FromDate(2004, 7, 2).WithTime(8, 0, 0).Seconds()),
      "hh:nn:ss");
  EXPECT_EQ(
      Rows("SELECT EntryID, Direction, CreationTime, State FROM Email ORDER BY EntryID"),
      "01|In|7/1/2004 12:00:00|U\n02|In|7/2/2004 " + other + "|S\n04|Out|7/1/2004 12:00:00|U");
  EXPECT_EQ(Rows("SELECT Address FROM ToRecipient"), "ann@example.org");
  EXPECT_EQ(Rows("SELECT Address FROM ccRecipient"), "c@x.test");
  EXPECT_EQ(Rows("SELECT Body, HTMLBody FROM Email WHERE EntryID = '01'"), "plain text|");
  EXPECT_THAT(Rows("SELECT HTMLBody FROM Email WHERE EntryID = '02'"), HasSubstr("marked text"));
  EXPECT_EQ(Rows("SELECT FileName FROM Attachment"), "list.txt");
  EXPECT_THAT(platform::ListFiles(core::State().EmailFileFolder), IsEmpty());
}

// Stores of another profile are not those that were asked for.
TEST_F(AutomatedOutlookTest, GivesNoStoreThatLiesElsewhere) {
  platform::WriteFile(folder_.File("own.pst"), "open in Outlook");
  platform::WriteFile(folder_.File("other.pst"), "open, too");
  std::vector<std::shared_ptr<AutomationObject>> tops;
  for (const char* name : {"own.pst", "other.pst"}) {
    tops.push_back(Made({{"Name", name}, {"Store", Made({{"FilePath", folder_.File(name)}})}}));
  }
  AutomatedOutlook outlook(*Application(tops), {folder_.File("own.pst")});
  std::vector<std::unique_ptr<Store>> stores = outlook.Stores();
  ASSERT_EQ(stores.size(), 1U);
  EXPECT_EQ(stores[0]->Location(), folder_.File("own.pst"));
}

}  // namespace
}  // namespace tarnwick::outlook
