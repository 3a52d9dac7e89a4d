#ifndef URLDB_COMMON_ERROR_H_
#define URLDB_COMMON_ERROR_H_

#include <cstddef>
#include <cstdint>
#include <ios>
#include <iosfwd>

namespace urldb {

// What went wrong. The numbers and their texts (ErrorMessage) are interface.
enum ErrorCode : int32_t {
  ERR_NO_ERROR = 0,
  ERR_NO_MEMORY = 1,
  ERR_CANT_CREATE_FILE = 2,
  ERR_CANT_OPEN_FILE = 3,
  ERR_CANT_READ_FILE = 4,
  ERR_CANT_WRITE_FILE = 5,
  ERR_CANT_REMOVE_FILE = 6,
  ERR_CANT_COPY_FILE = 7,
  ERR_CANT_MOVE_FILE = 8,
  ERR_CANT_LOCK_FILE = 9,
  ERR_CANT_SEEK_FILE = 10,
  ERR_CANT_CLOSE_FILE = 11,
  ERR_CANT_MAKE_DIRECTORY = 12,
  ERR_CANT_REMOVE_DIRECTORY = 13,
  ERR_PERMISSION_DENIED = 14,
  ERR_IO_ERROR = 15,
  ERR_FAIL_TO_RUN = 16,
  ERR_CANT_CREATE_SOCKET = 17,
  ERR_HOST_IS_NOT_FOUND = 18,
  ERR_CANT_CONNECT = 19,
  ERR_FAILED_IN_SELECT = 20,
  ERR_FAILED_IN_NETWORK = 21,
  ERR_INVALID_ARGUMENT = 22,
  ERR_INVALID_CHARACTER = 23,
  ERR_INVALID_CPU_ARCHITECTURE = 24,
  ERR_INVALID_DATA = 25,
  ERR_INVALID_FILE = 26,
  ERR_INVALID_FORMAT = 27,
  ERR_RESERVED = 28,  // thrown nowhere
  ERR_INVALID_LINE = 29,
  ERR_INVALID_OPERATION = 30,
  ERR_INVALID_STATUS = 31,
  ERR_INVALID_DATE_TIME = 32,
  ERR_INVALID_VALUE = 33,
  ERR_INVALID_VERSION = 34,
  ERR_INTERRUPTED_BY_USER = 35,
  ERR_INTERRUPTED_BY_SIGNAL = 36,
  ERR_OVERFLOW = 37,
  ERR_NO_SUCH_ELEMENT = 38,
  ERR_TIME_OUT = 39,
  ERR_NO_SPACE = 40,
  ERR_NO_PROCESS = 41,
  ERR_EXTENSION = 42,  // the message is the thrower's text alone
  ERR_UNKNOWN = 43,    // its text also stands for every code outside the table
};

constexpr std::size_t kErrorCodes = 44;

// The fixed text of each code.
extern const char* const ErrorMessage[kErrorCodes];

// The one exception of the system: a code, the section tag by which the
// throwing class is known, and a message of at most 511 characters; longer
// texts are cut silently. Nothing here fails. A code outside 0 to 43 is kept as
// it is and has the fixed text of code 43.
class ErrException {
 public:
  // The message is the fixed text, ": " and the formatted text; with code 42
  // the formatted text alone.
  [[gnu::format(printf, 4, 5)]] ErrException(ErrorCode code, int section,
                                             const char* format, ...);
  // The message is the fixed text.
  ErrException(ErrorCode code, int section);

  // Appends the formatted text to the message.
  [[gnu::format(printf, 2, 3)]] void addMessage(const char* format, ...);
  // Replaces the message by the fixed text and, directly behind it, the
  // formatted text: unlike the constructor this puts no ": " between them, so
  // that the caller chooses what joins the two.
  [[gnu::format(printf, 2, 3)]] void setMessage(const char* format, ...);
  // While an exception is fixed, addMessage and setMessage leave its message
  // unchanged. It is not fixed at first.
  void setFixed(bool fixed) { fixed_ = fixed; }

  ErrorCode getErrCode() const { return code_; }
  int getSection() const { return section_; }
  // NUL-terminated; lives as long as the exception.
  const char* getMessage() const { return message_; }

 private:
  void append(const char* text);

  [[maybe_unused]] int32_t reserved_ = 0;  // copied along, read by nobody
  ErrorCode code_;
  char message_[512] = {};
  int32_t section_;
  bool fixed_ = false;
};

// Writes "[ERROR(section)] message"; for an empty message the fixed text of the
// code.
std::ostream& operator<<(std::ostream& stream, const ErrException& error);

// Throws code 15, section 99, when the bad or the fail bit of `stream` is set;
// otherwise returns those two bits, none. Called after each stream operation
// that must succeed.
std::ios_base::iostate failBit(std::basic_ios<char>& stream);

// The name of a signal by the Linux i386 numbering, "SIGHUP" for 1, or
// "unknown". A constant text.
const char* SIG2STR(int signal);

}  // namespace urldb

#endif  // URLDB_COMMON_ERROR_H_
