// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/confinement.h"

#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <memory>

#include "platform/files.h"

namespace tarnwick::platform {

namespace {

constexpr rlim_t kSanitizersFiles = 32;

// Lowers a limit; for good, unless it is to be raised again later.
void SetLimit(int which, rlim_t value, bool forGood = true) {
  rlimit limit{};
  if (getrlimit(static_cast<__rlimit_resource>(which), &limit) != 0) return;
  limit.rlim_cur = std::min(value, limit.rlim_max);
  if (forGood) limit.rlim_max = limit.rlim_cur;
  setrlimit(static_cast<__rlimit_resource>(which), &limit);
}

// Landlock, from the kernel's own description of its interface; the headers of older systems know
// only a part of it. Each version handles more kinds of access.
struct LandlockRules {
  uint64_t files;
  uint64_t network;
  uint64_t scopes;
};

bool DenyFiles() {
  constexpr uint32_t kAskVersion = 1;
  long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, kAskVersion);
  if (version < 1) return false;
  constexpr int kFileRights[] = {13, 14, 15, 15, 16};  // of the versions from 1 on
  long known = std::min<long>(version, std::size(kFileRights));
  LandlockRules rules{(uint64_t{1} << kFileRights[known - 1]) - 1, 0, 0};
  if (version >= 4) rules.network = 3;  // to bind and to connect by TCP
  if (version >= 6) rules.scopes = 3;   // sockets without a file, signals
  size_t size = version >= 6   ? sizeof rules
                : version >= 4 ? offsetof(LandlockRules, scopes)
                               : offsetof(LandlockRules, network);
  // Nothing is allowed beside: the rules hold no place at all.
  long domain = syscall(SYS_landlock_create_ruleset, &rules, size, 0);
  if (domain < 0) return false;
  bool isShut = syscall(SYS_landlock_restrict_self, domain, 0) == 0;
  close(static_cast<int>(domain));
  return isShut;
}

// Everything else fails with EPERM: a library that tries something needless goes on without it.
bool DenySystemCalls() {
  using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;
  Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &seccomp_release);
  if (!filter) return false;
  bool isWhole = true;
  auto allow = [&](int call, std::initializer_list<scmp_arg_cmp> conditions = {}) {
    isWhole = isWhole && seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, call,
                                                static_cast<unsigned>(conditions.size()),
                                                conditions.begin()) == 0;
  };
  for (int call :
       {SCMP_SYS(read), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(close), SCMP_SYS(munmap),
        SCMP_SYS(brk), SCMP_SYS(madvise), SCMP_SYS(futex), SCMP_SYS(clock_gettime),
        SCMP_SYS(rt_sigreturn), SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group)}) {
    allow(call);
  }
  allow(SCMP_SYS(mmap), {SCMP_A2_64(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0),
                         SCMP_A3_64(SCMP_CMP_MASKED_EQ, MAP_ANONYMOUS, MAP_ANONYMOUS)});
  allow(SCMP_SYS(mprotect), {SCMP_A2_64(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0)});
  allow(SCMP_SYS(mremap));
  // LimitProcessorTime, of this process alone.
  allow(SCMP_SYS(prlimit64),
        {SCMP_A0_64(SCMP_CMP_EQ, 0, 0), SCMP_A1_64(SCMP_CMP_EQ, uint64_t{RLIMIT_CPU}, 0)});
  return isWhole && seccomp_load(filter.get()) == 0;
}

}  // namespace

Walls ConfineThisProcess(uint64_t maxMemory) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  Walls walls;
  walls.files = DenyFiles();
  close_range(kHandedFile + 1, ~0U, 0);
  SetLimit(RLIMIT_CORE, 0);
  SetLimit(RLIMIT_FSIZE, 0);
  SetLimit(RLIMIT_NPROC, 0);
  // The sanitizers look at memory through pipes.
  SetLimit(RLIMIT_NOFILE, maxMemory > 0 ? kHandedFile + 1 : kSanitizersFiles);
  SetLimit(RLIMIT_MEMLOCK, 0);
  SetLimit(RLIMIT_MSGQUEUE, 0);
  SetLimit(RLIMIT_SIGPENDING, 0);
  if (maxMemory > 0) {
    SetLimit(RLIMIT_AS, maxMemory);
    walls.systemCalls = DenySystemCalls();
  }
  return walls;
}

void LimitProcessorTime(int64_t seconds) {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  SetLimit(RLIMIT_CPU, static_cast<rlim_t>(used.tv_sec + 1 + seconds), false);
}

}  // namespace tarnwick::platform
