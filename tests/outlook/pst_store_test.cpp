// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Whole loads over real stores, sound and damaged.
#include <gmock/gmock.h>

#include <random>

#include "core/run_state.h"
#include "outlook/import.h"
#include "outlook/pst_provider.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "support/program_fixture.h"
#include "support/real_data.h"

namespace tarnwick::outlook {
namespace {

using ::testing::HasSubstr;

class PstStoreTest : public testing::ProgramFixture {
 protected:
  PstStoreTest() {
    core::BeginLoadState();
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  }
  ~PstStoreTest() override { core::EndLoadState(); }

  core::LoadCounts Load(const std::string& path) {
    ReaderLimits limits;
    limits.openMilliseconds = 20'000;
    limits.requestMilliseconds = 10'000;
    limits.wastedMilliseconds = 20'000;
    PstNamespace outlook({path}, TARNWICK_BIN "/tarnwick-pst-reader", limits);
    core::State().Counts = {};
    EXPECT_TRUE(olImportFrom(outlook, true));
    const core::LoadCounts& c = core::State().Counts;
    EXPECT_EQ(c.found,
              c.stored + c.alreadyStored + c.refused + c.ignored + c.unreadable + c.notReached)
        << path;
    return c;
  }
};

struct RealStore {
  const char* file;
  int64_t stored;
  int64_t unreadable;
};
constexpr RealStore kRealStores[] = {{"sample1.pst", 1, 0},
                                     {"testPST.pst", 7, 0},
                                     {"testPST_variousBodyTypes.pst", 4, 0},
                                     {"test_ansi.pst", 0, 1},      // guarded by a password
                                     {"test_unicode.pst", 0, 2}};  // likewise

TEST_F(PstStoreTest, TakesEveryMailOfRealStoresOnce) {
  for (const RealStore& real : kRealStores) {
    std::string path = testing::RealData("pst/" + std::string(real.file));
    if (path.empty()) GTEST_SKIP();
    EXPECT_EQ(Load(path).stored, real.stored) << real.file;
    EXPECT_EQ(core::State().Counts.unreadable, real.unreadable) << real.file;
    EXPECT_EQ(Load(path).alreadyStored, real.stored) << real.file;
  }
  EXPECT_EQ(Query("SELECT FromToName FROM Email WHERE Subject = 'Feature Generators'").AsText(),
            "Kenig Ma");
  EXPECT_EQ(Query("SELECT Count(*) FROM Email WHERE Folder = 'D\xC3\xA9"
                  "but du fichier de donn\xC3\xA9"
                  "es Outlook'")
                .AsInt(),
            7);
}

// The store of the example with its bytes changed, 40 times over; no outcome is wrong but one that
// ends, hangs or miscounts.
TEST_F(PstStoreTest, SurvivesDamage) {
  for (const char* file : {"sample1.pst", "testPST_variousBodyTypes.pst", "test_ansi.pst"}) {
    std::string path = testing::RealData("pst/" + std::string(file));
    if (path.empty()) GTEST_SKIP();
    std::string sound = platform::ReadFile(path);
    std::mt19937 random(20020305);
    for (int round = 0; round < 14; ++round) {
      std::string bytes = sound;
      if (round % 3 == 0) {
        bytes.resize(random() % bytes.size());
      } else {
        // Where a checksum does not catch it: data far more often than the header.
        for (int i = 0; i < (round % 3 == 1 ? 40 : 4000); ++i) {
          bytes[600 + random() % (bytes.size() - 600)] ^= static_cast<char>(1u << random() % 8);
        }
      }
      int64_t began = platform::TickMilliseconds();
      Load(WriteTemp("damaged.pst", bytes));
      EXPECT_LT(platform::TickMilliseconds() - began, 120'000) << file << " round " << round;
    }
  }
}

TEST_F(PstStoreTest, SkipsWhatIsNoStore) {
  EXPECT_EQ(Load(WriteTemp("foreign.pst", "no store at all")).found, 0);
  EXPECT_THAT(Log(), HasSubstr("Outlook store skipped"));
}

}  // namespace
}  // namespace tarnwick::outlook
