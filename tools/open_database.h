#ifndef URLDB_TOOLS_OPEN_DATABASE_H_
#define URLDB_TOOLS_OPEN_DATABASE_H_

#include <CLI/CLI.hpp>
#include <string>

#include "urldb/urldb.h"

namespace urldb {

// Reads all of `path`, the free positions too, which only building needs: the
// database is open for building with `names`, which must outlive it, and is not
// to be changed. (What is no regular file is opened for lookups.) Throws
// ProgramError, with the reason, when it cannot be opened, and ErrException as
// URLDB::openFile when it is no sound database.
void openForCheck(URLDB* db, CategoryNames* names, const std::string& path);

// Opens `path` for lookups. Throws ProgramError in both cases, with what to do.
void openDatabase(URLDB* db, const std::string& path);

// Gives `command` the required option -d FILE.
void addDatabaseOption(CLI::App* command, std::string* path);

// Adds a command whose only option is -d FILE. `run` gets the path and returns
// the exit status, see addKeyCommand. `footer` stands below the help text.
void addDatabaseCommand(CLI::App& app, const char* name,
                        const char* description, const char* footer,
                        int (*run)(const std::string& path), int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_OPEN_DATABASE_H_
