// Makes system calls of a program fail: a library to be preloaded, told by the environment what to do.
//
//   VELMAR_FAULT_BELOW   the files that are meant: those whose paths begin so, or "fd:1" for what is already open as 1
//   VELMAR_FAULT_CALLS   the calls that count, by their names: "read,open"
//   VELMAR_FAULT_AT      the first one of them that fails, from 1
//   VELMAR_FAULT_TIMES   how many fail; 0 for all from there on
//   VELMAR_FAULT_ERROR   the number of the error, or "short" where a call is to move half of the bytes it is asked to
//   VELMAR_FAULT_REPORT  a file that gets a line for each call that failed
//
// The calls are caught where they enter the kernel, so that those within the C library are caught, too: a filter makes them
// raise SIGSYS, and the handler makes the call itself or not. Where there can be no such filter, the program ends with
// status 77.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

// The one place from which calls are not caught: velmarCall(number, six arguments).
asm(R"(
  .text
  .type velmarCall, @function
velmarCall:
  mov %rdi, %rax
  mov %rsi, %rdi
  mov %rdx, %rsi
  mov %rcx, %rdx
  mov %r8, %r10
  mov %r9, %r8
  mov 8(%rsp), %r9
  syscall
velmarBehindCall:
  ret
)");
extern "C" long velmarCall(long number, long a, long b, long c, long d, long e, long f);
extern "C" const char velmarBehindCall[];

namespace {

enum What { kDescriptor, kPath, kDirectoryAndPath };

struct Call {
  int number;
  const char* name;
  What what;  // what its first argument, or its first two, say of the file
};
const Call kCalls[] = {
    {SYS_read, "read", kDescriptor},
    {SYS_readv, "readv", kDescriptor},
    {SYS_pread64, "pread", kDescriptor},
    {SYS_write, "write", kDescriptor},
    {SYS_pwrite64, "write", kDescriptor},
    {SYS_writev, "writev", kDescriptor},
    {SYS_lseek, "lseek", kDescriptor},
    {SYS_close, "close", kDescriptor},
    {SYS_fstat, "fstat", kDescriptor},
    {SYS_fsync, "fsync", kDescriptor},
    {SYS_ftruncate, "ftruncate", kDescriptor},
    {SYS_fchmod, "fchmod", kDescriptor},
    {SYS_getdents64, "getdents", kDescriptor},
    {SYS_open, "open", kPath},
    {SYS_openat, "open", kDirectoryAndPath},
    {SYS_stat, "stat", kPath},
    {SYS_lstat, "stat", kPath},
    {SYS_newfstatat, "stat", kDirectoryAndPath},
    {SYS_statx, "stat", kDirectoryAndPath},
    {SYS_access, "access", kPath},
    {SYS_faccessat, "access", kDirectoryAndPath},
    {SYS_readlink, "readlink", kPath},
    {SYS_readlinkat, "readlink", kDirectoryAndPath},
    {SYS_rename, "rename", kPath},
    {SYS_renameat, "rename", kDirectoryAndPath},
    {SYS_renameat2, "rename", kDirectoryAndPath},
    {SYS_unlink, "unlink", kPath},
    {SYS_unlinkat, "unlink", kDirectoryAndPath},
    {SYS_chmod, "chmod", kPath},
    {SYS_fchmodat, "chmod", kDirectoryAndPath},
    {SYS_mkdir, "mkdir", kPath},
    {SYS_mkdirat, "mkdir", kDirectoryAndPath},
    {SYS_rmdir, "rmdir", kPath},
};
constexpr std::size_t kNumberOfCalls = sizeof kCalls / sizeof *kCalls;

constexpr int kDescriptors = 1024;
bool meant[kDescriptors];  // the descriptors of the files that are meant
const char* below = nullptr;
const char* calls = nullptr;
const char* error = nullptr;
const char* report = nullptr;
long at = 0;
long times = 1;
long counted = 0;

bool IsMeant(const char* path) { return path != nullptr && std::strncmp(path, below, std::strlen(below)) == 0; }

bool IsMeant(long descriptor) { return descriptor >= 0 && descriptor < kDescriptors && meant[descriptor]; }

bool Counts(const char* name) {
  const std::size_t length = std::strlen(name);
  for (const char* found = calls; (found = std::strstr(found, name)) != nullptr; ++found) {
    const bool begins = found == calls || found[-1] == ',';
    if (begins && (found[length] == ',' || found[length] == 0)) return true;
  }
  return false;
}

void Report(const char* name, const char* path) {
  const long file = velmarCall(SYS_openat, AT_FDCWD, reinterpret_cast<long>(report), O_WRONLY | O_CREAT | O_APPEND, 0644,
                               0, 0);
  for (const char* text : {name, " ", path == nullptr ? "" : path, "\n"}) {
    velmarCall(SYS_write, file, reinterpret_cast<long>(text), static_cast<long>(std::strlen(text)), 0, 0, 0);
  }
  velmarCall(SYS_close, file, 0, 0, 0, 0, 0);
}

bool MovesBytes(int number) { return number == SYS_read || number == SYS_write || number == SYS_pread64 || number == SYS_pwrite64; }

void Handle(int, siginfo_t* info, void* context) {
  greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const int number = info->si_syscall;
  const Call* call = kCalls;
  while (call->number != number) ++call;

  long arguments[] = {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                      registers[REG_R10], registers[REG_R8],  registers[REG_R9]};
  const char* path = call->what == kDescriptor ? nullptr
                                               : reinterpret_cast<const char*>(arguments[call->what == kPath ? 0 : 1]);
  const char* name = call->name;
  bool isMeant = false;
  if (path == nullptr || path[0] == 0) {  // statx and newfstatat with an empty path ask for the descriptor
    if (path != nullptr) name = "fstat";
    isMeant = IsMeant(arguments[0]);
  } else {
    isMeant = IsMeant(path);
  }

  const bool isShort = std::strcmp(error, "short") == 0;
  bool fails = false;
  if (isMeant && Counts(name) && !(isShort && (!MovesBytes(number) || arguments[2] < 2))) {
    ++counted;
    fails = counted >= at && (times == 0 || counted < at + times);
  }
  if (fails) Report(name, path);
  if (fails && isShort) arguments[2] /= 2;
  long result = -std::strtol(error, nullptr, 10);
  if (!fails || isShort || number == SYS_close) {  // what cannot be closed is closed all the same
    const long done = velmarCall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
    if (!fails || isShort) result = done;
  }
  if ((number == SYS_open || number == SYS_openat) && result >= 0 && result < kDescriptors) meant[result] = isMeant;
  if (number == SYS_close && arguments[0] > 2 && arguments[0] < kDescriptors) meant[arguments[0]] = false;
  registers[REG_RAX] = result;
}

sock_filter Load(std::size_t offset) { return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }

bool Install() {
  struct sigaction action = {};
  action.sa_sigaction = Handle;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  if (sigaction(SIGSYS, &action, nullptr) != 0) return false;

  const auto place = reinterpret_cast<std::uintptr_t>(velmarBehindCall);
  static sock_filter filter[7 + 2 * kNumberOfCalls];
  std::size_t size = 0;
  const auto add = [&size](sock_filter instruction) { filter[size++] = instruction; };
  add(Load(offsetof(seccomp_data, instruction_pointer)));
  add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(place), 0, 3));
  add(Load(offsetof(seccomp_data, instruction_pointer) + 4));
  add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(place >> 32), 0, 1));
  add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  add(Load(offsetof(seccomp_data, nr)));
  for (const Call& call : kCalls) {
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
  }
  add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {static_cast<unsigned short>(size), filter};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

__attribute__((constructor)) void Begin() {
  below = std::getenv("VELMAR_FAULT_BELOW");
  if (below == nullptr) return;
  calls = std::getenv("VELMAR_FAULT_CALLS");
  error = std::getenv("VELMAR_FAULT_ERROR");
  report = std::getenv("VELMAR_FAULT_REPORT");
  at = std::atol(std::getenv("VELMAR_FAULT_AT"));
  times = std::atol(std::getenv("VELMAR_FAULT_TIMES"));
  if (std::strncmp(below, "fd:", 3) == 0) meant[std::atoi(below + 3)] = true;
  if (!Install()) _exit(77);
}

}  // namespace
