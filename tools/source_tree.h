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

// What is left out below a source folder: a folder, a link, or something that
// has the name of a list and cannot be one.
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
// the order of the categories, `domains` before `urls`. Deeper folders,
// folders whose name is no usable category, and a `domains` or `urls` that is a
// folder, a pipe or a device are refused; hidden folders and other files are
// passed over. A symbolic link is followed; another one behind it, and one that
// leads nowhere, is refused.
//
// Throws ProgramError for a category that cannot be used, for a list that
// cannot be reached, and for an argument that names no list: a missing file or
// a device, or a folder behind "CATEGORY=". Standard input (/dev/stdin) may be
// anything.
ListSource findLists(const std::string& argument);

// Opens a list; for a pipe, this waits for its other end. Throws ProgramError
// as findLists and when the list cannot be opened, or a signal ends the wait.
FileDescriptor openList(const ListFile& list);

}  // namespace urldb

#endif  // URLDB_TOOLS_SOURCE_TREE_H_
