#ifndef URLDB_TOOLS_SOURCE_TREE_H_
#define URLDB_TOOLS_SOURCE_TREE_H_

#include <optional>
#include <string>
#include <vector>

#include "common/file_descriptor.h"
#include "tools/category.h"

namespace urldb {

// One file to read.
struct ListFile {
  std::string path;
  std::string shownName;             // in the report
  std::optional<Category> category;  // none: the lines name their categories
  // Lists that a folder holds must be regular files: a pipe there would make
  // the build wait for ever.
  bool maybePipe = false;
};

// A folder, or a link, below a source folder that is left out.
struct RefusedPath {
  std::string path;
  std::string shownName;
  std::string reason;
};

// What one SOURCE argument stands for.
struct ListSource {
  std::string argument;
  bool folder = false;
  std::vector<ListFile> lists;
  std::vector<RefusedPath> refused;
};

// Resolves "CATEGORY=FILE", a folder, or a file whose lines name their
// categories. An argument that begins with '/', './' or '../' is a path even
// when it holds '='.
//
// A folder has one folder for each category, which holds `domains`, `urls` or
// both, and may hold one more level of such folders for pairs. Lists come in
// the order of the categories, `domains` before `urls`. Deeper folders, and
// folders whose name is no usable category, are refused; hidden folders and
// other files are passed over. A symbolic link is followed; another one behind
// it is refused.
//
// Throws ProgramError for a category that cannot be used, and for a list that
// is missing or cannot be one: a folder, a device, or a pipe where none may be.
// Standard input (/dev/stdin) may be anything.
ListSource findLists(const std::string& argument);

// Opens a list; for a pipe, this waits for its other end. Throws ProgramError
// as findLists and when the list cannot be opened, or a signal ends the wait.
FileDescriptor openList(const ListFile& list);

}  // namespace urldb

#endif  // URLDB_TOOLS_SOURCE_TREE_H_
