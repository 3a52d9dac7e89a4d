#include "tools/open_database.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "tools/program_error.h"

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

}  // namespace

void openForCheck(URLDB* db, const std::string& path) {
  if (db->openFile(path.c_str(), nullptr, 0, true) >= 0) return;
  // openFile tells only that it could not open the file: ask for the reason.
  const FileDescriptor probe(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  throw ProgramError(
      path + ": " +
      (probe.valid() ? "cannot be opened" : std::strerror(errno)));
}

void openDatabase(URLDB* db, const std::string& path) {
  try {
    openForCheck(db, path);
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
