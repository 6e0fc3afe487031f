#include "files/FaultInjection.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tavrin::test {

namespace {

struct State {
    std::atomic<bool> isOn = false; ///< set last: other threads look there first
    Fault fault{};
    int at = 0;
    bool stays = false;
    std::atomic<int> calls = 0;
};

State state;

/// True when the present call is to fail, with errno set.
bool fails() {
    if (!state.isOn)
        return false;
    const int call = state.calls++;
    if (call != state.at && !(state.stays && call > state.at))
        return false;
    switch (state.fault) {
    case Fault::noSpace:
        errno = ENOSPC;
        return true;
    case Fault::ioError:
        errno = EIO;
        return true;
    case Fault::interrupted:
        errno = EINTR;
        return call == state.at;
    case Fault::killedBefore:
        ::raise(SIGKILL);
        return true;
    case Fault::shortWrite:
    case Fault::killedAfter:
        return false;
    }
    return false;
}

/// Passes a result on; the process may end with it.
template <class Result>
Result after(Result result) {
    if (state.isOn && state.fault == Fault::killedAfter && state.calls == state.at + 1)
        ::raise(SIGKILL);
    return result;
}

} // namespace

FaultInjection::FaultInjection(Fault fault, int at, bool stays) {
    state.fault = fault;
    state.at = at;
    state.stays = stays;
    state.calls = 0;
    state.isOn = true;
}

FaultInjection::~FaultInjection() {
    state.isOn = false;
}

int FaultInjection::calls() const {
    return state.calls;
}

bool survives(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace tavrin::test

// The linker sends the calls of the code under test here.
using tavrin::test::after;
using tavrin::test::fails;
using tavrin::test::Fault;
using tavrin::test::state;

extern "C" {
int __real_open(const char* path, int flags, ...);
ssize_t __real_writev(int file, const iovec* parts, int count);
int __real_fsync(int file);
int __real_fallocate(int file, int mode, off_t from, off_t size);
int __real_rename(const char* from, const char* to);
int __real_close(int file);
int __real_ftruncate(int file, off_t size);
int __real_fchmod(int file, mode_t mode);
int __real_fchown(int file, uid_t owner, gid_t group);
int __real_dup(int file);
int __real_unlink(const char* path);
int __real_mkdir(const char* path, mode_t mode);

int __wrap_open(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const mode_t mode = va_arg(list, mode_t);
    va_end(list);
    return fails() ? -1 : after(__real_open(path, flags, mode));
}
ssize_t __wrap_writev(int file, const iovec* parts, int count) {
    if (fails())
        return -1;
    if (!state.isOn || state.fault != Fault::shortWrite)
        return after(__real_writev(file, parts, count));
    size_t left = 0;
    for (int i = 0; i < count; ++i)
        left += parts[i].iov_len;
    left -= left > 1 ? left / 2 : 0;
    std::vector<iovec> taken(parts, parts + count);
    for (iovec& part : taken)
        left -= part.iov_len = std::min(part.iov_len, left);
    return after(__real_writev(file, taken.data(), count));
}
int __wrap_fallocate(int file, int mode, off_t from, off_t size) {
    return fails() ? -1 : after(__real_fallocate(file, mode, from, size));
}
int __wrap_fsync(int file) {
    return fails() ? -1 : after(__real_fsync(file));
}
int __wrap_rename(const char* from, const char* to) {
    return fails() ? -1 : after(__real_rename(from, to));
}
int __wrap_close(int file) {
    if (!fails())
        return after(__real_close(file));
    const int reason = errno;
    __real_close(file); // the descriptor goes, whatever close answers
    errno = reason;
    return -1;
}
int __wrap_ftruncate(int file, off_t size) {
    return fails() ? -1 : after(__real_ftruncate(file, size));
}
int __wrap_fchmod(int file, mode_t mode) {
    return fails() ? -1 : after(__real_fchmod(file, mode));
}
int __wrap_fchown(int file, uid_t owner, gid_t group) {
    return fails() ? -1 : after(__real_fchown(file, owner, group));
}
int __wrap_dup(int file) {
    return fails() ? -1 : after(__real_dup(file));
}
int __wrap_unlink(const char* path) {
    return fails() ? -1 : after(__real_unlink(path));
}
int __wrap_mkdir(const char* path, mode_t mode) {
    return fails() ? -1 : after(__real_mkdir(path, mode));
}
}
