#include "url/euc_conv.h"

#include <array>
#include <cstddef>

namespace urldb {

// clang-format off
constexpr EUCConv::Row EUCConv::ZenEUC[TBL_SIZE] = {
    {0xA1A1, ' '}, {0xA1AA, '!'}, {0xA1C9, '"'}, {0xA1F4, '#'}, {0xA1F0, '$'},
    {0xA1F3, '%'}, {0xA1F5, '&'}, {0xA1C7, '\''}, {0xA1CA, '('}, {0xA1CB, ')'},
    {0xA1F6, '*'}, {0xA1DC, '+'}, {0xA1A4, ','}, {0xA1DD, '-'}, {0xA1A5, '.'},
    {0xA1BF, '/'}, {0xA3B0, '0'}, {0xA3B1, '1'}, {0xA3B2, '2'}, {0xA3B3, '3'},
    {0xA3B4, '4'}, {0xA3B5, '5'}, {0xA3B6, '6'}, {0xA3B7, '7'}, {0xA3B8, '8'},
    {0xA3B9, '9'}, {0xA1A7, ':'}, {0xA1A8, ';'}, {0xA1E3, '<'}, {0xA1E1, '='},
    {0xA1E4, '>'}, {0xA1A9, '?'}, {0xA1F7, '@'}, {0xA3C1, 'A'}, {0xA3C2, 'B'},
    {0xA3C3, 'C'}, {0xA3C4, 'D'}, {0xA3C5, 'E'}, {0xA3C6, 'F'}, {0xA3C7, 'G'},
    {0xA3C8, 'H'}, {0xA3C9, 'I'}, {0xA3CA, 'J'}, {0xA3CB, 'K'}, {0xA3CC, 'L'},
    {0xA3CD, 'M'}, {0xA3CE, 'N'}, {0xA3CF, 'O'}, {0xA3D0, 'P'}, {0xA3D1, 'Q'},
    {0xA3D2, 'R'}, {0xA3D3, 'S'}, {0xA3D4, 'T'}, {0xA3D5, 'U'}, {0xA3D6, 'V'},
    {0xA3D7, 'W'}, {0xA3D8, 'X'}, {0xA3D9, 'Y'}, {0xA3DA, 'Z'}, {0xA1CE, '['},
    {0xA1EF, '\\'}, {0xA1CF, ']'}, {0xA1B0, '^'}, {0xA1B2, '_'}, {0xA1AE, '`'},
    {0xA3E1, 'a'}, {0xA3E2, 'b'}, {0xA3E3, 'c'}, {0xA3E4, 'd'}, {0xA3E5, 'e'},
    {0xA3E6, 'f'}, {0xA3E7, 'g'}, {0xA3E8, 'h'}, {0xA3E9, 'i'}, {0xA3EA, 'j'},
    {0xA3EB, 'k'}, {0xA3EC, 'l'}, {0xA3ED, 'm'}, {0xA3EE, 'n'}, {0xA3EF, 'o'},
    {0xA3F0, 'p'}, {0xA3F1, 'q'}, {0xA3F2, 'r'}, {0xA3F3, 's'}, {0xA3F4, 't'},
    {0xA3F5, 'u'}, {0xA3F6, 'v'}, {0xA3F7, 'w'}, {0xA3F8, 'x'}, {0xA3F9, 'y'},
    {0xA3FA, 'z'}, {0xA1D0, '{'}, {0xA1C3, '|'}, {0xA1D1, '}'}, {0xA1B1, '~'},
};
// clang-format on

namespace {

using Byte = unsigned char;

constexpr int kRows = EUCConv::TBL_SIZE;

// Deliberately a binary search by code over a table in ASCII order: it finds 48
// of the 95 rows, and the keys of every database in the field were folded by
// just those. A sorted table would fold the others too and lose their keys.
constexpr Byte findAscii(unsigned code) {
  int low = 0;
  int high = kRows - 1;
  while (low <= high) {
    const int middle = (low + high) / 2;
    if (code < EUCConv::ZenEUC[middle].code)
      high = middle - 1;
    else
      low = middle + 1;
  }
  if (high < 0 || EUCConv::ZenEUC[high].code != code) return 0;
  return static_cast<Byte>(EUCConv::ZenEUC[high].ascii);
}

constexpr bool isInAsciiOrder() {
  for (int i = 0; i < kRows; ++i)
    if (EUCConv::ZenEUC[i].ascii != ' ' + i) return false;
  return true;
}

constexpr int countFound() {
  int found = 0;
  for (const EUCConv::Row& row : EUCConv::ZenEUC)
    if (findAscii(row.code) == row.ascii) ++found;
  return found;
}

static_assert(isInAsciiOrder());
static_assert(countFound() == 48);
static_assert(findAscii(0xA1A1) == ' ' && findAscii(0xA1AA) == '!');
static_assert(findAscii(0xA1C9) == '"' && findAscii(0xA1F4) == 0);
static_assert(findAscii(0xA3B6) == '6' && findAscii(0xA3B7) == 0);
static_assert(findAscii(0xA3CE) == 'N' && findAscii(0xA3CF) == 0);
static_assert(findAscii(0xA3F8) == 'x' && findAscii(0xA3F9) == 0);

// What an ASCII byte becomes; 0 for the NUL and for every byte above 0x7F, so
// that one test ends the loop over plain ASCII.
using FoldTable = std::array<Byte, 256>;

constexpr FoldTable makeFoldTable(bool upper) {
  FoldTable table{};
  for (unsigned c = 0; c < 0x80; ++c) {
    const bool small = c >= 'a' && c <= 'z';
    table[c] = static_cast<Byte>(upper && small ? c - 'a' + 'A' : c);
  }
  return table;
}

constexpr FoldTable kKeepCase = makeFoldTable(false);
constexpr FoldTable kUpperCase = makeFoldTable(true);

static_assert(kUpperCase['a'] == 'A' && kUpperCase['z'] == 'Z');
static_assert(kUpperCase['`'] == '`' && kUpperCase['{'] == '{');
static_assert(kUpperCase[0x7F] == 0x7F && kUpperCase[0x80] == 0);
static_assert(kUpperCase[0] == 0 && kKeepCase['a'] == 'a');

// The rest of a text from its first byte above 0x7F. Returns the end of what
// was written; the NUL is the caller's.
[[gnu::noinline]] Byte* convertRest(Byte* text, const Byte* fold,
                                    bool zen2han) {
  const Byte* read = text;
  Byte* write = text;
  while (*read != 0) {
    if (*read < 0x80) {
      *write++ = fold[*read++];
      continue;
    }
    if (zen2han && (*read == 0xA1 || *read == 0xA3)) {
      const Byte ascii = findAscii(*read * 0x100u + read[1]);
      if (ascii != 0) {
        *write++ = fold[ascii];
        read += 2;
        continue;
      }
    }
    // 0x8F introduces a character of JIS X 0212, three bytes long.
    std::size_t left = *read == 0x8F ? 3 : 2;
    for (; left > 0 && *read != 0; --left) *write++ = *read++;
  }
  return write;
}

}  // namespace

char EUCConv::hankaku(unsigned short code) const {
  return static_cast<char>(findAscii(code));
}

int EUCConv::convert(char* text, bool upper, bool zen2han) const {
  const Byte* fold = upper ? kUpperCase.data() : kKeepCase.data();
  // Nearly every key is ASCII throughout, and each lookup passes here: one
  // table read and one test a byte.
  auto* const start = reinterpret_cast<Byte*>(text);
  Byte* end = start;
  while (const Byte folded = fold[*end]) *end++ = folded;
  if (*end != 0) {
    end = convertRest(end, fold, zen2han);
    *end = 0;
  }
  return static_cast<int>(end - start);
}

}  // namespace urldb
