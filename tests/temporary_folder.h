#ifndef URLDB_TESTS_TEMPORARY_FOLDER_H_
#define URLDB_TESTS_TEMPORARY_FOLDER_H_

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace urldb {

// A folder of its own for one test, removed with all it holds at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name =
        (std::filesystem::temp_directory_path() / "urldb-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  // The path of `name` in the folder, of the folder itself without a name.
  std::string path(std::string_view name = {}) const {
    return name.empty() ? path_ : path_ + "/" + std::string(name);
  }

  // Writes a file, making the folders above it, and gives its path.
  std::string write(std::string_view name, std::string_view bytes) const {
    std::string file = path(name);
    std::filesystem::create_directories(
        std::filesystem::path(file).parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw std::runtime_error("cannot write " + file);
    return file;
  }

  // The bytes of a file in the folder.
  std::string read(std::string_view name) const {
    std::ifstream stream(path(name), std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + path(name));
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::string path_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_TEMPORARY_FOLDER_H_
