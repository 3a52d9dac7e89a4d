#include "tools/source_tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/program_error.h"

namespace urldb {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardInput = "/dev/stdin";
constexpr std::array<const char*, 2> kListNames = {"domains", "urls"};

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// The names in a folder, hidden ones left out, in ascending order of bytes.
std::vector<std::string> namesIn(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> names;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string name = entry->path().filename().string();
    if (name.front() != '.') names.push_back(std::move(name));
  }
  if (error) throw ProgramError(folder + ": " + error.message());
  std::sort(names.begin(), names.end());
  return names;
}

// Why there is no list at the path, or "". Looks without opening: opening a
// device may already do something to it. `*error` is the errno of the look, 0
// when it could be had.
std::string faultOfList(const ListFile& list, int* error) {
  *error = 0;
  if (list.path == kStandardInput) return {};
  struct stat status {};
  if (::stat(list.path.c_str(), &status) != 0) {
    *error = errno;
    return std::strerror(errno);
  }
  if (S_ISDIR(status.st_mode)) return "a folder, where a list is expected";
  if (S_ISFIFO(status.st_mode) && !list.maybePipe)
    return "a pipe, where a list file is expected";
  if (!S_ISREG(status.st_mode) && !S_ISFIFO(status.st_mode))
    return "neither a file nor a pipe, where a list is expected";
  return {};
}

// Walks the folders of one source.
class Walk {
 public:
  explicit Walk(ListSource* source) : source_(source) {}

  void walk() {
    for (const std::string& name : namesIn(source_->argument)) {
      Place place{source_->argument + "/" + name, name, 1, false};
      if (!isFolder(&place)) continue;
      const std::optional<Category> category = parseCategory(name);
      if (!category) {
        refuse(place, "the folder's name is no usable category");
        continue;
      }
      walkCategory(place, *category);
    }
  }

 private:
  struct Place {
    std::string path;
    std::string shownName;  // below the source
    int depth;
    bool behindLink;
  };

  static Place below(const Place& folder, const std::string& name) {
    return {folder.path + "/" + name, folder.shownName + "/" + name,
            folder.depth + 1, folder.behindLink};
  }

  void refuse(const Place& place, std::string reason) {
    source_->refused.push_back(
        {place.path, place.shownName, std::move(reason)});
  }

  // Whether `place` is a symbolic link that may not be followed, and refuses
  // it then. Notes in `place` that a link is being followed.
  bool isLinkTooMany(Place* place) {
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(place->path, ignored))) return false;
    if (place->behindLink) {
      refuse(*place, "a symbolic link behind another one");
      return true;
    }
    place->behindLink = true;
    return false;
  }

  // Whether `place` is a folder to go into.
  bool isFolder(Place* place) {
    std::error_code error;
    const fs::file_status status = fs::status(place->path, error);
    if (status.type() == fs::file_type::not_found) {
      refuse(*place, "a symbolic link that leads nowhere");
      return false;
    }
    if (status.type() == fs::file_type::none) {
      refuse(*place, error.message());
      return false;
    }
    if (!fs::is_directory(status) || isLinkTooMany(place)) return false;
    if (place->depth <= 2) return true;
    refuse(*place, "folders may nest only once");
    return false;
  }

  // Takes `place` as a list, or refuses what can be none. An error of the
  // system is left to the opening.
  void takeList(const Place& place, const Category& category) {
    ListFile list{place.path, place.shownName, category, false};
    int error = 0;
    const std::string fault = faultOfList(list, &error);
    if (error == ENOENT) {
      refuse(place, "a symbolic link that leads nowhere");
    } else if (!fault.empty() && (error == 0 || error == ELOOP)) {
      refuse(place, fault);
    } else {
      source_->lists.push_back(std::move(list));
    }
  }

  void walkCategory(const Place& folder, const Category& category) {
    const std::vector<std::string> names = namesIn(folder.path);
    const auto isList = [](const std::string& name) {
      return std::find(kListNames.begin(), kListNames.end(), name) !=
             kListNames.end();
    };
    for (const std::string& name : names) {
      Place place = below(folder, name);
      if (isList(name) && !isLinkTooMany(&place)) takeList(place, category);
    }
    for (const std::string& name : names) {
      Place place = below(folder, name);
      if (isList(name) || !isFolder(&place)) continue;
      const std::optional<Category> level2 = parseCategory(name);
      if (level2) {
        walkCategory(place, {category.name, level2->name});
      } else {
        refuse(place, "the folder's name is no usable category");
      }
    }
  }

  ListSource* source_;
};

void requireList(const ListFile& list) {
  requireFileName(list.path);
  int error = 0;
  const std::string fault = faultOfList(list, &error);
  if (!fault.empty()) throw ProgramError(list.path + ": " + fault);
}

}  // namespace

ListSource findLists(const std::string& argument) {
  ListSource source;
  source.argument = argument;
  const bool path = startsWith(argument, "/") || startsWith(argument, "./") ||
                    startsWith(argument, "../");
  const std::size_t equals = path ? std::string::npos : argument.find('=');
  if (equals != std::string::npos) {
    const std::string_view name = std::string_view(argument).substr(0, equals);
    std::optional<Category> category = parseCategory(name);
    if (!category)
      throw ProgramError(argument + ": '" + std::string(name) +
                         "' is no usable category; give NAME or "
                         "LEVEL1/LEVEL2, or write a path as ./PATH");
    source.lists.push_back(
        {argument.substr(equals + 1), argument, std::move(category), true});
    requireList(source.lists.back());
    return source;
  }
  std::error_code error;
  if (fs::is_directory(argument, error)) {
    source.folder = true;
    Walk(&source).walk();
  } else {
    source.lists.push_back({argument, argument, std::nullopt, true});
  }
  for (const ListFile& list : source.lists) requireList(list);
  return source;
}

FileDescriptor openList(const ListFile& list) {
  requireList(list);
  // A copy of the descriptor: some kinds of standard input have a name that
  // cannot be opened.
  FileDescriptor file(list.path == kStandardInput
                          ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)
                          : ::open(list.path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.valid())
    throw ProgramError(list.path + ": " + std::strerror(errno));
  return file;
}

}  // namespace urldb
