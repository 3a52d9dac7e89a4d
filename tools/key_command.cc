#include "tools/key_command.h"

#include <unistd.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/error.h"
#include "tools/escape.h"
#include "tools/lookup_key.h"
#include "tools/output.h"
#include "tools/refusal.h"
#include "tools/url_arguments.h"

namespace urldb {

namespace {

struct KeyOptions {
  bool hex = false;
  std::vector<std::string> urls;
};

std::string hexText(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

int runKey(const KeyOptions& options) {
  int status = 0;
  Output out(STDOUT_FILENO);
  UrlArguments urls(options.urls, [&out] { out.flush(); });
  std::string url;
  while (urls.next(&url)) {
    try {
      const std::string key = lookupKey(url);
      out.write((options.hex ? hexText(key) : escapeShownKey(key)) + "\n");
    } catch (const ErrException& error) {
      out.write(refusalLine(url, error));
      status = 1;
    }
  }
  out.flush();
  return status;
}

}  // namespace

void addKeyCommand(CLI::App& app, int* status) {
  const auto options = std::make_shared<KeyOptions>();
  CLI::App* const command = app.add_subcommand(
      "key", "Print the lookup key of each URL, one line out for each line in");
  command->add_flag("--hex", options->hex,
                    "Print every byte of the key as two hexadecimal digits");
  addUrlArguments(command, &options->urls);
  command->footer(
      "A key is what a database stores and finds. The host stands in it\n"
      "backwards, so that all hosts of a domain begin alike.\n"
      "\n"
      "Bytes below 0x21, 0x7F and % are printed as %XX. A URL without a key\n"
      "gives the line URL<TAB>!REASON and the exit status 1.\n"
      "\n"
      "Examples:\n"
      "  urldb key http://www.example.com:8080/news/today.html?page=2\n"
      "      moc.elpmaxe.www:8080/news/today.html?page=2\n"
      "  urldb key --hex - < urls.txt\n");
  command->callback([options, status] { *status = runKey(*options); });
}

}  // namespace urldb
