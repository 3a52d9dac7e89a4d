#ifndef URLDB_COMMON_LAST_ERROR_H_
#define URLDB_COMMON_LAST_ERROR_H_

namespace urldb {

class ErrException;

// The one text, for the whole process, in which functions with C linkage leave
// what went wrong behind their plain return values.

// Makes "[ERROR(section)] message" the text, at most 1023 characters.
void setLastError(const ErrException& error);

// The text, "" at first. Valid for good; the next setLastError changes it.
const char* lastErrorText();

}  // namespace urldb

#endif  // URLDB_COMMON_LAST_ERROR_H_
