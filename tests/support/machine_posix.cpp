// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/machine.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/faults.h"

namespace tarnwick::testing {

FileSizeLimit::FileSizeLimit(uint64_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  former_ = limit.rlim_cur;
  limit.rlim_cur = bytes;
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("no file size limit");
}

FileSizeLimit::~FileSizeLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = former_;
  setrlimit(RLIMIT_FSIZE, &limit);
}

bool RunInChild(const std::function<void()>& body) {
  pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) {
    try {
      body();
    } catch (...) {
      _exit(2);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string OneSpelling(std::string path) {
  return path;
}

void KillThisProcess() {
  kill(getpid(), SIGKILL);
  std::abort();
}

void KillProcess(int64_t id) {
  kill(static_cast<pid_t>(id), SIGKILL);
}

void MakePipe(const std::string& path) {
  if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
}

void MakeLink(const std::string& target, const std::string& path) {
  if (symlink(target.c_str(), path.c_str()) != 0) throw std::runtime_error("no link");
}

bool LetOwner(const std::string& path, unsigned digit) {
  return chmod(path.c_str(), static_cast<mode_t>(digit) << 6) == 0;
}

bool IsOpenToOthers(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 || (status.st_mode & 077) != 0;
}

bool MayBeLookedInto() {
  return prctl(PR_GET_DUMPABLE) != 0;
}

bool IsAdministrator() {
  return geteuid() == 0;
}

// Where the engine locks a file of any size.
HeldFile::HeldFile(const std::string& path) : handle_(open(path.c_str(), O_RDWR | O_CLOEXEC)) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0x40000000;
  lock.l_len = 512;
  if (fcntl(static_cast<int>(handle_), F_SETLK, &lock) != 0) throw std::runtime_error("no lock");
}

HeldFile::~HeldFile() {
  close(static_cast<int>(handle_));
}

}  // namespace tarnwick::testing
