// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// tarnwick-cli: the program's modules for scripts, with the console in place of windows.
#include <functional>
#include <iostream>
#include <map>
#include <utility>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/console_user_interface.h"
#include "core/guard.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "core/version.h"
#include "intake/reader_link.h"
#include "maintenance/unfinished_restore.h"
#include "options/options.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/terminal.h"
#include "repository/app_folder.h"
#include "repository/repository.h"

namespace {

using tarnwick::app::UsageError;
using Command = std::function<int(const std::vector<std::string>&)>;

constexpr const char* kUsage =
    R"(usage: tarnwick-cli [--home DIR] [--profile DIR] [--yes] [--log-subjects yes|no]
                    [--password-file FILE]... COMMAND
       tarnwick-cli --help | --version
  load   [--accept all|known|ask] [--full] [--reading designed|complete]
         [--folders drafts,deleted,outbox] [--rescue]
  find   PATH [--json] [--load [--accept all|known|ask] [--rescue]]
  take   FILE...
  list   [--search WORDS]
         [--from D] [--to D] [--from-to T] [--subject T] [--text T] [--file T]
         [--direction in|out|both] [--hot] [--attached]
         [--sort date|subject|from-to|direction] [--order asc|desc] [--json] [--limit N]
         [--conversations]
  show   ID [--raw|--text]
  delete ID
  mark   ID
  attachments ID [--save DIR]
  contacts [--name T] [--json]
  save   --format eml|msg|mbox|maildir DIR [--folders] [the filters of list]
  backup FILE
  restore FILE
  export FILE [the filters of list]
  merge  FILE [--duplicates keep|skip|ask] [--accept all|known|ask]
  check  [--export FILE]
  protect [--new-password-file FILE]
  unprotect
Dates are yyyy-mm-dd. Exit status: 0 done, 1 failed, 2 wrong usage.
)";

constexpr const char* kWasNotClosed =
    "Tarnwick did not come to its end the last time. \"tarnwick-cli check\" tells whether every "
    "message is whole.";

const std::map<std::string, Command>& Commands() {
  static const std::map<std::string, Command> commands = {
      {"load", tarnwick::app::RunLoad},           {"find", tarnwick::app::RunFind},
      {"take", tarnwick::app::RunTake},           {"list", tarnwick::app::RunList},
      {"show", tarnwick::app::RunShow},           {"delete", tarnwick::app::RunDelete},
      {"mark", tarnwick::app::RunMark},           {"contacts", tarnwick::app::RunContacts},
      {"save", tarnwick::app::RunSave},           {"attachments", tarnwick::app::RunAttachments},
      {"backup", tarnwick::app::RunBackup},       {"restore", tarnwick::app::RunRestore},
      {"export", tarnwick::app::RunExport},       {"merge", tarnwick::app::RunMerge},
      {"check", tarnwick::app::RunCheck},         {"protect", tarnwick::app::RunProtect},
      {"unprotect", tarnwick::app::RunUnprotect},
  };
  return commands;
}

// What stands before the command; the rest of words is the command and its own.
struct Invocation {
  std::string home;
  std::string profile;
  std::vector<std::string> passwordFiles;
  bool alwaysYes = false;
  std::string logSubjects;  // "yes", "no", or as it was set before
  bool help = false;
  bool version = false;
  std::string command;
  std::vector<std::string> words;
};

Invocation ReadInvocation(std::vector<std::string> words) {
  Invocation invocation;
  size_t i = 0;
  auto value = [&](const std::string& option) {
    if (++i >= words.size()) throw UsageError("option " + option + " wants a value");
    return words[i];
  };
  for (; i < words.size() && !words[i].empty() && words[i][0] == '-'; ++i) {
    if (words[i] == "--home") {
      invocation.home = value("--home");
    } else if (words[i] == "--profile") {
      invocation.profile = value("--profile");
    } else if (words[i] == "--log-subjects") {
      invocation.logSubjects = value("--log-subjects");
      if (invocation.logSubjects != "yes" && invocation.logSubjects != "no") {
        throw UsageError("option --log-subjects wants yes or no");
      }
    } else if (words[i] == "--password-file") {
      invocation.passwordFiles.push_back(value("--password-file"));
    } else if (words[i] == "--yes") {
      invocation.alwaysYes = true;
    } else if (words[i] == "--help" || words[i] == "-h") {
      invocation.help = true;
    } else if (words[i] == "--version") {
      invocation.version = true;
    } else {
      throw UsageError("unknown option " + words[i]);
    }
  }
  if (i < words.size()) {
    invocation.command = words[i];
    invocation.words.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
  }
  return invocation;
}

// Opens the repository as every start does. False when it can't; the reason has been shown.
bool Start(const std::string& programFolder) {
  return tarnwick::core::Guarded("Main", false, [&] {
    std::string appFolder = tarnwick::repository::ChooseAppFolder(programFolder);
    tarnwick::repository::SeedAppFolder(appFolder, programFolder);
    tarnwick::core::PrepareRun(appFolder, tarnwick::repository::IsInUse(appFolder));
    if (!tarnwick::repository::OpenRepository(false)) return false;
    tarnwick::repository::ReadOptions();
    tarnwick::maintenance::ReportUnfinishedRestore();
    return true;
  });
}

int Run(std::vector<std::string> words) {
  Invocation invocation = ReadInvocation(std::move(words));
  if (invocation.help) {
    std::cout << kUsage;
    return tarnwick::app::kDone;
  }
  if (invocation.version) {
    std::cout << "tarnwick-cli " << tarnwick::core::Version() << "\n";
    return tarnwick::app::kDone;
  }
  auto command = Commands().find(invocation.command);
  if (command == Commands().end()) {
    throw UsageError(invocation.command.empty() ? "which command?"
                                                : "unknown command " + invocation.command);
  }
  using tarnwick::platform::SetEnvironmentText;
  if (!invocation.home.empty()) SetEnvironmentText("TARNWICK_HOME", invocation.home);
  if (!invocation.profile.empty()) SetEnvironmentText("TARNWICK_PROFILE", invocation.profile);

  tarnwick::app::ConsoleUserInterface console;
  console.SetAlwaysYes(invocation.alwaysYes);
  for (const std::string& file : invocation.passwordFiles) {
    console.AddPassword(tarnwick::platform::ReadSecretLine(file));
  }
  tarnwick::core::State().Ui = &console;
  tarnwick::intake::SetReader(tarnwick::intake::ReaderProgram());
  std::string program = tarnwick::platform::ProgramPath();
  if (!Start(tarnwick::platform::FolderOf(program))) return tarnwick::app::kFailed;
  if (tarnwick::repository::Repository().WasNotClosed && invocation.command != "check") {
    std::cerr << kWasNotClosed << std::endl;
  }
  if (!invocation.logSubjects.empty()) {
    tarnwick::options::SetLogMailTexts(invocation.logSubjects == "yes");
  }
  int status = tarnwick::app::kFailed;
  try {
    status = command->second(invocation.words);
  } catch (const tarnwick::Error&) {
    tarnwick::core::ReportCurrentException(invocation.command, tarnwick::core::Report::kShow);
  } catch (const UsageError&) {
    tarnwick::repository::DisconnectRepository();
    throw;
  }
  tarnwick::repository::LockRepository();
  tarnwick::core::State().Ui = nullptr;
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  tarnwick::platform::KeepFreedMemory();
  try {
    return Run(tarnwick::platform::PrepareConsole(argc, argv));
  } catch (const UsageError& error) {
    std::cerr << "tarnwick-cli: " << error.what() << "\n" << kUsage;
    return tarnwick::app::kWrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "tarnwick-cli: " << error.what() << std::endl;
    return tarnwick::app::kFailed;
  }
}
