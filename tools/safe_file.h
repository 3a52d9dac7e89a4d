#ifndef URLDB_TOOLS_SAFE_FILE_H_
#define URLDB_TOOLS_SAFE_FILE_H_

#include <string>

namespace urldb {

// A file that is replaced in one step: its new content is written to a
// temporary file beside it, which takes its place only when it is complete.
// Whoever reads the file meanwhile sees the old content or the new one, never
// a mixture, and after any failure it is as it was.
class SafeFile {
 public:
  // Makes the temporary file, empty, with mode 0644 less the umask. When
  // `target` is a symbolic link, the file that it leads to is the one to be
  // replaced. Throws ProgramError when the folder is missing or cannot be
  // written, or when `target` is something other than a regular file.
  explicit SafeFile(const std::string& target);
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;
  // Removes the temporary file unless it has been committed.
  ~SafeFile();

  // The temporary file. It may be opened and written by name.
  const std::string& temporaryPath() const { return temporary_; }

  // Brings the temporary file's content to the disk. Throws ProgramError when
  // that fails.
  void flush();

  // Puts the temporary file in the target's place. Throws ProgramError when
  // that fails and the target is as it was. Returns whether the new name has
  // safely reached the disk too.
  bool commit();

 private:
  std::string folder() const;

  std::string target_;
  std::string temporary_;
  bool committed_ = false;
};

}  // namespace urldb

#endif  // URLDB_TOOLS_SAFE_FILE_H_
