// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The drivers of fuzz/ without a fuzzer: over what they begin with, over variations of it (the same
// ones at every run), and over the inputs that once broke something (fuzz/found, a folder a driver,
// each file named after what was wrong).
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "platform/environment.h"
#include "platform/files.h"
#include "seeds.h"

// clang-format off
#define TARNWICK_DRIVERS(X) \
  X(attachments) X(date) X(dbx) X(emlx) X(html) X(jet) X(link) X(mbox) X(message) X(msg) \
  X(nodes) X(oe4) X(outlook) X(packed) X(pst) X(registry) X(store) X(text)
// clang-format on
#define TARNWICK_DECLARE(name) extern "C" int name##_fuzz(const uint8_t* data, size_t size);
TARNWICK_DRIVERS(TARNWICK_DECLARE)

namespace tarnwick::fuzz {
namespace {

using Driver = int (*)(const uint8_t* data, size_t size);

const std::map<std::string, Driver> kDrivers = {
#define TARNWICK_NAME(name) {#name, name##_fuzz},
    TARNWICK_DRIVERS(TARNWICK_NAME)};

std::string Varied(std::string input, std::mt19937& random) {
  for (int i = 0; i < 4 && !input.empty(); ++i) {
    size_t place = random() % input.size();
    switch (random() % 4) {
      case 0:
        input[place] = static_cast<char>(random());
        break;
      case 1:
        input.erase(place, 1 + random() % 8);
        break;
      case 2:
        input.insert(place, input, random() % input.size(), 1 + random() % 40);
        break;
      default:
        input[place] =
            static_cast<char>(static_cast<unsigned char>(input[place]) ^ 1U << random() % 8);
    }
  }
  return input;
}

class Replay : public ::testing::TestWithParam<std::pair<const std::string, Driver>> {};

TEST_P(Replay, Holds) {
  const auto& [name, driver] = GetParam();
  platform::SetEnvironmentText("TARNWICK_READER", TARNWICK_READER);
  auto run = [driver = driver](const std::string& input) {
    driver(reinterpret_cast<const uint8_t*>(input.data()), input.size());
  };
  std::string found = std::string(TARNWICK_SOURCE) + "/fuzz/found/" + name + "/";
  for (const std::string& file : platform::ListFiles(found)) {
    SCOPED_TRACE(file);
    run(platform::ReadFile(found + file));
  }
  std::vector<std::string> seeds = Seeds().at(name);
  ASSERT_FALSE(seeds.empty());
  std::mt19937 random(20040105);
  for (const std::string& seed : seeds) run(seed);
  for (int i = 0; i < (name == "pst" ? 10 : 200); ++i)
    run(Varied(seeds[random() % seeds.size()], random));
}

INSTANTIATE_TEST_SUITE_P(Drivers, Replay, ::testing::ValuesIn(kDrivers),
                         [](const auto& row) { return row.param.first; });

}  // namespace
}  // namespace tarnwick::fuzz
