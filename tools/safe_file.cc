#include "tools/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "common/file_descriptor.h"
#include "tools/program_error.h"

namespace urldb {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as many as the kernel follows

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw ProgramError(path + ": " + what);
}

[[noreturn]] void failWithErrno(const std::string& path, const char* what) {
  fail(path, std::string(what) + ": " + std::strerror(errno));
}

// Where `path` leads, whether or not there is a file at the end.
std::string followLinks(const std::string& path) {
  fs::path place = path;
  for (int links = 0; links <= kMostLinks; ++links) {
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(place, error)))
      return place.string();
    const fs::path next = fs::read_symlink(place, error);
    if (error) fail(path, error.message());
    place = place.parent_path() / next;
  }
  fail(path, "too many symbolic links");
}

bool flushPath(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file.valid() && ::fsync(file.get()) == 0;
}

}  // namespace

SafeFile::SafeFile(const std::string& target) : target_(followLinks(target)) {
  requireFileName(target);
  struct stat status {};
  if (::stat(target_.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) fail(target, "not a regular file");
  } else if (errno != ENOENT) {
    fail(target, std::strerror(errno));
  }
  // A hidden name of its own: the target's name may leave no room for more.
  temporary_ = folder() + "/.urldb-XXXXXX";
  const FileDescriptor file(::mkostemp(temporary_.data(), O_CLOEXEC));
  if (!file.valid()) {
    temporary_.clear();
    failWithErrno(folder(), "cannot create a file in this folder");
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  if (::fchmod(file.get(), 0644 & ~mask) != 0) {
    const int error = errno;
    ::unlink(temporary_.c_str());
    errno = error;
    failWithErrno(temporary_, "cannot set its mode");
  }
}

SafeFile::~SafeFile() {
  if (!committed_) ::unlink(temporary_.c_str());
}

std::string SafeFile::folder() const {
  const std::string parent = fs::path(target_).parent_path().string();
  return parent.empty() ? "." : parent;
}

void SafeFile::flush() {
  if (!flushPath(temporary_)) failWithErrno(temporary_, "cannot be flushed");
}

bool SafeFile::commit() {
  if (::rename(temporary_.c_str(), target_.c_str()) != 0)
    failWithErrno(target_, "cannot be replaced");
  committed_ = true;
  return flushPath(folder());
}

}  // namespace urldb
