// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The handbook as it is built: nothing in it may lead nowhere.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <vector>

#include "packaging/read_file.h"

namespace tarnwick::packaging {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

const fs::path kHelp = TARNWICK_HELP;

struct Page {
  std::set<std::string> ids;
  std::vector<std::string> repeatedIds;
  std::vector<std::string> targets;   // of links, images and style sheets
  std::vector<std::string> unclosed;  // elements that end out of turn or never
};

Page ReadPage(const std::string& text) {
  static const std::regex tag("<(/?)([a-z][a-z0-9]*)([^>]*)>");
  static const std::regex attribute("(href|src|id)=\"([^\"]*)\"");
  static const std::set<std::string> empty = {"meta", "link", "img", "br"};
  Page page;
  std::vector<std::string> open;
  for (std::sregex_iterator it(text.begin(), text.end(), tag), end; it != end; ++it) {
    std::string name = (*it)[2];
    std::string attributes = (*it)[3];
    if ((*it)[1].length() > 0) {
      if (open.empty() || open.back() != name) page.unclosed.push_back(name);
      if (!open.empty()) open.pop_back();
      continue;
    }
    if (empty.count(name) == 0) open.push_back(name);
    for (std::sregex_iterator a(attributes.begin(), attributes.end(), attribute); a != end; ++a) {
      if ((*a)[1] != "id") {
        page.targets.push_back((*a)[2]);
      } else if (!page.ids.insert((*a)[2]).second) {
        page.repeatedIds.push_back((*a)[2]);
      }
    }
  }
  page.unclosed.insert(page.unclosed.end(), open.begin(), open.end());
  return page;
}

std::map<std::string, Page> ReadPages() {
  std::map<std::string, Page> pages;
  for (const auto& entry : fs::directory_iterator(kHelp)) {
    if (entry.path().extension() != ".html") continue;
    pages[entry.path().filename()] = ReadPage(ReadFile(entry.path()));
  }
  return pages;
}

// Empty when the target ("page.html#chapter", "#chapter", "picture.png") is there.
std::string Fault(const std::map<std::string, Page>& pages, const std::string& from,
                  const std::string& target) {
  size_t hash = target.find('#');
  std::string file = target.substr(0, hash);
  if (file.empty()) file = from;
  if (!fs::exists(kHelp / file)) return from + " leads to " + file + ", which is not there";
  if (hash == std::string::npos) return {};
  auto page = pages.find(file);
  if (page != pages.end() && page->second.ids.count(target.substr(hash + 1)) != 0) return {};
  return from + " leads to " + target + ", which has no such chapter";
}

TEST(Help, EveryLinkAndImageIsThere) {
  std::map<std::string, Page> pages = ReadPages();
  ASSERT_GT(pages.size(), 5U);
  for (const auto& [name, page] : pages) {
    for (const std::string& target : page.targets) EXPECT_EQ(Fault(pages, name, target), "");
    EXPECT_THAT(page.repeatedIds, ::testing::IsEmpty()) << name;
    EXPECT_THAT(page.unclosed, ::testing::IsEmpty()) << name;
  }
}

TEST(Help, EveryPageIsInTheContents) {
  std::string contents = ReadFile(kHelp / "twHelp.hhc");
  std::string list = ReadFile(kHelp / "index.html");
  std::string project = ReadFile(kHelp / "twHelp.hhp");
  for (const auto& entry : fs::directory_iterator(fs::path(TARNWICK_SOURCE) / "help")) {
    if (entry.path().extension() != ".html") continue;
    std::string page = entry.path().filename();
    EXPECT_THAT(contents, HasSubstr("name=\"Local\" value=\"" + page + "\""));
    EXPECT_THAT(list, HasSubstr("<a href=\"" + page + "\">"));
    EXPECT_THAT(project, HasSubstr("\n" + page + "\n"));
  }
}

TEST(Help, ContentsAndIndexLeadToChapters) {
  std::map<std::string, Page> pages = ReadPages();
  static const std::regex local("name=\"Local\" value=\"([^\"]*)\"");
  for (const char* name : {"twHelp.hhc", "twHelp.hhk"}) {
    std::string text = ReadFile(kHelp / name);
    int entries = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), local), end; it != end; ++it) {
      EXPECT_EQ(Fault(pages, name, (*it)[1]), "");
      ++entries;
    }
    EXPECT_GT(entries, 20) << name;
  }
}

TEST(Help, TheCompiledFileHoldsEveryPage) {
  if (!TARNWICK_HAS_CHM) GTEST_SKIP() << "chmcmd is not installed";
  std::string chm = ReadFile(kHelp / "twHelp.chm");
  EXPECT_EQ(chm.substr(0, 4), "ITSF");
  // Its list of files is not compressed.
  for (const auto& [name, page] : ReadPages())
    EXPECT_THAT(chm.find("/" + name), ::testing::Lt(chm.size())) << name;
}

}  // namespace
}  // namespace tarnwick::packaging
