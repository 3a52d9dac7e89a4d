#ifndef URLDB_COMMON_STRING_TOKENIZER_H_
#define URLDB_COMMON_STRING_TOKENIZER_H_

#include <memory>

namespace urldb {

// Splits a private copy of a text at the characters of a delimiter set. Runs of
// delimiters, also at both ends, count as one: no token is empty.
class StringTokenizer {
 public:
  // `delimiters` is not copied and must live as long as it is in use. There are
  // no tokens when one of the two is null. Throws std::bad_alloc, also for a
  // text of more than 2147483647 characters.
  StringTokenizer(const char* text, const char* delimiters);
  StringTokenizer(const StringTokenizer&) = delete;
  StringTokenizer& operator=(const StringTokenizer&) = delete;

  // Whether next() has a token with the current delimiters. Moves the cursor to
  // it.
  bool hasNext();

  // The next token, or null when nothing is left. It is NUL-terminated and
  // lives as long as the tokenizer. Delimiters that are not null replace the
  // current ones from now on.
  char* next(const char* delimiters = nullptr);

  // The number of tokens that next() would still return with the current
  // delimiters.
  int count() const;

  // Moves `cursor` over the current delimiters, at most `left` of them, and
  // takes what it passes off `left`.
  void skipDelimiters(char*& cursor, int& left) const;

 private:
  std::unique_ptr<char[]> text_;
  char* cursor_ = nullptr;  // into text_
  const char* delimiters_;  // never null
  int left_ =
      0;  // characters from the cursor to the end; 0 after the last token
};

}  // namespace urldb

#endif  // URLDB_COMMON_STRING_TOKENIZER_H_
