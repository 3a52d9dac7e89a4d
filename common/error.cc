#include "common/error.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>

namespace urldb {
namespace {

const char* fixedText(ErrorCode code) {
  const bool known = code >= ERR_NO_ERROR && code <= ERR_UNKNOWN;
  return ErrorMessage[known ? code : ERR_UNKNOWN];
}

// A formatted text beside the message, so that an argument may point into the
// message it is added to.
struct FormattedText {
  char text[512];

  [[gnu::format(printf, 2, 0)]] FormattedText(const char* format,
                                              va_list arguments) {
    if (std::vsnprintf(text, sizeof text, format, arguments) < 0) text[0] = 0;
  }
};

}  // namespace

const char* const ErrorMessage[kErrorCodes] = {
    "No Error",
    "No Memory",
    "Can't Create File",
    "Can't Open File",
    "Can't Read File",
    "Can't Write File",
    "Can't Remove File",
    "Can't Copy File",
    "Can't Move File",
    "Can't Lock File",
    "Can't Seek File",
    "Can't Close File",
    "Can't Make Directory",
    "Can't Remove Directory",
    "Permission denied",
    "I/O Error",
    "Fail to run",
    "Can't Create Socket",
    "Host is Not Found",
    "Can't Connect",
    "Failed in select()",
    "Failed in network",
    "Invalid Argument",
    "Invalid Charactor",
    "Invalid CPU architecture",
    "Invalid Data",
    "Invalid File",
    "Invalid Format",
    "Reserved",
    "Invalid Line",
    "Invalid Operation",
    "Invalid Status",
    "Invalid Date/Time",
    "Invalid Value",
    "Invalid Version",
    "Interrupted by user",
    "Interrupted by signal",
    "Overflow",
    "No such a Element",
    "Time out",
    "No Space",
    "No Process",
    "Extension",
    "Unknown Error Happend",
};

ErrException::ErrException(ErrorCode code, int section, const char* format, ...)
    : code_(code), section_(section) {
  if (code != ERR_EXTENSION) {
    append(fixedText(code));
    append(": ");
  }
  va_list arguments;
  va_start(arguments, format);
  append(FormattedText(format, arguments).text);
  va_end(arguments);
}

ErrException::ErrException(ErrorCode code, int section)
    : code_(code), section_(section) {
  append(fixedText(code));
}

void ErrException::addMessage(const char* format, ...) {
  if (fixed_) return;
  va_list arguments;
  va_start(arguments, format);
  append(FormattedText(format, arguments).text);
  va_end(arguments);
}

void ErrException::setMessage(const char* format, ...) {
  if (fixed_) return;
  va_list arguments;
  va_start(arguments, format);
  const FormattedText formatted(format, arguments);
  va_end(arguments);
  message_[0] = '\0';
  append(fixedText(code_));
  append(formatted.text);
}

void ErrException::append(const char* text) {
  const std::size_t have = std::strlen(message_);
  const std::size_t more =
      std::min(std::strlen(text), sizeof message_ - 1 - have);
  std::memcpy(message_ + have, text, more);
  message_[have + more] = '\0';
}

std::ostream& operator<<(std::ostream& stream, const ErrException& error) {
  const char* const message = error.getMessage();
  return stream << "[ERROR(" << std::to_string(error.getSection()) << ")] "
                << (*message != '\0' ? message : fixedText(error.getErrCode()));
}

std::ios_base::iostate failBit(std::basic_ios<char>& stream) {
  const std::ios_base::iostate failed =
      stream.rdstate() & (std::ios_base::badbit | std::ios_base::failbit);
  if (failed != std::ios_base::goodbit) throw ErrException(ERR_IO_ERROR, 99);
  return failed;
}

const char* SIG2STR(int signal) {
  static constexpr const char* kNames[] = {
      nullptr,   "SIGHUP",  "SIGINT",  "SIGQUIT", "SIGILL",  "SIGTRAP",
      "SIGIOT",  "SIGBUS",  "SIGFPE",  nullptr,   "SIGUSR1", "SIGSEGV",
      "SIGUSR2", "SIGPIPE", "SIGALRM", "SIGTERM", nullptr,   "SIGCLD",
      nullptr,   nullptr,   nullptr,   nullptr,   nullptr,   nullptr,
      nullptr,   nullptr,   nullptr,   nullptr,   nullptr,   "SIGPOLL",
      "SIGPWR",  "SIGSYS",
  };
  static_assert(std::size(kNames) == 32);
  const char* const name =
      signal >= 1 && signal <= 31 ? kNames[signal] : nullptr;
  return name != nullptr ? name : "unknown";
}

}  // namespace urldb
