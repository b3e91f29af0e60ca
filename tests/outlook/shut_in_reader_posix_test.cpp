// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a store that takes over tarnwick-reader could do from there: the test makes the running
// reader perform system calls of its choice, as code injected into it would.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "intake/reader_link.h"
#include "outlook/pst_link.h"
#include "samples/pst_builder.h"
#include "support/testing.h"

namespace tarnwick::outlook {
namespace {

#if defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)

// A process that waits in a system call, made to perform others in its place.
class TakenOver {
 public:
  explicit TakenOver(int64_t id) : id_(static_cast<pid_t>(id)) {
    int status = 0;
    isOurs_ = ptrace(PTRACE_ATTACH, id_, nullptr, nullptr) == 0 &&
              waitpid(id_, &status, 0) == id_ && WIFSTOPPED(status) &&
              ptrace(PTRACE_GETREGS, id_, nullptr, &before_) == 0;
  }
  ~TakenOver() {
    if (!isOurs_) return;
    ptrace(PTRACE_SETREGS, id_, nullptr, &before_);
    ptrace(PTRACE_DETACH, id_, nullptr, nullptr);
  }
  bool IsOurs() const { return isOurs_; }

  // The place of bytes put into its stack, far below what it uses.
  uint64_t Put(std::string bytes) {
    bytes.resize((bytes.size() + 8) / 8 * 8);
    place_ -= bytes.size();
    for (size_t i = 0; i < bytes.size(); i += 8) {
      uint64_t word = 0;
      std::memcpy(&word, bytes.data() + i, 8);
      ptrace(PTRACE_POKEDATA, id_, before_.rsp - kBelow + kRoom + place_ + i, word);
    }
    return before_.rsp - kBelow + kRoom + place_;
  }

  // What the call gives: a result, or an errno below 0.
  int64_t Call(int64_t number, std::array<uint64_t, 6> with = {}) {
    user_regs_struct registers = before_;
    registers.rip -= 2;  // the instruction that brought it into the call it waits in
    registers.rax = static_cast<uint64_t>(number);
    registers.orig_rax = ~uint64_t{0};
    registers.rdi = with[0];
    registers.rsi = with[1];
    registers.rdx = with[2];
    registers.r10 = with[3];
    registers.r8 = with[4];
    registers.r9 = with[5];
    ptrace(PTRACE_SETREGS, id_, nullptr, &registers);
    ptrace(PTRACE_SINGLESTEP, id_, nullptr, nullptr);
    int status = 0;
    waitpid(id_, &status, 0);
    if (!WIFSTOPPED(status)) {
      isOurs_ = false;
      return INT64_MIN;
    }
    ptrace(PTRACE_GETREGS, id_, nullptr, &registers);
    return static_cast<int64_t>(registers.rax);
  }

 private:
  static constexpr uint64_t kBelow = 16 * 1024;
  static constexpr uint64_t kRoom = 8 * 1024;
  pid_t id_;
  bool isOurs_ = false;
  user_regs_struct before_{};
  uint64_t place_ = 0;
};

class ShutInReader : public ::testing::Test {
 protected:
  // What injected code tries; false where this system lets no process be traced.
  bool TryEverything(int64_t process);

  std::string MadeStore() {
    samples::PstBuilder store;
    platform::WriteFile(folder_.File("a.pst"), store.Build());
    return folder_.File("a.pst");
  }

  testing::TempFolder folder_;
};

bool ShutInReader::TryEverything(int64_t process) {
  platform::WriteFile(folder_.File("victim"), "a letter");
  sockaddr_in port{};
  port.sin_family = AF_INET;
  port.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  port.sin_port = htons(9);
  TakenOver reader(process);
  if (!reader.IsOurs()) return false;
  uint64_t here = static_cast<uint64_t>(AT_FDCWD);
  uint64_t passwords = reader.Put("/etc/passwd");
  uint64_t victim = reader.Put(folder_.File("victim"));
  uint64_t made = reader.Put(folder_.File("made"));
  uint64_t shell = reader.Put("/bin/sh");
  uint64_t address = reader.Put(std::string(reinterpret_cast<char*>(&port), sizeof port));
  uint64_t limit = reader.Put(std::string(sizeof(rlimit), '\xFF'));
  uint64_t parent = static_cast<uint64_t>(getpid());
  struct Row {
    const char* name;
    int64_t call;
    std::array<uint64_t, 6> with;
  };
  const Row kRows[] = {
      {"read a file", SYS_openat, {here, passwords, O_RDONLY}},
      {"read a file the old way", SYS_open, {passwords, O_RDONLY}},
      {"look at a file", SYS_newfstatat, {here, passwords, limit}},
      {"make a file", SYS_openat, {here, made, O_WRONLY | O_CREAT, 0600}},
      {"delete a file", SYS_unlink, {victim}},
      {"rename a file", SYS_rename, {victim, made}},
      {"cut a file", SYS_truncate, {victim, 0}},
      {"write into the store", SYS_pwrite64, {platform::kHandedFile, passwords, 8}},
      {"make a socket", SYS_socket, {AF_INET, SOCK_STREAM}},
      {"make a local socket", SYS_socket, {AF_UNIX, SOCK_STREAM}},
      {"connect the channel", SYS_connect, {0, address, sizeof port}},
      {"send a descriptor", SYS_sendmsg, {0, address, 0}},
      {"start a process", SYS_fork, {}},
      {"start a thread", SYS_clone, {SIGCHLD}},
      {"run a shell", SYS_execve, {shell, 0, 0}},
      {"run the store", SYS_execveat, {platform::kHandedFile, shell + 7, 0, 0, AT_EMPTY_PATH}},
      {"kill the program", SYS_kill, {parent, SIGTERM}},
      {"trace the program", SYS_ptrace, {PTRACE_ATTACH, parent}},
      {"read the program", SYS_process_vm_readv, {parent, address, 1, address, 1}},
      {"change the program's limits", SYS_prlimit64, {parent, RLIMIT_CPU, limit}},
      {"raise a limit", SYS_prlimit64, {0, RLIMIT_FSIZE, limit}},
      {"raise a limit the old way", SYS_setrlimit, {RLIMIT_NOFILE, limit}},
      {"run written memory", SYS_mprotect, {address & ~uint64_t{4095}, 4096, PROT_EXEC}},
      {"get memory that runs",
       SYS_mmap,
       {0, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, ~uint64_t{0}}},
      {"map the store", SYS_mmap, {0, 4096, PROT_READ, MAP_PRIVATE, platform::kHandedFile}},
      {"become another user", SYS_setuid, {0}},
      {"open a ring of calls", SYS_io_uring_setup, {8, address}},
      {"wait for the terminal", SYS_ioctl, {1, 0x5413, address}}};
  for (const Row& row : kRows) EXPECT_EQ(reader.Call(row.call, row.with), -EPERM) << row.name;
  EXPECT_EQ(reader.Call(SYS_close, {1000}), -EBADF) << "a call that is let through";
  EXPECT_EQ(platform::ReadFile(folder_.File("victim")), "a letter");
  return true;
}

TEST_F(ShutInReader, CanDoNothingButAnswerOfAnOutlookStore) {
  if (prctl(PR_GET_SECCOMP) < 0) GTEST_SKIP() << "this system filters no calls";
  PstLink link(MadeStore(), TARNWICK_READER);
  link.Store();
  if (!TryEverything(link.ProcessId())) GTEST_SKIP() << "this system lets no process be traced";
  int64_t reader = link.ProcessId();
  EXPECT_NO_THROW(link.Store()) << "it goes on behind all that";
  EXPECT_EQ(link.ProcessId(), reader);
}

TEST_F(ShutInReader, CanDoNothingButAnswerOfLetters) {
  if (prctl(PR_GET_SECCOMP) < 0) GTEST_SKIP() << "this system filters no calls";
  intake::SetReader(TARNWICK_READER);
  const std::string nothingBeside(4, '\0');
  auto link = intake::ReaderLink::Begin({}, intake::Conversation::kLetterFiles, intake::kComplete,
                                        nothingBeside);
  intake::SetReader("");
  ASSERT_TRUE(link);
  auto ask = [&] {
    link->Ask("Subject: a letter\n\n<p>text", std::string(13, '\0'));
    return link->Answer().has_value();
  };
  ASSERT_TRUE(ask());
  if (!TryEverything(link->ProcessId())) GTEST_SKIP() << "this system lets no process be traced";
  EXPECT_TRUE(ask()) << "it goes on behind all that";
}

#endif

// The second wall: on a system that filters no calls these hold all the same.
TEST(ConfinedProcess, ItsLimitsAreLoweredForGood) {
  testing::TempFolder folder;
  samples::PstBuilder store;
  platform::WriteFile(folder.File("a.pst"), store.Build());
  PstLink link(folder.File("a.pst"), TARNWICK_READER);
  link.Store();
  std::vector<std::pair<__rlimit_resource, rlim_t>> limits = {
      {RLIMIT_FSIZE, 0}, {RLIMIT_CORE, 0}, {RLIMIT_NPROC, 0}};
#if !defined(__SANITIZE_ADDRESS__)
  limits.emplace_back(RLIMIT_NOFILE, platform::kHandedFile + 1);
#endif
  for (auto [limit, most] : limits) {
    rlimit allowed{1, 1};
    ASSERT_EQ(prlimit(static_cast<pid_t>(link.ProcessId()), limit, nullptr, &allowed), 0);
    EXPECT_EQ(allowed.rlim_max, most) << limit;
  }
}

}  // namespace
}  // namespace tarnwick::outlook
