// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/registry_link.h"

#include "intake/reader_link.h"
#include "platform/environment.h"
#include "samples/hive_builder.h"
#include "support/own_reader.h"
#include "support/program_fixture.h"

namespace tarnwick::intake {
namespace {

[[maybe_unused]] const auto* const kOwnReader = ::testing::AddGlobalTestEnvironment(
    new testing::OwnReader([](const std::string& fault, const LetterOpening& told, const auto&) {
      return std::make_unique<testing::WrongThroughout>(MakeRegistryService(told.store), fault);
    }));

class RegistryLinkTest : public testing::ProgramFixture {
 protected:
  ~RegistryLinkTest() override { SetReader(""); }

  // All that a profile's registry says, or why it can't be read.
  static std::string Walk(platform::Registry& registry, const std::string& path) {
    std::string told = path + "\n";
    for (const char* name : {"Username", "Store Root", "Number", "Raw", ""}) {
      bool keyExists = false;
      auto value = registry.Value(path, name, &keyExists);
      told += keyExists ? "+" : "-";
      if (!value) continue;
      told += std::to_string(static_cast<int>(value->type)) + value->text + "|" +
              std::to_string(value->number) + "|" + registry.MapPath(value->text) + "\n";
    }
    for (const std::string& key : registry.SubKeys(path).value_or(std::vector<std::string>())) {
      told += Walk(registry, path + (path.empty() ? "" : "\\") + key);
    }
    return told;
  }
  std::string Told(const std::string& name, const std::string& bytes, const std::string& reader) {
    SetReader(reader);
    platform::RemoveFile(folder_.File("user/NTUSER.DAT"));
    platform::MakeFolder(folder_.File("user"));
    std::string file = WriteTemp("user/" + name, bytes);
    std::string told;
    try {
      told = Walk(*platform::OpenProfile(folder_.File("user/")), "");
    } catch (const Error& error) {
      told = error.Description();
    }
    platform::RemoveFile(file);
    return told;
  }
};

TEST_F(RegistryLinkTest, TheReaderSaysOfARegistryFileWhatTheProgramFindsInIt) {
  samples::HiveBuilder builder;
  builder.AddText("Identities\\{A}", "Username", "Ann");
  builder.AddText("Identities\\{A}\\Software", "Store Root", "%UserProfile%\\Mail\\", true);
  builder.AddNumber("Identities\\Анна", "Number", 7);
  builder.AddRaw("Identities", "Raw", 3, std::string("\xFF\0\xFE", 3));
  const std::string hive = builder.Build();
  std::string broken = hive;
  for (size_t at = 4200; at < broken.size(); at += 97) broken[at] = '\x7F';
  const std::string wine =
      "[Identities\\\\{A}]\n\"Username\"=\"\xFF Ann\"\n\"Raw\"=hex:01,ff\n[b\xE9] 1\n"
      "\"Store Root\"=str(2):\"%USERPROFILE%\\\\Mail\"\n[Environment]\n\"X\"=\"C:\\\\y\"\n";
  const std::pair<const char*, std::string> rows[] = {
      {"NTUSER.DAT", hive},      {"NTUSER.DAT", broken}, {"NTUSER.DAT", hive.substr(0, 4300)},
      {"NTUSER.DAT", "no hive"}, {"user.reg", wine},     {"user.reg", ""}};
  for (const auto& [name, bytes] : rows) {
    int64_t before = RecordsRead();
    std::string here = Told(name, bytes, "");
    EXPECT_EQ(RecordsRead(), before);
    EXPECT_EQ(Told(name, bytes, TARNWICK_READER), here) << name << bytes.size();
    EXPECT_GT(RecordsRead(), before + 1);
  }
  for (const char* fault : {"dies", "says nonsense", "says half"}) {
    platform::SetEnvironmentText(testing::kReaderFault, fault);
    std::string told = Told("NTUSER.DAT", hive, platform::ProgramPath());
    platform::SetEnvironmentText(testing::kReaderFault, std::nullopt);
    EXPECT_EQ(told, kReaderLost) << fault;
  }
}

}  // namespace
}  // namespace tarnwick::intake
