#include "common/error.h"

#include <gtest/gtest.h>

#include <climits>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/expect_error.h"

namespace urldb {
namespace {

template <class T>
std::string streamed(const T& value) {
  std::ostringstream stream;
  stream << value;
  return stream.str();
}

ErrorCode codeOf(int number) { return static_cast<ErrorCode>(number); }

TEST(ErrorMessage, EveryCodeHasItsText) {
  constexpr struct {
    ErrorCode code;
    int number;
    const char* text;
  } cases[] = {
      {ERR_NO_ERROR, 0, "No Error"},
      {ERR_NO_MEMORY, 1, "No Memory"},
      {ERR_CANT_CREATE_FILE, 2, "Can't Create File"},
      {ERR_CANT_OPEN_FILE, 3, "Can't Open File"},
      {ERR_CANT_READ_FILE, 4, "Can't Read File"},
      {ERR_CANT_WRITE_FILE, 5, "Can't Write File"},
      {ERR_CANT_REMOVE_FILE, 6, "Can't Remove File"},
      {ERR_CANT_COPY_FILE, 7, "Can't Copy File"},
      {ERR_CANT_MOVE_FILE, 8, "Can't Move File"},
      {ERR_CANT_LOCK_FILE, 9, "Can't Lock File"},
      {ERR_CANT_SEEK_FILE, 10, "Can't Seek File"},
      {ERR_CANT_CLOSE_FILE, 11, "Can't Close File"},
      {ERR_CANT_MAKE_DIRECTORY, 12, "Can't Make Directory"},
      {ERR_CANT_REMOVE_DIRECTORY, 13, "Can't Remove Directory"},
      {ERR_PERMISSION_DENIED, 14, "Permission denied"},
      {ERR_IO_ERROR, 15, "I/O Error"},
      {ERR_FAIL_TO_RUN, 16, "Fail to run"},
      {ERR_CANT_CREATE_SOCKET, 17, "Can't Create Socket"},
      {ERR_HOST_IS_NOT_FOUND, 18, "Host is Not Found"},
      {ERR_CANT_CONNECT, 19, "Can't Connect"},
      {ERR_FAILED_IN_SELECT, 20, "Failed in select()"},
      {ERR_FAILED_IN_NETWORK, 21, "Failed in network"},
      {ERR_INVALID_ARGUMENT, 22, "Invalid Argument"},
      {ERR_INVALID_CHARACTER, 23, "Invalid Charactor"},
      {ERR_INVALID_CPU_ARCHITECTURE, 24, "Invalid CPU architecture"},
      {ERR_INVALID_DATA, 25, "Invalid Data"},
      {ERR_INVALID_FILE, 26, "Invalid File"},
      {ERR_INVALID_FORMAT, 27, "Invalid Format"},
      {ERR_RESERVED, 28, "Reserved"},
      {ERR_INVALID_LINE, 29, "Invalid Line"},
      {ERR_INVALID_OPERATION, 30, "Invalid Operation"},
      {ERR_INVALID_STATUS, 31, "Invalid Status"},
      {ERR_INVALID_DATE_TIME, 32, "Invalid Date/Time"},
      {ERR_INVALID_VALUE, 33, "Invalid Value"},
      {ERR_INVALID_VERSION, 34, "Invalid Version"},
      {ERR_INTERRUPTED_BY_USER, 35, "Interrupted by user"},
      {ERR_INTERRUPTED_BY_SIGNAL, 36, "Interrupted by signal"},
      {ERR_OVERFLOW, 37, "Overflow"},
      {ERR_NO_SUCH_ELEMENT, 38, "No such a Element"},
      {ERR_TIME_OUT, 39, "Time out"},
      {ERR_NO_SPACE, 40, "No Space"},
      {ERR_NO_PROCESS, 41, "No Process"},
      {ERR_EXTENSION, 42, "Extension"},
      {ERR_UNKNOWN, 43, "Unknown Error Happend"},
  };
  static_assert(std::size(cases) == kErrorCodes);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.number, static_cast<int>(c.code));
    EXPECT_STREQ(c.text, ErrorMessage[c.code]);
    EXPECT_STREQ(c.text, ErrException(c.code, 1).getMessage());
  }
}

TEST(ErrException, FixedTextColonBlankAndFormattedText) {
  const ErrException error(ERR_CANT_OPEN_FILE, 60, "%s", "a.db");
  EXPECT_STREQ("Can't Open File: a.db", error.getMessage());
  EXPECT_EQ(ERR_CANT_OPEN_FILE, error.getErrCode());
  EXPECT_EQ(60, error.getSection());
}

TEST(ErrException, ExtensionIsTheThrowersTextAlone) {
  EXPECT_STREQ("5", ErrException(ERR_EXTENSION, 1, "%d", 5).getMessage());
  EXPECT_STREQ("Extension", ErrException(ERR_EXTENSION, 1).getMessage());
}

TEST(ErrException, StreamShowsTheSectionNotTheCode) {
  EXPECT_EQ("[ERROR(2)] No Memory", streamed(ErrException(ERR_NO_MEMORY, 2)));
  EXPECT_EQ("[ERROR(-3)] Overflow: 7",
            streamed(ErrException(ERR_OVERFLOW, -3, "%d", 7)));
}

TEST(ErrException, StreamShowsTheSectionInDecimalWhateverTheStreamDoes) {
  std::ostringstream stream;
  stream << std::hex << std::showpos << ErrException(ERR_NO_MEMORY, 3004);
  EXPECT_EQ("[ERROR(3004)] No Memory", stream.str());
}

TEST(ErrException, StreamShowsTheFixedTextForAnEmptyMessage) {
  const ErrException error(ERR_EXTENSION, 4, "%s", "");
  EXPECT_STREQ("", error.getMessage());
  EXPECT_EQ("[ERROR(4)] Extension", streamed(error));
}

TEST(ErrException, SetMessagePutsNoSeparator) {
  ErrException error(ERR_CANT_OPEN_FILE, 60, "%s", "a long text before");
  error.setMessage("%s", "x");
  EXPECT_STREQ("Can't Open Filex", error.getMessage());
}

TEST(ErrException, SetMessageKeepsTheFixedTextOfTheExtensionCode) {
  ErrException error(ERR_EXTENSION, 1, "%d", 5);
  error.setMessage(" %d", 6);
  EXPECT_STREQ("Extension 6", error.getMessage());
}

TEST(ErrException, AddMessageAppends) {
  ErrException error(ERR_CANT_OPEN_FILE, 60, "%s", "a");
  error.addMessage("%c", 'x');
  EXPECT_STREQ("Can't Open File: ax", error.getMessage());
}

TEST(ErrException, MessagesHoldExactly511Characters) {
  const std::string text(600, 'y');
  const std::string prefix = "Can't Open File: ";

  ErrException error(ERR_CANT_OPEN_FILE, 1, "%s", text.c_str());
  EXPECT_EQ(prefix + text.substr(0, 511 - prefix.size()), error.getMessage());

  const ErrException plain(ERR_EXTENSION, 1, "%s", text.c_str());
  EXPECT_EQ(text.substr(0, 511), plain.getMessage());

  error.setMessage("%s", text.c_str());
  EXPECT_EQ("Can't Open File" + text.substr(0, 496), error.getMessage());

  error.addMessage("%s", "z");
  EXPECT_EQ("Can't Open File" + text.substr(0, 496), error.getMessage());
}

TEST(ErrException, MessagesOf510To512CharactersAreCutAt511) {
  for (const std::size_t length : {509U, 510U, 511U, 512U}) {
    SCOPED_TRACE(length);
    const std::string whole(length, 'a');
    ErrException error(ERR_EXTENSION, 1, "%s", whole.c_str());
    EXPECT_EQ(whole.substr(0, 511), error.getMessage());
    error.addMessage("%s", "bc");
    EXPECT_EQ((whole + "bc").substr(0, 511), error.getMessage());
  }
}

TEST(ErrException, AMessageMayBePartOfItsOwnNextOne) {
  ErrException error(ERR_OVERFLOW, 1, "%s", "a");
  error.addMessage("+%s", error.getMessage());
  EXPECT_STREQ("Overflow: a+Overflow: a", error.getMessage());
  error.setMessage(" in (%s)", error.getMessage());
  EXPECT_STREQ("Overflow in (Overflow: a+Overflow: a)", error.getMessage());
}

TEST(ErrException, CodesOutsideTheTableAreKeptAndShownAsUnknown) {
  for (const int number : {44, 50, 1000, INT_MAX, -1, INT_MIN}) {
    SCOPED_TRACE(number);
    ErrException error(codeOf(number), 1);
    EXPECT_STREQ("Unknown Error Happend", error.getMessage());
    EXPECT_EQ(number, static_cast<int>(error.getErrCode()));
    error.setMessage("%s", "!");
    EXPECT_STREQ("Unknown Error Happend!", error.getMessage());
    EXPECT_STREQ("Unknown Error Happend: 1",
                 ErrException(codeOf(number), 1, "%d", 1).getMessage());
  }
}

TEST(ErrException, AFixedMessageStaysUntilItIsReleased) {
  ErrException error(ERR_OVERFLOW, 1, "%s", "a");
  error.setFixed(true);
  error.addMessage("%s", "b");
  error.setMessage("%s", "c");
  EXPECT_STREQ("Overflow: a", error.getMessage());
  ErrException copy(error);
  copy.addMessage("%s", "b");
  EXPECT_STREQ("Overflow: a", copy.getMessage());

  error.setFixed(false);
  error.addMessage("%s", "b");
  EXPECT_STREQ("Overflow: ab", error.getMessage());
}

TEST(ErrException, CopiesStandAlone) {
  ErrException error(ERR_TIME_OUT, 70, "in %d sec.", 5);
  const ErrException copy(error);
  ErrException assigned(ERR_NO_ERROR, 0);
  assigned = error;
  error.setMessage("%s", "gone");
  for (const ErrException& other : {copy, assigned}) {
    EXPECT_EQ(ERR_TIME_OUT, other.getErrCode());
    EXPECT_EQ(70, other.getSection());
    EXPECT_STREQ("Time out: in 5 sec.", other.getMessage());
  }
}

TEST(ErrException, AssignmentToItselfChangesNothing) {
  ErrException error(ERR_TIME_OUT, 70, "%d", 5);
  const ErrException& same = error;
  error = same;
  EXPECT_EQ("[ERROR(70)] Time out: 5", streamed(error));
}

TEST(ErrException, HasNoVirtualOperations) {
  EXPECT_FALSE(std::is_polymorphic_v<ErrException>);
}

TEST(FailBit, ThrowsForTheBadAndTheFailBit) {
  for (const auto state : {std::ios_base::badbit, std::ios_base::failbit,
                           std::ios_base::badbit | std::ios_base::failbit,
                           std::ios_base::failbit | std::ios_base::eofbit}) {
    std::stringstream stream;
    stream.setstate(state);
    expectError(ERR_IO_ERROR, 99, "I/O Error", [&] { failBit(stream); });
  }
}

TEST(FailBit, ReturnsNothingForAGoodStreamAndAtTheEnd) {
  std::stringstream stream;
  EXPECT_EQ(std::ios_base::goodbit, failBit(stream));
  stream.setstate(std::ios_base::eofbit);
  EXPECT_EQ(std::ios_base::goodbit, failBit(stream));
}

TEST(Sig2Str, NamesTheSignalsOfTheTableAndNoOthers) {
  const std::pair<int, std::string> names[] = {
      {1, "SIGHUP"},   {2, "SIGINT"},   {3, "SIGQUIT"},  {4, "SIGILL"},
      {5, "SIGTRAP"},  {6, "SIGIOT"},   {7, "SIGBUS"},   {8, "SIGFPE"},
      {10, "SIGUSR1"}, {11, "SIGSEGV"}, {12, "SIGUSR2"}, {13, "SIGPIPE"},
      {14, "SIGALRM"}, {15, "SIGTERM"}, {17, "SIGCLD"},  {29, "SIGPOLL"},
      {30, "SIGPWR"},  {31, "SIGSYS"}};
  for (int signal = -3; signal < 100; ++signal) {
    std::string expected = "unknown";
    for (const auto& [number, name] : names)
      if (number == signal) expected = name;
    EXPECT_EQ(expected, SIG2STR(signal)) << signal;
  }
  EXPECT_STREQ("unknown", SIG2STR(INT_MAX));
  EXPECT_STREQ("unknown", SIG2STR(INT_MIN));
}

}  // namespace
}  // namespace urldb
