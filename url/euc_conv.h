#ifndef URLDB_URL_EUC_CONV_H_
#define URLDB_URL_EUC_CONV_H_

#include <cstdint>

namespace urldb {

// Brings EUC-JP text into the one form in which keys and category names are
// stored and compared: ASCII letters in upper case, and full-width forms of
// ASCII characters as the one-byte characters that they stand for.
class EUCConv {
 public:
  // A printable ASCII character and its full-width form.
  struct Row {
    uint16_t code;   // EUC-JP, the first byte above the second
    uint16_t ascii;  // 0x20 to 0x7E
  };
  static constexpr int TBL_SIZE = 95;
  // In ascending order of the ASCII character, which is not the order of the
  // codes.
  static const Row ZenEUC[TBL_SIZE];

  EUCConv() = default;

  // The ASCII character of a full-width code, or 0. Answers for 48 characters
  // only, because no others are folded in the keys of existing databases: the
  // blank, '!', '"', the digits 0 to 6, the capital letters A to N and the
  // small letters a to x.
  char hankaku(unsigned short code) const;

  // Normalises the NUL-terminated `text` in place and returns its new length in
  // bytes, which is never above the old one. `upper` folds ASCII letters to
  // upper case, in no locale but ASCII; `zen2han` turns the full-width
  // characters that hankaku() knows into one byte each. Every other character
  // of two bytes, or of three behind 0x8F, stays as it is, and so does one that
  // the end of the text cuts short. Never fails.
  int convert(char* text, bool upper, bool zen2han) const;
};

}  // namespace urldb

#endif  // URLDB_URL_EUC_CONV_H_
