// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/run_program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/files.h"
#include "support/temp_folder.h"

namespace tarnwick::testing {

ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::string& input) {
  TempFolder folder;
  std::string in = folder.File("in");
  std::string out = folder.File("out");
  std::string err = folder.File("err");
  platform::WriteFile(in, input);

  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);

  pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    dup2(open(in.c_str(), O_RDONLY), 0);
    dup2(open(out.c_str(), O_WRONLY | O_CREAT, 0600), 1);
    dup2(open(err.c_str(), O_WRONLY | O_CREAT, 0600), 2);
    execv(words[0], words.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ProgramRun run;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.output = platform::ReadFile(out);
  run.errors = platform::ReadFile(err);
  return run;
}

}  // namespace tarnwick::testing
