#include "tools/name_codec.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/error.h"
#include "url/euc_conv.h"

namespace urldb {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

class Converter {
 public:
  Converter(const char* to, const char* from)
      : handle_(::iconv_open(to, from)) {
    // The C library loads its converters from files, which a stripped-down
    // system may lack.
    if (reinterpret_cast<std::intptr_t>(handle_) == -1)
      throw ErrException(ERR_INVALID_STATUS, 0, "no conversion from %s to %s",
                         from, to);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() { ::iconv_close(handle_); }

  // Converts as much of `*input` as can be converted, appends it to `output`
  // and leaves the rest in `*input`.
  void convert(std::string_view* input, std::string* output) {
    ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::array<char, 256> buffer{};
    bool full = true;
    while (full) {
      char* from = const_cast<char*>(input->data());
      std::size_t left = input->size();
      char* to = buffer.data();
      std::size_t room = buffer.size();
      const std::size_t result = ::iconv(handle_, &from, &left, &to, &room);
      full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
      output->append(buffer.data(), to);
      input->remove_prefix(input->size() - left);
    }
  }

 private:
  iconv_t handle_;
};

bool isAsciiControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// The bytes that EUC-JP leaves to the C1 control characters. 0x8E and 0x8F
// begin characters of two and three bytes.
bool holdsC1Control(std::string_view euc) {
  for (std::size_t i = 0; i < euc.size(); ++i) {
    const auto byte = static_cast<unsigned char>(euc[i]);
    if (byte == 0x8F) {
      i += 2;
    } else if (byte == 0x8E || byte >= 0xA1) {
      i += 1;
    } else if (byte >= 0x80) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<std::string> toEucName(std::string_view utf8) {
  if (utf8.empty() || std::any_of(utf8.begin(), utf8.end(), isAsciiControl))
    return std::nullopt;
  thread_local Converter converter("EUC-JP", "UTF-8");
  std::string euc;
  converter.convert(&utf8, &euc);
  if (!utf8.empty() || holdsC1Control(euc)) return std::nullopt;
  // The normaliser works in place, on a text that ends with a NUL, and never
  // makes it longer.
  const int length = EUCConv().convert(euc.data(), false, true);
  euc.resize(static_cast<std::size_t>(length));
  return euc;
}

std::string toUtf8Name(std::string_view euc) {
  thread_local Converter converter("UTF-8", "EUC-JP");
  std::string utf8;
  converter.convert(&euc, &utf8);
  while (!euc.empty()) {
    utf8 += kReplacement;
    euc.remove_prefix(1);
    converter.convert(&euc, &utf8);
  }
  return utf8;
}

}  // namespace urldb
