#include "tools/open_database.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "tools/program_error.h"
#include "urldb/database_view.h"

namespace urldb {

namespace {

const char* advice(ErrorCode code) {
  switch (code) {
    case ERR_INVALID_FILE:
      return "; is it a database that 'urldb build' made?";
    case ERR_INVALID_VERSION:
      return "; it needs a newer version of this program";
    case ERR_NO_MEMORY:
      return "";
    default:
      return "; the file is damaged or cut short: build it again";
  }
}

// Some paths can be read and are no file all the same: bytes of a device would
// only look like a damaged one. A pipe is as good as a file.
void refuseWhatIsNoFile(const std::string& path) {
  if (path.empty()) throw ProgramError("the name of a file is empty");
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return;  // opening it tells why
  if (S_ISDIR(status.st_mode)) throw ProgramError(path + ": is a folder");
  if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
    throw ProgramError(path + ": is a device");
}

// Opens `path` for lookups, or with `names` for building.
void openFile(URLDB* db, CategoryNames* names, int queueSize,
              const std::string& path) {
  refuseWhatIsNoFile(path);
  // -1 is also what a file of that version gives, which is then recorded.
  if (db->openFile(path.c_str(), names, queueSize, true) != -1 ||
      viewOf(*db).version == -1)
    return;
  // openFile tells only that it could not open the file: ask for the reason.
  const FileDescriptor probe(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  throw ProgramError(
      path + ": " +
      (probe.valid() ? "cannot be opened" : std::strerror(errno)));
}

}  // namespace

void openForCheck(URLDB* db, CategoryNames* names, const std::string& path) {
  struct stat status {};
  const bool sized =
      ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  // Each free position takes four bytes of the file; the queue takes one less
  // than its size.
  constexpr off_t kMost = std::numeric_limits<int>::max() - 2;
  const off_t positions = std::min(status.st_size / 4, kMost);
  openFile(db, sized ? names : nullptr, static_cast<int>(positions) + 2, path);
}

void openDatabase(URLDB* db, const std::string& path) {
  try {
    openFile(db, nullptr, 0, path);
  } catch (const ErrException& error) {
    throw ProgramError(path + ": " + error.getMessage() +
                       advice(error.getErrCode()));
  }
}

void addDatabaseOption(CLI::App* command, std::string* path) {
  command->add_option("-d,--database", *path, "The database")
      ->required()
      ->type_name("FILE");
}

void addDatabaseCommand(CLI::App& app, const char* name,
                        const char* description, const char* footer,
                        int (*run)(const std::string& path), int* status) {
  const auto path = std::make_shared<std::string>();
  CLI::App* const command = app.add_subcommand(name, description);
  addDatabaseOption(command, path.get());
  command->footer(footer);
  command->callback([path, run, status] { *status = run(*path); });
}

}  // namespace urldb
